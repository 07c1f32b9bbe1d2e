#pragma once

#include "ShowRender.h"

#include <QObject>
#include <QThread>
#include <QTimer>

namespace rehearsal {

/// Plays in short slices between other events and writes in a thread of its own, so that the
/// program goes on meanwhile. Deleting it cancels: every regular file stays as it was. Once it is
/// writing, deleting it waits until the files are in their places, and warns if they could not be
/// written.
class RenderJob final : public QObject
{
    Q_OBJECT

public:
    /// Starts in the next turn of the event loop.
    explicit RenderJob(std::unique_ptr<ShowRender> render, QObject *parent = nullptr);
    ~RenderJob() override;

    const ShowRender &render() const { return *m_render; }
    /// Whether all is played, and the files are on their way to their places.
    bool isWriting() const { return m_writing != nullptr; }

signals:
    void progressed();
    // One of these is the last signal. A handler may call deleteLater(), but not delete the job.
    void finished();
    void failed(const FileFault &fault);

private:
    void work();
    void startWriting();

    std::unique_ptr<ShowRender> m_render;
    QTimer m_timer;
    std::unique_ptr<QThread> m_writing; ///< null while it plays
    FileFault m_fault;                  ///< this and the next are the thread's until it ends
    bool m_isWritten = false;
    bool m_isTold = false;
};

} // namespace rehearsal
