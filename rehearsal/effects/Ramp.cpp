#include "Ramp.h"

namespace rehearsal {

Ramp::Ramp(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Ramp"))
{
    addPropertyDouble(QStringLiteral("from"), 0.0, &m_from);
    addPropertyDouble(QStringLiteral("to"), 1.0, &m_to);
}

void Ramp::internalUpdateLights()
{
    const double progress = spanProgress();
    const double level = m_from * (1.0 - progress) + m_to * progress;
    draw([level](quint32, quint32) { return level; });
}

} // namespace rehearsal
