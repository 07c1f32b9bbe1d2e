#include "Pulse.h"

#include <cmath>
#include <numbers>

namespace rehearsal {

Pulse::Pulse(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Pulse"))
{
    addPropertyDouble(QStringLiteral("low"), 0.0, &m_low);
    addPropertyDouble(QStringLiteral("high"), 1.0, &m_high);
}

void Pulse::internalUpdateLights()
{
    const double swing = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * cyclePhase());
    const double level = m_low * (1.0 - swing) + m_high * swing;
    draw([level](quint32, quint32) { return level; });
}

} // namespace rehearsal
