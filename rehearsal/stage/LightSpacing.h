#pragma once

#include <QPointF>

#include <vector>

namespace rehearsal {

/// How far apart neighbours of these places usually are: about the median of the distance from a
/// place to the next other one. A tenth of a unit when no two differ.
double usualSpacing(std::vector<QPointF> places);

} // namespace rehearsal
