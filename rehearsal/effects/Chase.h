#pragma once

#include "StageEffect.h"

namespace rehearsal {

/// Shows "level" (1) on a window of "width" (1) neighbouring lights and 0 on the others. The window
/// starts at the group's first light, moves on by one light a cycle time / number of lights, and
/// wraps. A width beyond the number of lights lights them all, a width of 0 none.
class Chase final : public StageEffect
{
public:
    explicit Chase(MapModel *mapModel);
    void internalUpdateLights() override;

private:
    quint32 m_width = 0;
    double m_shownLevel = 0;
};

} // namespace rehearsal
