#pragma once

#include "TimelineColours.h"
#include "TimelineGeometry.h"
#include "TimelineModel.h"

class QPainter;

namespace rehearsal {

/// Draws links: an arrow from the linked end of a child to the end of its target that it is linked
/// to. Broken and looping ones have a colour and a pattern of their own, and a sign at their end.
class LinkPainter
{
public:
    /// How wide the sign of a broken or looping link is, pixels; it stands inside the bar's edge.
    static constexpr double signSize = 13;

    /// Nothing is owned; all of it outlives the painter.
    LinkPainter(const TimelineModel &model, const TimelineGeometry &geometry,
                const TimelineColours &colours)
        : m_model(model), m_geometry(geometry), m_colours(colours)
    {
    }

    /// The links of what is to be seen and reaches into the area; those of the highlighted row, to
    /// and from it, are strong. -1 highlights none.
    void paint(QPainter &painter, const QRect &area, int highlighted) const;

private:
    template<typename Wanted>
    int countLinks(const Wanted &isWanted) const;
    void paintLink(QPainter &painter, const QRectF &area, int row, Edge edge, bool isStrong) const;
    void paintArrow(QPainter &painter, const TimelineRow &row, Edge edge) const;
    void paintSign(QPainter &painter, const TimelineRow &row, Edge edge) const;
    QPointF anchor(const TimelineRow &row, Edge edge) const;

    const TimelineModel &m_model;
    const TimelineGeometry &m_geometry;
    const TimelineColours &m_colours;
};

} // namespace rehearsal
