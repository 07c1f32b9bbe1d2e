#include "LinkPainter.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

constexpr double headLength = 7;
constexpr double headHalfWidth = 3.5;
constexpr double stubLength = 22; // of an arrow that leads nowhere
constexpr double strongWidth = 2;
constexpr double faintWidth = 1;
constexpr int mostArrows = 300; // beyond this narrow bars show theirs only when highlighted
constexpr double narrowBar = 3 * headLength;
constexpr double farAway = 1e5; // beyond this a curve is drawn no better

// To which side of an edge the arrow leaves or arrives: away from the bar.
double outward(Edge edge)
{
    return edge == Edge::Begin ? -1 : 1;
}

void paintHead(QPainter &painter, QPointF tip, double direction)
{
    const QPointF base = tip - QPointF(direction * headLength, 0);
    const QPointF side(0, headHalfWidth);
    const QPen pen = painter.pen();
    painter.setPen(Qt::NoPen);
    painter.setBrush(pen.color());
    painter.drawPolygon(QPolygonF{tip, base + side, base - side});
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
}

} // namespace

void LinkPainter::paint(QPainter &painter, const QRect &area, int highlighted) const
{
    const int firstLane = m_geometry.laneAt(m_geometry.rulerHeight);
    const int lastLane = m_geometry.laneAt(m_geometry.size.height() - 1);
    const auto isSeen = [&](int row) {
        const int lane = m_model.row(row).lane;
        return lane >= firstLane && lane <= lastLane;
    };
    const auto isWanted = [&](int row, const TimelineLink &link) {
        return link.kind != LinkKind::None
               && (isSeen(row) || (link.target >= 0 && isSeen(link.target)));
    };
    const bool isCrowded = countLinks(isWanted) > mostArrows;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (const bool strong : {false, true}) {
        for (const int row : m_model.shown()) {
            for (const Edge edge : {Edge::Begin, Edge::End}) {
                const TimelineLink &link = m_model.row(row).link(edge);
                const bool isStrong =
                    highlighted >= 0 && (row == highlighted || link.target == highlighted);
                if (isStrong != strong || !isWanted(row, link))
                    continue;
                const bool isPlain = !isStrong && link.kind == LinkKind::Sound;
                if (!isPlain || !isCrowded || m_geometry.bar(m_model.row(row)).width() >= narrowBar)
                    paintLink(painter, area, row, edge, isStrong);
            }
        }
    }
    painter.restore();
}

template<typename Wanted>
int LinkPainter::countLinks(const Wanted &isWanted) const
{
    int count = 0;
    for (const int row : m_model.shown()) {
        for (const Edge edge : {Edge::Begin, Edge::End})
            count += isWanted(row, m_model.row(row).link(edge)) ? 1 : 0;
    }
    return count;
}

QPointF LinkPainter::anchor(const TimelineRow &row, Edge edge) const
{
    const double ms = double(edge == Edge::Begin ? row.begin : std::max(row.begin, row.end));
    return {std::clamp(m_geometry.x(ms), -farAway, farAway), m_geometry.bar(row).center().y()};
}

void LinkPainter::paintLink(QPainter &painter, const QRectF &area, int row, Edge edge,
                            bool isStrong) const
{
    const TimelineRow &source = m_model.row(row);
    const TimelineLink &link = source.link(edge);
    const QPointF from = anchor(source, edge);
    const QPointF to = link.target >= 0 ? anchor(m_model.row(link.target), link.targetEdge) : from;
    constexpr double reach = 60; // how far a curve swings beyond its ends
    const QRectF extent = QRectF(from, to).normalized().adjusted(-reach, -reach, reach, reach);
    if (!extent.intersects(area))
        return;

    const bool isFaulty = link.isFaulty();
    QColor colour = isFaulty ? m_colours.warning() : m_colours.link();
    if (isStrong && !isFaulty)
        colour = m_colours.text();
    QPen pen(colour, isStrong ? strongWidth : faintWidth);
    pen.setCapStyle(Qt::FlatCap);
    if (isFaulty) {
        pen.setDashPattern({4, 2});
        pen.setWidthF(isStrong ? strongWidth : 1.5);
    }
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    if (link.target >= 0)
        paintArrow(painter, source, edge);
    else
        painter.drawLine(from, from + QPointF(outward(edge) * stubLength, 0));
    if (isFaulty)
        paintSign(painter, source, edge);
}

void LinkPainter::paintArrow(QPainter &painter, const TimelineRow &row, Edge edge) const
{
    const TimelineLink &link = row.link(edge);
    const TimelineRow &target = m_model.row(link.target);
    const QPointF from = anchor(row, edge);
    const QPointF to = anchor(target, link.targetEdge);
    const double leave = outward(edge);
    const double arrive = outward(link.targetEdge);
    const bool isSameLane = row.lane == target.lane;
    if (isSameLane && std::abs(from.x() - to.x()) < headLength) {
        // The two touch: there is room for a head only.
        paintHead(painter, to - QPointF(arrive * headLength, 0), -arrive);
        return;
    }
    const QPointF distance = to - from;
    const double swing =
        std::clamp(std::abs(distance.y()) * 0.3 + std::abs(distance.x()) * 0.2, 12.0, 50.0);
    const QPointF lift(0, isSameLane ? -m_geometry.laneHeight * 0.65 : 0);
    const QPointF base = to + QPointF(arrive * headLength, 0);
    QPainterPath path(from);
    path.cubicTo(from + QPointF(leave * swing, 0) + lift, base + QPointF(arrive * swing, 0) + lift,
                 base);
    painter.drawPath(path);
    paintHead(painter, to, -arrive);
}

// A triangle with an exclamation mark, beside the edge.
void LinkPainter::paintSign(QPainter &painter, const TimelineRow &row, Edge edge) const
{
    const QPointF centre = anchor(row, edge) + QPointF(-outward(edge) * signSize * 0.7, 0);
    const double half = signSize / 2;
    const QPolygonF triangle{centre + QPointF(0, -half), centre + QPointF(half * 1.1, half),
                             centre + QPointF(-half * 1.1, half)};
    painter.setPen(QPen(m_colours.base(), 1.5));
    painter.setBrush(m_colours.warning());
    painter.drawPolygon(triangle);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_colours.base());
    painter.drawRect(QRectF(centre.x() - 0.8, centre.y() - half * 0.4, 1.6, half * 0.7));
    painter.drawRect(QRectF(centre.x() - 0.8, centre.y() + half * 0.5, 1.6, 1.6));
    painter.setBrush(Qt::NoBrush);
}

} // namespace rehearsal
