#include "TimelineView.h"

#include "TimelinePainter.h"
#include "TimelineTexts.h"

#include <QEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>

namespace rehearsal {

namespace {

constexpr double zoomStep = 1.25;
constexpr double wheelNotch = 120;
constexpr double largestScale = 10;     // pixels a ms
constexpr double widestContent = 1e9;   // pixels, so that scroll bars can count them
constexpr qint64 shortestLength = 1000; // ms
constexpr int tailWidth = 24;           // pixels behind the last end
constexpr int playheadHalf = 7;
constexpr int headerCharacters = 32;
constexpr int lanePadding = 8;
constexpr double pageBegin = 0.1; // where in the page the playhead goes on
constexpr int hintedLanes = 10;

int rounded(double x)
{
    return int(std::floor(std::clamp(x, -widestContent, widestContent)));
}

} // namespace

TimelineView::TimelineView(QWidget *parent) : QAbstractScrollArea(parent), m_colours(palette())
{
    setObjectName(QStringLiteral("timeline"));
    setAccessibleName(tr("Timeline"));
    setAccessibleDescription(tr("The children of the effect as bars over time"));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    updateGeometryAndBars();
}

TimelineView::~TimelineView() = default;

// --- What is shown ---

void TimelineView::setEffect(Effect *top, bool keepView)
{
    m_top = top;
    const EidPath chosen = keepView ? highlighted() : EidPath();
    if (!keepView) {
        m_model.foldAll();
        m_isFitted = true;
        verticalScrollBar()->setValue(0);
    }
    rebuild(chosen);
}

void TimelineView::refresh()
{
    rebuild(highlighted());
}

void TimelineView::rebuild(const EidPath &highlighted)
{
    m_model.rebuild(m_top);
    m_running.assign(m_model.rows().size(), 0);
    m_highlighted = m_model.find(highlighted);
    layOut();
    hoverRow(-1);
}

void TimelineView::layOut()
{
    m_model.layOut(m_isPacked);
    if (m_highlighted >= 0 && m_model.row(m_highlighted).lane < 0)
        m_highlighted = -1;
    updateGeometryAndBars();
}

void TimelineView::setPacked(bool packed)
{
    if (packed == m_isPacked)
        return;
    m_isPacked = packed;
    layOut();
    if (m_highlighted >= 0)
        ensureVisible(m_highlighted);
    emit packedChanged(packed);
}

void TimelineView::setHighlighted(const EidPath &path)
{
    highlightRow(m_model.find(path));
}

EidPath TimelineView::highlighted() const
{
    return m_model.path(m_highlighted);
}

void TimelineView::setUnfolded(const EidPath &path, bool unfolded)
{
    const int row = m_model.find(path);
    if (row >= 0)
        unfoldRow(row, unfolded);
}

bool TimelineView::isUnfolded(const EidPath &path) const
{
    const int row = m_model.find(path);
    return row >= 0 && m_model.row(row).isUnfolded;
}

QRect TimelineView::barRect(const EidPath &path) const
{
    const int row = m_model.find(path);
    return row < 0 ? QRect() : m_geometry.bar(m_model.row(row)).toAlignedRect();
}

QRect TimelineView::disclosureRect(const EidPath &path) const
{
    const int row = m_model.find(path);
    return row < 0 ? QRect() : m_geometry.disclosure(m_model.row(row)).toAlignedRect();
}

bool TimelineView::isRunningShown(const EidPath &path) const
{
    const int row = m_model.find(path);
    return row >= 0 && m_running[std::size_t(row)] != 0;
}

LinkKind TimelineView::linkKind(const EidPath &path, Edge edge) const
{
    const int row = m_model.find(path);
    return row < 0 ? LinkKind::None : m_model.row(row).link(edge).kind;
}

int TimelineView::lane(const EidPath &path) const
{
    const int row = m_model.find(path);
    return row < 0 ? -1 : m_model.row(row).lane;
}

qint64 TimelineView::timeAt(int x) const
{
    return qRound64(m_geometry.timeAt(x));
}

int TimelineView::xAt(qint64 ms) const
{
    return rounded(m_geometry.x(double(ms)));
}

QSize TimelineView::sizeHint() const
{
    return {900, m_geometry.rulerHeight + hintedLanes * m_geometry.laneHeight};
}

QSize TimelineView::minimumSizeHint() const
{
    return {240, m_geometry.rulerHeight + 3 * m_geometry.laneHeight};
}

// --- Geometry ---

qint64 TimelineView::shownLength() const
{
    return std::max(m_model.length(), shortestLength);
}

double TimelineView::fittingScale() const
{
    const int room =
        viewport()->width() - m_geometry.headerWidth - TimelineGeometry::margin - tailWidth;
    return std::max(room, 50) / double(shownLength());
}

void TimelineView::updateGeometryAndBars()
{
    const QFontMetrics metrics(font());
    m_geometry.size = viewport()->size();
    m_geometry.laneHeight = metrics.height() + lanePadding;
    m_geometry.rulerHeight = metrics.height() + lanePadding;
    m_geometry.headerWidth = 0;
    if (!m_isPacked && m_model.laneCount() > 0)
        m_geometry.headerWidth =
            std::min(headerCharacters * metrics.averageCharWidth(), m_geometry.size.width() / 3);
    const double fitting = fittingScale();
    if (m_isFitted)
        m_geometry.pixelsPerMs = fitting;
    const double largest =
        std::max(fitting, std::min(largestScale, widestContent / double(shownLength())));
    m_geometry.pixelsPerMs = std::clamp(m_geometry.pixelsPerMs, fitting, largest);
    updateScrollBars();
    updateRunning();
    repaintAll();
}

void TimelineView::updateScrollBars()
{
    const QRect field = m_geometry.field();
    const auto setUp = [](QScrollBar &bar, double content, int page, int step) {
        bar.setRange(0, std::max(0, int(std::ceil(content)) - page));
        bar.setPageStep(page);
        bar.setSingleStep(step);
    };
    const double width =
        double(shownLength()) * m_geometry.pixelsPerMs + TimelineGeometry::margin + tailWidth;
    // A fitted content must not show a bar for the part of a pixel.
    setUp(*horizontalScrollBar(), m_isFitted ? 0 : width, field.width(), 40);
    setUp(*verticalScrollBar(), m_model.laneCount() * m_geometry.laneHeight, field.height(),
          m_geometry.laneHeight);
    m_geometry.scrollX = horizontalScrollBar()->value();
    m_geometry.scrollY = verticalScrollBar()->value();
}

void TimelineView::zoomIn()
{
    zoomAroundMiddle(zoomStep);
}

void TimelineView::zoomOut()
{
    zoomAroundMiddle(1 / zoomStep);
}

void TimelineView::zoomToFit()
{
    m_isFitted = true;
    updateGeometryAndBars();
}

// Around the playhead, where it is to be seen.
void TimelineView::zoomAroundMiddle(double factor)
{
    const QRect field = m_geometry.field();
    const int playhead = xAt(m_position);
    const bool isSeen = playhead >= field.left() && playhead <= field.right();
    zoomAround(factor, isSeen ? playhead : field.center().x());
}

void TimelineView::zoomAround(double factor, int x)
{
    if (!m_top)
        return;
    const double ms = m_geometry.timeAt(x);
    m_isFitted = false;
    m_geometry.pixelsPerMs *= factor;
    if (m_geometry.pixelsPerMs <= fittingScale() * 1.0001)
        m_isFitted = true;
    updateGeometryAndBars();
    const double scroll =
        ms * m_geometry.pixelsPerMs + TimelineGeometry::margin - (x - m_geometry.headerWidth);
    horizontalScrollBar()->setValue(int(std::lround(std::clamp(scroll, 0.0, widestContent))));
}

void TimelineView::scrollContentsBy(int, int)
{
    m_geometry.scrollX = horizontalScrollBar()->value();
    m_geometry.scrollY = verticalScrollBar()->value();
    updateRunning();
    repaintAll();
}

void TimelineView::resizeEvent(QResizeEvent *)
{
    updateGeometryAndBars();
}

void TimelineView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
    case QEvent::FontChange:
        m_colours = TimelineColours(palette());
        updateGeometryAndBars();
        break;
    default: break;
    }
}

