#include "TimelinePainter.h"

#include "FadeOutline.h"
#include "LinkPainter.h"
#include "TimeText.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

constexpr double textGap = 5;
constexpr double narrowestText = 24;
constexpr double narrowestOutlined = 5;
constexpr int fewestCharacters = 5; // of a text that had to be cut
constexpr double labelGap = 14;
constexpr double swatchWidth = 4;
constexpr double runningWidth = 2;

} // namespace

TimelinePainter::TimelinePainter(const Scene &scene)
    : m_scene(scene), m_model(scene.model), m_geometry(scene.geometry), m_colours(scene.colours)
{
    const QFontMetricsF metrics(scene.font);
    const qint64 last = std::max(m_model.length(), qint64{60000});
    m_ticks = RulerTicks::fitting(m_geometry.pixelsPerMs, [&](int decimals) {
        return metrics.horizontalAdvance(timeText(last, decimals)) + labelGap;
    });
}

void TimelinePainter::paint(QPainter &painter, const QRect &area) const
{
    painter.setFont(m_scene.font);
    painter.setClipRect(area);
    painter.fillRect(area, m_colours.base());
    painter.save();
    painter.setClipRect(area & m_geometry.field());
    paintLanes(painter, area);
    paintGrid(painter, area);
    paintBars(painter, area);
    LinkPainter(m_model, m_geometry, m_colours).paint(painter, area, m_scene.highlighted);
    painter.restore();
    if (area.intersects(m_geometry.ruler()))
        paintRuler(painter, area);
    if (m_geometry.headerWidth > 0 && area.left() <= m_geometry.headerWidth)
        paintHeader(painter, area);
}

bool TimelinePainter::isWithin(int lane, const QRect &area) const
{
    const int top = m_geometry.laneTop(lane);
    return top <= area.bottom() && top + m_geometry.laneHeight > area.top();
}

void TimelinePainter::paintLanes(QPainter &painter, const QRect &area) const
{
    const int first = std::max(0, m_geometry.laneAt(std::max(area.top(), m_geometry.rulerHeight)));
    const int highlightedLane =
        m_scene.highlighted >= 0 && !m_scene.isPacked ? m_model.row(m_scene.highlighted).lane : -1;
    for (int lane = first; lane < m_model.laneCount() && isWithin(lane, area); ++lane) {
        const QRect strip(area.left(), m_geometry.laneTop(lane), area.width(),
                          m_geometry.laneHeight);
        painter.fillRect(strip, m_colours.lane(m_model.laneDepth(lane), lane % 2 != 0));
        if (lane == highlightedLane) {
            QColor tint = m_colours.accent();
            tint.setAlphaF(0.14F);
            painter.fillRect(strip, tint);
        }
    }
}

qint64 TimelinePainter::firstTick(qint64 step, const QRect &area) const
{
    const double left = m_geometry.timeAt(area.left() - 100);
    return std::max(qint64{0}, qint64(std::floor(left / double(step))) * step);
}

void TimelinePainter::paintGrid(QPainter &painter, const QRect &area) const
{
    painter.setPen(m_colours.line());
    for (qint64 ms = firstTick(m_ticks.major, area);; ms += m_ticks.major) {
        const int x = int(std::floor(m_geometry.x(double(ms))));
        if (x > area.right())
            break;
        painter.drawLine(x, area.top(), x, area.bottom());
    }
    // What lies behind the effect's own end is not played.
    if (m_model.ownLength() <= 0)
        return;
    const int end = int(std::min(m_geometry.x(double(m_model.ownLength())), 1e8));
    if (end > area.right())
        return;
    QColor shade = m_colours.text();
    shade.setAlphaF(0.06F);
    painter.fillRect(QRect(QPoint(std::max(end, area.left()), area.top()), area.bottomRight()),
                     shade);
    painter.setPen(m_colours.strongLine());
    painter.drawLine(end, area.top(), end, area.bottom());
}

void TimelinePainter::paintBars(QPainter &painter, const QRect &area) const
{
    const int firstLane = m_geometry.laneAt(std::max(area.top(), m_geometry.rulerHeight));
    const std::vector<int> &shown = m_model.shown();
    for (std::size_t i = m_model.firstOfLane(firstLane); i < shown.size(); ++i) {
        const TimelineRow &row = m_model.row(shown[i]);
        if (!isWithin(row.lane, area))
            break;
        const QRectF bar = m_geometry.bar(row);
        if (bar.right() + runningWidth < area.left() || bar.left() - runningWidth > area.right())
            continue;
        if (row.duration() == 0)
            paintMark(painter, shown[i], bar);
        else
            paintBar(painter, shown[i], bar);
    }
}

