#include "Strobe.h"

namespace rehearsal {

Strobe::Strobe(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Strobe"))
{
    addPropertyDouble(QStringLiteral("duty"), 0.1, &m_duty);
    addPropertyDouble(QStringLiteral("level"), 1.0, &m_shownLevel);
}

void Strobe::internalUpdateLights()
{
    const double level = cyclePhase() < m_duty ? m_shownLevel : 0.0;
    draw([level](quint32, quint32) { return level; });
}

} // namespace rehearsal
