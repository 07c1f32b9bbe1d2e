#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Goes in a straight line from the level "from" (0) to the level "to" (1), over the time from the
/// effect's begin to its end, and then holds "to". Where the end is not after the begin, the way is
/// gone once in every cycle.
class Ramp final : public StageEffect
{
public:
    explicit Ramp(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    double m_from = 0;
    double m_to = 0;
};

} // namespace rehearsal
