#pragma once

#include <QElapsedTimer>
#include <QTime>

namespace rehearsal {

/// Milliseconds from one time of day to another, counted forward modulo one day: 0 ... 86399999.
quint32 elapsedBetween(QTime from, QTime to);

/// The one clock of the host. It runs on wall time until it is stepped by hand. Wall time is read
/// once and counted on from there, so a show does not jump when the computer's clock is set.
class HostClock
{
public:
    HostClock() { m_sinceWallStart.start(); }

    /// The present moment: the frame's time while a frame is being rendered, else the time of the
    /// last step, or wall time when the clock was never stepped.
    QTime now() const;

    /// Stops following wall time and stands at `time`.
    void step(QTime time);

    void beginFrame(QTime time);
    void endFrame();
    bool isInFrame() const { return !m_frame.isNull(); }

private:
    const QTime m_wallStart = QTime::currentTime();
    QElapsedTimer m_sinceWallStart;
    QTime m_stepped; ///< invalid while the clock follows wall time
    QTime m_frame;   ///< invalid between frames
};

} // namespace rehearsal
