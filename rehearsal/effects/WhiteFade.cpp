#include "WhiteFade.h"

namespace rehearsal {

WhiteFade::WhiteFade(MapModel *mapModel) : StageEffect(mapModel, QStringLiteral("White Fade")) {}

void WhiteFade::internalUpdateLights()
{
    const double level = spanProgress();
    draw([level](quint32, quint32) { return level; });
}

} // namespace rehearsal
