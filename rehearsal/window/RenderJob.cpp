#include "RenderJob.h"

namespace rehearsal {

RenderJob::RenderJob(std::unique_ptr<ShowRender> render, QObject *parent)
    : QObject(parent), m_render(std::move(render))
{
    connect(&m_timer, &QTimer::timeout, this, &RenderJob::work);
    m_timer.start(0);
}

RenderJob::~RenderJob()
{
    if (!m_writing)
        return;
    m_writing->wait();
    if (!m_isWritten && !m_isTold)
        qWarning("%s", qUtf8Printable(m_fault.message()));
}

void RenderJob::work()
{
    constexpr qint64 sliceMs = 8;
    if (m_render->isPlayed())
        startWriting();
    else
        m_render->playFor(sliceMs);
    emit progressed();
}

// To draw a large picture takes as long as many frames, and a slow disk has as much time as it
// likes.
void RenderJob::startWriting()
{
    m_timer.stop();
    m_writing.reset(QThread::create([this] { m_isWritten = m_render->finish(&m_fault); }));
    connect(m_writing.get(), &QThread::finished, this, [this] {
        m_isTold = true;
        if (m_isWritten)
            emit finished();
        else
            emit failed(m_fault);
    });
    m_writing->start();
}

} // namespace rehearsal
