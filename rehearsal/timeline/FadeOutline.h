#pragma once

#include <QPointF>
#include <QtGlobal>

#include <vector>

namespace rehearsal {

/// The course of a child's strength while it lasts: points (ms since its begin, 0 ... 1), from its
/// begin to its end. Two points of one time are a jump. Where the two fades meet the fade-out wins.
std::vector<QPointF> fadeOutline(qint64 duration, quint32 fadeIn, quint32 fadeOut);

/// The part of a course from one time to another, which are ms since its begin.
std::vector<QPointF> cutOutline(const std::vector<QPointF> &points, double from, double to);

} // namespace rehearsal
