#include "Twinkle.h"

#include "EffectHost.h"

namespace rehearsal {

namespace {

// Every bit of the argument decides on every bit of the result.
constexpr quint64 scrambled(quint64 bits)
{
    bits ^= bits >> 32;
    bits *= 0x8A2A'C449'D70C'26BFu;
    bits ^= bits >> 32;
    bits *= 0x8A2A'C449'D70C'26BFu;
    bits ^= bits >> 32;
    return bits;
}

// Evenly spread over 0 up to, not including, 1.
constexpr double chance(quint32 seed, quint32 cycle, quint32 index)
{
    const quint64 bits = scrambled(scrambled((quint64{seed} << 32) | cycle) + index + 1);
    return static_cast<double>(bits >> 32) / 4294967296.0;
}

} // namespace

Twinkle::Twinkle(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Twinkle"))
{
    EffectHost::addPropertyULong(*this, QStringLiteral("seed"), 1, &m_seed);
    addPropertyDouble(QStringLiteral("density"), 0.3, &m_density);
    addPropertyDouble(QStringLiteral("level"), 1.0, &m_shownLevel);
}

void Twinkle::internalUpdateLights()
{
    const quint32 cycle = cycleNumber();
    draw([this, cycle](quint32 index, quint32) {
        return chance(m_seed, cycle, index) < m_density ? m_shownLevel : 0.0;
    });
}

} // namespace rehearsal
