#pragma once

#include "TimelineRow.h"

#include <QRectF>
#include <QSize>

namespace rehearsal {

/// Where the timeline's parts lie in the viewport; pixels.
struct TimelineGeometry
{
    QSize size;
    int headerWidth = 0; ///< the column of names; 0 for none
    int rulerHeight = 20;
    int laneHeight = 20;
    double pixelsPerMs = 0.01;
    qint64 scrollX = 0;
    int scrollY = 0;

    /// Room before time zero, so that what lies there is seen whole.
    static constexpr int margin = 10;

    double x(double ms) const { return headerWidth + margin + ms * pixelsPerMs - double(scrollX); }
    /// May be negative.
    double timeAt(double x) const;
    int laneTop(int lane) const { return rulerHeight + lane * laneHeight - scrollY; }
    /// May be negative, or behind the last lane.
    int laneAt(int y) const;

    QRect ruler() const { return {headerWidth, 0, size.width() - headerWidth, rulerHeight}; }
    QRect header() const { return {0, rulerHeight, headerWidth, size.height() - rulerHeight}; }
    /// Where the bars are.
    QRect field() const;

    /// Where a row is drawn; null if it has no lane.
    QRectF bar(const TimelineRow &row) const;
    /// The triangle of an effect that unfolds: in the column of names, or in the bar without it.
    QRectF disclosure(const TimelineRow &row) const;
    int indentation(int depth) const { return depth * laneHeight * 2 / 3; }
};

} // namespace rehearsal
