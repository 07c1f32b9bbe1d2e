#pragma once

#include <QElapsedTimer>
#include <QLabel>

namespace rehearsal {

class Playback;

/// Tells in the status bar what a frame costs: processor time of the whole window a frame and of
/// that the effects' part, frames shown a second, and frames dropped since play was pressed.
class FrameMeter final : public QLabel
{
    Q_OBJECT

public:
    /// The playback is not owned and outlives the meter.
    explicit FrameMeter(Playback &playback, QWidget *parent = nullptr);

private:
    void noteFrame();
    void tell();
    void startAnew();

    Playback &m_playback;
    QElapsedTimer m_sinceTold;
    qint64 m_cpuAtStart = 0;
    qint64 m_effectsCpu = 0; ///< ns, of the frames since last told
    int m_frames = 0;
};

} // namespace rehearsal