// --- Painting ---

void TimelineView::repaintAll()
{
    m_stale = QRect(QPoint(), m_geometry.size);
    viewport()->update();
}

void TimelineView::paintEvent(QPaintEvent *event)
{
    renderCache();
    QPainter painter(viewport());
    painter.setClipRegion(event->region());
    painter.drawPixmap(0, 0, m_cache);
    if (m_model.rows().empty()) {
        painter.setPen(m_colours.faintText());
        painter.drawText(m_geometry.field(), Qt::AlignCenter,
                         m_top ? tr("This effect has no children") : tr("No effect"));
    }
    if (m_top)
        paintPlayhead(painter);
    if (hasFocus()) {
        painter.setPen(m_colours.accent());
        painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
    }
}

void TimelineView::renderCache()
{
    const qreal ratio = viewport()->devicePixelRatioF();
    const QSize pixels = (QSizeF(m_geometry.size) * ratio).toSize();
    if (m_cache.size() != pixels || m_cache.devicePixelRatio() != ratio) {
        m_cache = QPixmap(pixels);
        m_cache.setDevicePixelRatio(ratio);
        m_stale = QRect(QPoint(), m_geometry.size);
    }
    if (m_stale.isEmpty())
        return;
    QPainter painter(&m_cache);
    const TimelinePainter timeline(
        {m_model, m_geometry, m_colours, m_running, m_highlighted, m_isPacked, font()});
    // Many small areas cost more than one that has them all.
    constexpr int mostAreas = 8;
    if (m_stale.rectCount() > mostAreas)
        m_stale = m_stale.boundingRect();
    for (const QRect &area : m_stale)
        timeline.paint(painter, area);
    m_stale = {};
}

