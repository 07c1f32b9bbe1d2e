#pragma once

#include <QList>
#include <QTime>

class Effect;

namespace rehearsal {

class StageMap;

/// Plays top-level effects on a map, frame by frame, in their order.
class Player
{
public:
    /// Neither the map nor the effects are owned.
    Player(StageMap &map, QList<Effect *> effects);

    /// Makes every effect ready and sets it running; the clocks start at the next frame.
    void start();
    void stop();

    /// Renders one frame: every light is reset, then every effect is handed the frame.
    /// @param arg the frame argument, handed to the effects unchanged
    void frame(QTime time, unsigned long arg);

    /// One run of the longest effect, ms.
    quint32 length() const;

private:
    StageMap &m_map;
    QList<Effect *> m_effects;
    bool m_clocksPending = false;
};

} // namespace rehearsal
