#pragma once

#include <QToolBar>

class QComboBox;
class QLabel;
class QSlider;

namespace rehearsal {

class Playback;

/// The clock, the place in the show to see and to change, and the speed. The buttons are the
/// window's actions, put in front.
class TransportBar final : public QToolBar
{
    Q_OBJECT

public:
    /// The playback is not owned and outlives the bar.
    TransportBar(Playback &playback, const QList<QAction *> &actions, QWidget *parent = nullptr);

    /// The next faster speed that is offered, or the next slower one.
    void changeSpeed(int steps);
    void setSpeed(double speed);

private:
    void showPlace();
    void seekToSlider();

    Playback &m_playback;
    QLabel *m_clock;
    QLabel *m_length;
    QSlider *m_slider;
    QComboBox *m_speed;
};

/// A place in a show as m:ss.mmm, or h:mm:ss.mmm from an hour on.
QString clockText(quint32 ms);

} // namespace rehearsal