QRect TimelineView::playheadStrip() const
{
    return {xAt(m_position) - playheadHalf, 0, 2 * playheadHalf + 1, m_geometry.size.height()};
}

void TimelineView::paintPlayhead(QPainter &painter) const
{
    const int x = xAt(m_position);
    const QRect field = m_geometry.field();
    if (x < field.left() || x > field.right() + playheadHalf)
        return;
    painter.fillRect(QRect(x, m_geometry.rulerHeight / 2, 1, m_geometry.size.height()),
                     m_colours.text());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_colours.base(), 1));
    painter.setBrush(m_colours.text());
    const double bottom = m_geometry.rulerHeight;
    const double top = bottom * 0.45;
    const double half = playheadHalf - 2;
    painter.drawPolygon(QPolygonF{QPointF(x + 0.5 - half, top), QPointF(x + 0.5 + half, top),
                                  QPointF(x + 0.5, bottom)});
    painter.restore();
}

void TimelineView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void TimelineView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

// --- Playing ---

void TimelineView::setPosition(quint32 ms)
{
    for (const int row : updateRunning())
        repaintRow(row);
    if (ms == m_position)
        return;
    const int oldX = xAt(m_position);
    const QRect oldStrip = playheadStrip();
    m_position = ms;
    if (xAt(ms) == oldX)
        return;
    viewport()->update(oldStrip);
    viewport()->update(playheadStrip());
    follow(oldX);
}

void TimelineView::follow(int oldX)
{
    const QRect field = m_geometry.field();
    const auto isSeen = [&field](int x) { return x >= field.left() && x <= field.right(); };
    const int x = xAt(m_position);
    if (m_isPressed || horizontalScrollBar()->isSliderDown() || !isSeen(oldX) || isSeen(x))
        return;
    const double target = field.left() + field.width() * pageBegin;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + rounded(x - target));
}

