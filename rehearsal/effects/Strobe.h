#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Shows "level" (1) for the first "duty" (0.1) of every cycle, a part from 0, never, to 1, always,
/// and 0 for the rest.
class Strobe final : public StageEffect
{
public:
    explicit Strobe(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    double m_duty = 0;
    double m_shownLevel = 0;
};

} // namespace rehearsal
