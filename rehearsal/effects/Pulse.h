#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Swings as a sine between the levels "low" (0), at the start of every cycle, and "high" (1), in
/// its middle.
class Pulse final : public StageEffect
{
public:
    explicit Pulse(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    double m_low = 0;
    double m_high = 0;
};

} // namespace rehearsal
