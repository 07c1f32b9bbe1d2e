#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Shows "level" (1) on some of the lights and 0 on the others, chosen anew in every cycle. A light
/// is chosen with the probability "density" (0.3). The choice follows from "seed" (1), the number
/// of the cycle and the light's place in the group, and is the same on every machine.
class Twinkle final : public StageEffect
{
public:
    explicit Twinkle(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    quint32 m_seed = 0;
    double m_density = 0;
    double m_shownLevel = 0;
};

} // namespace rehearsal