// What a stopped effect holds draws nothing, whatever its own state.
bool TimelineView::isPlaying(int row) const
{
    for (; row >= 0; row = m_model.row(row).holder) {
        const Effect *effect = m_model.row(row).effect;
        if (!effect || !effect->getState())
            return false;
    }
    return m_top && m_top->getState();
}

// Reads the states of the rows in sight; returns those that changed.
std::vector<int> TimelineView::updateRunning()
{
    const int firstLane = m_geometry.laneAt(m_geometry.rulerHeight);
    const int lastLane = m_geometry.laneAt(m_geometry.size.height());
    const std::size_t last = m_model.firstOfLane(lastLane + 1);
    std::vector<int> changed;
    for (std::size_t i = m_model.firstOfLane(firstLane); i < last; ++i) {
        const int row = m_model.shown()[i];
        const char running = isPlaying(row) ? 1 : 0;
        char &shown = m_running[std::size_t(row)];
        if (shown != running)
            changed.push_back(row);
        shown = running;
    }
    return changed;
}

void TimelineView::repaintRow(int row)
{
    const TimelineRow &child = m_model.row(row);
    const QRectF bar = m_geometry.bar(child) & QRectF(m_geometry.field());
    const QRect name(0, m_geometry.laneTop(child.lane), m_geometry.headerWidth,
                     m_geometry.laneHeight);
    for (const QRect &area : {bar.toAlignedRect(), name}) {
        if (area.isEmpty())
            continue;
        m_stale += area;
        viewport()->update(area);
    }
}

// --- The user ---

int TimelineView::rowAt(QPoint position) const
{
    if (position.y() < m_geometry.rulerHeight)
        return -1;
    const bool isName = position.x() < m_geometry.headerWidth;
    const int lane = m_geometry.laneAt(position.y());
    const std::size_t last = m_model.firstOfLane(lane + 1);
    int found = -1;
    for (std::size_t i = m_model.firstOfLane(lane); i < last; ++i) {
        const int row = m_model.shown()[i];
        if (isName || m_geometry.bar(m_model.row(row)).contains(position))
            found = row; // of bars that overlap, the one that is painted last
    }
    return found;
}

void TimelineView::highlightRow(int row)
{
    if (row == m_highlighted)
        return;
    m_highlighted = row;
    setAccessibleDescription(row < 0 ? tr("The children of the effect as bars over time")
                                     : TimelineTexts(m_model).line(row));
    repaintAll();
}

void TimelineView::ensureVisible(int row)
{
    const TimelineRow &child = m_model.row(row);
    const int top = child.lane * m_geometry.laneHeight;
    QScrollBar &vertical = *verticalScrollBar();
    vertical.setValue(std::clamp(vertical.value(),
                                 top + m_geometry.laneHeight - m_geometry.field().height(), top));
    const QRectF bar = m_geometry.bar(child);
    const QRect field = m_geometry.field();
    if (bar.right() < field.left() || bar.left() > field.right())
        horizontalScrollBar()->setValue(
            rounded(double(horizontalScrollBar()->value()) + bar.left() - field.center().x()));
}

void TimelineView::unfoldRow(int row, bool unfolded)
{
    if (!m_model.row(row).holdsEffects || m_model.row(row).isUnfolded == unfolded)
        return;
    m_model.setUnfolded(row, unfolded);
    layOut();
}

void TimelineView::toggle(int row)
{
    unfoldRow(row, !m_model.row(row).isUnfolded);
}

void TimelineView::seekTo(int x)
{
    const qint64 ms = std::clamp(timeAt(x), qint64{0}, shownLength());
    emit seekRequested(quint32(std::min<qint64>(ms, std::numeric_limits<quint32>::max())));
}

void TimelineView::hoverRow(int row)
{
    if (row == m_hovered)
        return;
    m_hovered = row;
    emit childHovered(row < 0 ? QString() : TimelineTexts(m_model).line(row));
}

