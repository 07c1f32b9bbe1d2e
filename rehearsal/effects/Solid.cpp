#include "Solid.h"

namespace rehearsal {

Solid::Solid(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("Solid"))
{
    addPropertyDouble(QStringLiteral("level"), 1.0, &m_shownLevel);
}

void Solid::internalUpdateLights()
{
    draw([this](quint32, quint32) { return m_shownLevel; });
}

} // namespace rehearsal
