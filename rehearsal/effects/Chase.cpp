#include "Chase.h"

#include "EffectHost.h"

namespace rehearsal {

Chase::Chase(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Chase"))
{
    EffectHost::addPropertyULong(*this, QStringLiteral("width"), 1, &m_width);
    addPropertyDouble(QStringLiteral("level"), 1.0, &m_shownLevel);
}

void Chase::internalUpdateLights()
{
    const quint64 elapsed = elapsedInCycle();
    const quint64 cycle = cycleTime();
    draw([=, this](quint32 index, quint32 count) {
        const quint64 first = cycle == 0 ? 0 : elapsed * count / cycle;
        const quint64 behindFirst = (index + count - first) % count;
        return behindFirst < m_width ? m_shownLevel : 0.0;
    });
}

} // namespace rehearsal
