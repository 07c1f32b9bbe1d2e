#pragma once

#include "Player.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

namespace rehearsal {

class Show;

/// Plays a show in real time, as a recorder does: play, pause, stop, seek, at any speed.
///
/// Show time follows the wall clock. A frame that comes late shows what is due then; the frames
/// between are dropped, time never is. The same position always shows the same, however it was
/// reached: at `position` ms the host's clock stands at `position` ms after midnight.
class Playback final : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Stopped, ///< at the start, and dark
        Paused,  ///< the lights hold what they show at the position
        Playing
    };

    /// A monotonic wall clock, ns.
    using WallClock = std::function<qint64()>;

    static constexpr double slowest = 0.25;
    static constexpr double fastest = 4.0;
    static constexpr int framesPerSecond = 60;

    /// @param wallClock the computer's own if empty
    explicit Playback(WallClock wallClock = {}, QObject *parent = nullptr);
    ~Playback() override;

    /// Takes another show and stops. Not owned; null, or another show, before it is deleted.
    void setShow(Show *show);
    /// Takes the same show built anew, and goes on where the other one was.
    void setRebuiltShow(Show *show);

    void play();
    void pause();
    void stop();
    /// Plays from the start.
    void restart();
    /// Goes to a place, which is kept within the show; a stopped show is then paused.
    void seek(quint32 positionMs);
    /// Shows anew what is due at the position, after the show was edited; while playing, with the
    /// next frame.
    void refresh();

    /// Show time goes by so much faster than the wall clock; kept from slowest to fastest.
    void setSpeed(double speed);
    /// At the end, start again; else pause there, dark.
    void setLooping(bool looping) { m_looping = looping; }

    State state() const { return m_state; }
    double speed() const { return m_speed; }
    bool isLooping() const { return m_looping; }
    /// ms from the start of the show.
    quint32 position() const { return m_position; }
    /// One run of the longest effect, ms.
    quint32 length() const;

    /// Processor time that the effects took for the last frame, ns.
    qint64 frameCpuNs() const { return m_frameCpuNs; }
    /// Frames that were due and not shown, since the last play().
    qint64 droppedFrames() const { return m_droppedFrames; }

    /// Shows the frame that is due now. Called by a timer while playing.
    void tick();

signals:
    /// The lights show another frame.
    void frameShown();
    void stateChanged();

private:
    void load(Show *show);
    bool isAtEnd() const;
    quint32 within(quint32 positionMs) const;
    void setState(State state);
    void anchor();
    void countDropped(qint64 now);
    void finish();
    void showAt(quint32 positionMs);
    void goOnTo(quint32 positionMs);
    std::vector<quint32> framesUpTo(quint32 positionMs) const;
    void frame(quint32 positionMs);
    void keepClocks();
    void setRunning(bool running);

    /// What a top-level effect's clock read after the last frame.
    struct EffectClock
    {
        Effect *effect = nullptr;
        unsigned long elapsedMs = 0;
        QTime start;
    };

    WallClock m_wallClock;
    QTimer m_timer;
    Show *m_show = nullptr;
    std::optional<Player> m_player;
    std::vector<EffectClock> m_clocks;
    State m_state = State::Stopped;
    bool m_looping = true;
    double m_speed = 1.0;
    quint32 m_position = 0;
    bool m_isFinished = false; ///< stands at the end, dark
    bool m_isEdited = false;   ///< the next frame is to start from nothing that was before
    // While playing, show time is m_anchorMs plus what the wall clock went on since m_anchorWallNs.
    double m_anchorMs = 0;
    qint64 m_anchorWallNs = 0;
    qint64 m_lastTickNs = 0;
    qint64 m_droppedFrames = 0;
    qint64 m_frameCpuNs = 0;
    unsigned long m_frameNumber = 0;
};

} // namespace rehearsal
