#include "RenderJob.h"

namespace rehearsal {

RenderJob::RenderJob(std::unique_ptr<ShowRender> render, QObject *parent)
    : QObject(parent), m_render(std::move(render))
{
    connect(&m_timer, &QTimer::timeout, this, &RenderJob::work);
    m_timer.start(0);
}

void RenderJob::work()
{
    constexpr qint64 sliceMs = 8;
    if (!m_render->isPlayed()) {
        m_render->playFor(sliceMs);
        emit progressed();
        return;
    }
    m_timer.stop();
    FileFault fault;
    if (m_render->finish(&fault))
        emit finished();
    else
        emit failed(fault);
}

} // namespace rehearsal
