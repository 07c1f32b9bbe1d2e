#pragma once

#include "ShowRender.h"

#include <QObject>
#include <QTimer>

namespace rehearsal {

/// Renders in short slices between other events, so that the program goes on meanwhile. Deleting it
/// cancels: every regular file stays as it was.
class RenderJob final : public QObject
{
    Q_OBJECT

public:
    /// Starts in the next turn of the event loop.
    explicit RenderJob(std::unique_ptr<ShowRender> render, QObject *parent = nullptr);

    const ShowRender &render() const { return *m_render; }

signals:
    void progressed();
    // One of these is the last signal. A handler may call deleteLater(), but not delete the job.
    void finished();
    void failed(const FileFault &fault);

private:
    void work();

    std::unique_ptr<ShowRender> m_render;
    QTimer m_timer;
};

} // namespace rehearsal