void TimelineView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_isPressed = true;
    const QPoint position = event->position().toPoint();
    const int row = rowAt(position);
    if (row >= 0) {
        highlightRow(row);
        if (m_geometry.disclosure(m_model.row(row)).contains(position))
            toggle(row);
        return;
    }
    if (position.x() < m_geometry.headerWidth || !m_top)
        return;
    m_isSeeking = true;
    seekTo(position.x());
}

void TimelineView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (m_isSeeking)
        seekTo(position.x());
    else
        hoverRow(rowAt(position));
}

void TimelineView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isSeeking = false;
    m_isPressed = false;
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const int row = rowAt(position);
    const bool isOnBar = row >= 0 && event->button() == Qt::LeftButton
                         && !m_geometry.disclosure(m_model.row(row)).contains(position);
    if (!isOnBar) {
        mousePressEvent(event); // two clicks in quick succession
        return;
    }
    m_isPressed = true;
    toggle(row);
}

void TimelineView::wheelEvent(QWheelEvent *event)
{
    const QPoint angle = event->angleDelta();
    const bool isOnNames = event->position().x() < m_geometry.headerWidth;
    // With Alt some platforms turn the wheel sideways.
    const int delta = angle.y() != 0 ? angle.y() : angle.x();
    const bool isSideways = std::abs(angle.x()) > std::abs(angle.y());
    const auto scroll = [delta](QScrollBar &bar) {
        bar.setValue(bar.value() - qRound(delta / wheelNotch * 3 * bar.singleStep()));
    };
    const bool isAlt = event->modifiers().testFlag(Qt::AltModifier);
    const bool isShift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (!isAlt && (isShift || isSideways))
        scroll(*horizontalScrollBar());
    else if (isAlt || isOnNames)
        scroll(*verticalScrollBar());
    else
        zoomAround(std::pow(zoomStep, delta / wheelNotch), qRound(event->position().x()));
    event->accept();
}

void TimelineView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: zoomIn(); return;
    case Qt::Key_Minus: zoomOut(); return;
    case Qt::Key_0: zoomToFit(); return;
    case Qt::Key_Up: moveHighlight(-1); return;
    case Qt::Key_Down: moveHighlight(1); return;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: QAbstractScrollArea::keyPressEvent(event); return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Return:
    case Qt::Key_Enter: event->setAccepted(handleFoldKey(event->key())); return;
    default: event->ignore(); return;
    }
}

void TimelineView::moveHighlight(int step)
{
    const std::vector<int> &shown = m_model.shown();
    if (shown.empty())
        return;
    const auto place = std::find(shown.begin(), shown.end(), m_highlighted);
    std::ptrdiff_t next = step > 0 ? 0 : std::ptrdiff_t(shown.size()) - 1;
    if (place != shown.end())
        next = std::clamp(place - shown.begin() + step, std::ptrdiff_t{0},
                          std::ptrdiff_t(shown.size()) - 1);
    highlightRow(shown[std::size_t(next)]);
    ensureVisible(m_highlighted);
}

// Whether the key meant something here.
bool TimelineView::handleFoldKey(int key)
{
    if (m_highlighted < 0)
        return false;
    const TimelineRow &row = m_model.row(m_highlighted);
    if (key == Qt::Key_Left && !row.isUnfolded && row.holder >= 0) {
        highlightRow(row.holder);
        ensureVisible(m_highlighted);
        return true;
    }
    if (!row.holdsEffects)
        return false;
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        toggle(m_highlighted);
    else
        unfoldRow(m_highlighted, key == Qt::Key_Right);
    return true;
}

bool TimelineView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave)
        hoverRow(-1);
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const int row = rowAt(help->pos());
        if (row >= 0)
            QToolTip::showText(help->globalPos(), TimelineTexts(m_model).toolTip(row), viewport(),
                               QRect(help->pos(), QSize(1, 1)));
        else
            QToolTip::hideText();
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace rehearsal
