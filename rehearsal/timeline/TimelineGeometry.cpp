#include "TimelineGeometry.h"

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

constexpr double narrowestBar = 3;
constexpr int laneGap = 2; // above and below a bar

} // namespace

double TimelineGeometry::timeAt(double x) const
{
    return (x - headerWidth - margin + double(scrollX)) / pixelsPerMs;
}

int TimelineGeometry::laneAt(int y) const
{
    return int(std::floor(double(y - rulerHeight + scrollY) / laneHeight));
}

QRect TimelineGeometry::field() const
{
    return {headerWidth, rulerHeight, size.width() - headerWidth, size.height() - rulerHeight};
}

QRectF TimelineGeometry::bar(const TimelineRow &row) const
{
    if (row.lane < 0)
        return {};
    const double top = laneTop(row.lane) + laneGap;
    const double height = laneHeight - 2 * laneGap;
    const double left = x(double(row.begin));
    if (row.duration() == 0) // a mark, square
        return {left - height / 2, top, height, height};
    return {left, top, std::max(narrowestBar, x(double(row.end)) - left), height};
}

QRectF TimelineGeometry::disclosure(const TimelineRow &row) const
{
    if (row.lane < 0 || !row.holdsEffects)
        return {};
    const double side = laneHeight;
    const double top = laneTop(row.lane);
    if (headerWidth > 0)
        return {double(indentation(row.depth)), top, side, side};
    const QRectF bar = this->bar(row);
    const double left = std::max(bar.left(), double(field().left()));
    return bar.right() - left < side ? QRectF() : QRectF(left, top, side, side);
}

} // namespace rehearsal
