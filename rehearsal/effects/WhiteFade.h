#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Goes from 0 to 1 as a "Ramp" does: over the time from the effect's begin to its end, or once in
/// every cycle.
class WhiteFade final : public StageEffect
{
public:
    explicit WhiteFade(MapModel *mapModel);
    void internalUpdateLights() override;
};

} // namespace rehearsal
