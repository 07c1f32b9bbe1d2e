#pragma once

#include <QtGlobal>

#include <vector>

namespace rehearsal {

/// Half-open.
struct LaneSpan
{
    qint64 begin = 0;
    qint64 end = 0;
};

/// Gives every span the first lane that is free at its begin, in order of their begins; spans of
/// one lane do not overlap, and there are no more lanes than spans overlap at most.
/// @param emptyLength how long a span without any length counts as; at least 1
std::vector<int> packLanes(const std::vector<LaneSpan> &spans, qint64 emptyLength);

} // namespace rehearsal
