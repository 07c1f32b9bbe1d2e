#pragma once

#include "TimelineRow.h"

#include <vector>

namespace rehearsal {

/// Finds the targets of the links among siblings, and tells for each link whether it is sound,
/// broken or part of a loop. Takes time in proportion to the number of siblings.
/// @param siblings rows that one effect holds, in its order
void judgeLinks(std::vector<TimelineRow> &rows, const std::vector<int> &siblings);

} // namespace rehearsal
