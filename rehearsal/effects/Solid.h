#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Shows "level" (1) on every light.
class Solid final : public StageEffect
{
public:
    explicit Solid(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    double m_shownLevel = 0;
};

} // namespace rehearsal