void TimelinePainter::paintBar(QPainter &painter, int row, const QRectF &bar) const
{
    // Only the part that can be seen is drawn: a bar may be millions of pixels long.
    const QRectF field = m_geometry.field();
    const QRectF part(QPointF(std::max(bar.left(), field.left() - 20), bar.top()),
                      QPointF(std::min(bar.right(), field.right() + 20), bar.bottom()));
    const bool isChosen = row == m_scene.highlighted;
    if (bar.width() < narrowestOutlined) {
        const QColor fill = m_colours.bar(m_model.row(row).type, true);
        painter.fillRect(part, isChosen         ? m_colours.text()
                               : isRunning(row) ? m_colours.accent()
                                                : fill);
        return;
    }
    paintBody(painter, row, bar, part);
    const QString &type = m_model.row(row).type;
    painter.setBrush(Qt::NoBrush);
    if (isRunning(row) || isChosen) {
        painter.setPen(QPen(isChosen ? m_colours.text() : m_colours.accent(), runningWidth,
                            Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(part.adjusted(1, 1, -1, -1));
        // Seen also where the bar's colour is near the outline's.
        painter.setPen(m_colours.base());
        painter.drawRect(part.adjusted(2, 2, -3, -3));
    } else {
        painter.setPen(m_colours.outline(type));
        painter.drawRect(part.adjusted(0, 0, -1, -1));
    }
    paintBarText(painter, row, part);
}

// Full where the child is at full strength, sloping where it fades, faint above the slope.
void TimelinePainter::paintBody(QPainter &painter, int row, const QRectF &bar,
                                const QRectF &part) const
{
    const TimelineRow &child = m_model.row(row);
    const QColor fill = m_colours.bar(child.type, isRunning(row));
    if (child.fadeIn == 0 && child.fadeOut == 0) {
        painter.fillRect(part, fill);
        return;
    }
    painter.fillRect(part, m_colours.fadedBar(child.type));
    const double stretch = bar.width() / double(child.duration());
    const auto msAt = [&](double x) { return (x - bar.left()) / stretch; };
    const std::vector<QPointF> course =
        cutOutline(fadeOutline(child.duration(), child.fadeIn, child.fadeOut), msAt(part.left()),
                   msAt(part.right()));
    QPolygonF slope{part.bottomLeft()};
    for (const QPointF &point : course)
        slope.append({bar.left() + point.x() * stretch, bar.bottom() - point.y() * bar.height()});
    slope.append(part.bottomRight());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPolygon(slope);
    painter.restore();
}

// A child without any length: a hatched diamond.
void TimelinePainter::paintMark(QPainter &painter, int row, const QRectF &bar) const
{
    const QString &type = m_model.row(row).type;
    const QRectF box = bar.adjusted(1, 1, -1, -1);
    const QPointF centre = box.center();
    const QPolygonF diamond{QPointF(centre.x(), box.top()), QPointF(box.right(), centre.y()),
                            QPointF(centre.x(), box.bottom()), QPointF(box.left(), centre.y())};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_colours.fadedBar(type));
    painter.drawPolygon(diamond);
    painter.setBrush(QBrush(m_colours.outline(type), Qt::BDiagPattern));
    painter.setPen(QPen(row == m_scene.highlighted ? m_colours.text() : m_colours.outline(type),
                        row == m_scene.highlighted ? 2 : 1.2));
    painter.drawPolygon(diamond);
    painter.restore();
}

// The names stand in their column; without it they stand in the bars, which else tell the type.
void TimelinePainter::paintBarText(QPainter &painter, int row, const QRectF &part) const
{
    const TimelineRow &child = m_model.row(row);
    QRectF room = part & QRectF(m_geometry.field());
    if (m_scene.isPacked && child.holdsEffects) {
        const QRectF box = m_geometry.disclosure(child);
        if (!box.isNull()) {
            paintTriangle(painter, box, child.isUnfolded);
            room.setLeft(box.right() - textGap);
        }
    }
    const auto signWidth = [](const TimelineLink &link) {
        return link.isFaulty() ? LinkPainter::signSize : 0;
    };
    room.adjust(textGap + signWidth(child.startLink), 0, -textGap - signWidth(child.endLink), 0);
    if (room.width() < narrowestText)
        return;
    const QString text = m_scene.isPacked ? child.name : child.type;
    const QFontMetricsF metrics(m_scene.font);
    const QString elided = metrics.elidedText(text, Qt::ElideMiddle, room.width());
    if (elided.size() < fewestCharacters && elided != text)
        return;
    painter.setPen(m_colours.text());
    painter.drawText(room, int(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine, elided);
}

void TimelinePainter::paintHeader(QPainter &painter, const QRect &area) const
{
    const QRect header = m_geometry.header();
    painter.save();
    painter.setClipRect(area & header);
    painter.fillRect(header, m_colours.base());
    QRect lanes = header & area;
    lanes.setLeft(header.left());
    paintLanes(painter, lanes);
    const std::vector<int> &shown = m_model.shown();
    const int firstLane = m_geometry.laneAt(std::max(area.top(), header.top()));
    for (std::size_t i = m_model.firstOfLane(firstLane); i < shown.size(); ++i) {
        if (!isWithin(m_model.row(shown[i]).lane, area))
            break;
        paintName(painter, shown[i]);
    }
    painter.restore();

    const QRect corner(0, 0, header.width(), header.top());
    painter.fillRect(corner, m_colours.ruler());
    painter.setPen(m_colours.strongLine());
    painter.drawLine(corner.bottomLeft(), corner.bottomRight());
    painter.setPen(m_colours.text());
    const QRectF title = QRectF(corner).adjusted(textGap, 0, -textGap, 0);
    painter.drawText(
        title, int(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine,
        QFontMetricsF(m_scene.font).elidedText(m_model.title(), Qt::ElideRight, title.width()));
    painter.setPen(m_colours.strongLine());
    painter.drawLine(header.right(), 0, header.right(), m_geometry.size.height());
}

void TimelinePainter::paintName(QPainter &painter, int row) const
{
    const TimelineRow &child = m_model.row(row);
    const int top = m_geometry.laneTop(child.lane);
    const int height = m_geometry.laneHeight;
    const double indentation = m_geometry.indentation(child.depth);
    if (child.holdsEffects)
        paintTriangle(painter, m_geometry.disclosure(child), child.isUnfolded);
    const QRectF swatch(indentation + height, top + height * 0.25, swatchWidth, height * 0.5);
    painter.fillRect(swatch, m_colours.outline(child.type));
    QRectF room(swatch.right() + textGap, top, 0, height);
    room.setRight(m_geometry.headerWidth - textGap);
    if (room.width() <= 0)
        return;
    QFont font = m_scene.font;
    font.setBold(isRunning(row));
    painter.setFont(font);
    painter.setPen(m_colours.text());
    painter.drawText(room, int(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine,
                     QFontMetricsF(font).elidedText(child.name, Qt::ElideMiddle, room.width()));
}

void TimelinePainter::paintTriangle(QPainter &painter, const QRectF &box, bool unfolded) const
{
    const QPointF centre = box.center();
    const double size = box.height() * 0.2;
    const QPolygonF triangle =
        unfolded ? QPolygonF{centre + QPointF(-size, -size * 0.6),
                             centre + QPointF(size, -size * 0.6), centre + QPointF(0, size * 0.8)}
                 : QPolygonF{centre + QPointF(-size * 0.6, -size),
                             centre + QPointF(-size * 0.6, size), centre + QPointF(size * 0.8, 0)};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_colours.faintText());
    painter.drawPolygon(triangle);
    painter.restore();
}

void TimelinePainter::paintRuler(QPainter &painter, const QRect &area) const
{
    const QRect ruler = m_geometry.ruler();
    painter.save();
    painter.setClipRect(area & ruler);
    painter.fillRect(ruler, m_colours.ruler());
    painter.setPen(m_colours.strongLine());
    painter.drawLine(ruler.bottomLeft(), ruler.bottomRight());
    for (qint64 ms = firstTick(m_ticks.minor, area);; ms += m_ticks.minor) {
        const int x = int(std::floor(m_geometry.x(double(ms))));
        if (x > area.right())
            break;
        const bool isMajor = ms % m_ticks.major == 0;
        painter.setPen(isMajor ? m_colours.faintText() : m_colours.strongLine());
        painter.drawLine(x, isMajor ? ruler.height() / 2 : ruler.height() * 3 / 4, x,
                         ruler.bottom());
    }
    painter.setPen(m_colours.text());
    for (qint64 ms = firstTick(m_ticks.major, area);; ms += m_ticks.major) {
        const double x = std::floor(m_geometry.x(double(ms)));
        if (x > area.right())
            break;
        const QRectF label(x + 4, 0, 200, ruler.height());
        if (label.left() < ruler.left())
            continue;
        painter.drawText(label, int(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine,
                         timeText(ms, m_ticks.decimals));
    }
    painter.restore();
}

} // namespace rehearsal
