#include "Player.h"

#include "Effect.h"
#include "StageMap.h"

#include <algorithm>

namespace rehearsal {

Player::Player(StageMap &map, QList<Effect *> effects) : m_map(map), m_effects(std::move(effects))
{
}

void Player::start()
{
    for (Effect *effect : std::as_const(m_effects)) {
        effect->init();
        effect->setState(true);
    }
    m_clocksPending = true;
}

void Player::stop()
{
    for (Effect *effect : std::as_const(m_effects))
        effect->setState(false);
}

void Player::frame(QTime time, unsigned long arg)
{
    m_map.clock().beginFrame(time);
    m_map.resetLights();
    for (Effect *effect : std::as_const(m_effects)) {
        if (m_clocksPending)
            effect->setStartTime(time);
        effect->updateLights(time, arg);
    }
    m_clocksPending = false;
    m_map.clock().endFrame();
}

quint32 Player::length() const
{
    quint32 length = 0;
    for (Effect *effect : m_effects) {
        const quint32 begin = effect->beginTime();
        const quint32 end = effect->endTime();
        length = std::max(length,
                          end > begin ? end - begin : static_cast<quint32>(effect->getCycleTime()));
    }
    return length;
}

} // namespace rehearsal
