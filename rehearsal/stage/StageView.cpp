#include "StageView.h"

#include "LightSpacing.h"
#include "StageMap.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace rehearsal {

namespace {

constexpr double pictureShape = 1.6; // width by height
constexpr double zoomStep = 1.25;
constexpr int arrowStep = 60;       // px
constexpr double widestMargin = 24; // px
constexpr double hoverReach = 14;   // px
constexpr int labelDistance = 16;   // px, from the cursor
constexpr int longestName = 280;    // px
constexpr qsizetype mostGroups = 6;

// In parts of the usual distance of neighbours, and their bounds in px.
constexpr double corePart = 0.085;
constexpr double smallestCore = 2.2;
constexpr double largestCore = 11;
constexpr double haloPart = 1.15;
constexpr double smallestHalo = 10;
constexpr double largestHalo = 120;

const QColor ringColour(120, 190, 255);
const QColor quietText(120, 126, 140);

const QString labelStyle =
    QStringLiteral("QLabel { background: #f21b2029; color: #e8ebf0; border: 1px solid #4a5568;"
                   " border-radius: 5px; padding: 5px 8px; }");

// Lights may be placed anywhere: far enough is far enough.
QPointF bounded(QPointF place)
{
    const auto coordinate = [](double value) {
        return std::isnan(value) ? 0.0 : std::clamp(value, -1.0, 2.0);
    };
    return {coordinate(place.x()), coordinate(place.y())};
}

QRegion toLogical(const QRegion &region, double ratio)
{
    if (ratio == 1)
        return region;
    QRegion scaled;
    for (const QRect &area : region)
        scaled +=
            QRectF(QPointF(area.topLeft()) / ratio, QSizeF(area.size()) / ratio).toAlignedRect();
    return scaled;
}

double boundedBrightness(double brightness)
{
    return brightness > 0 ? std::min(brightness, 1.0) : 0.0;
}

} // namespace

StageView::StageView(QWidget *parent) : QWidget(parent), m_label(new QLabel(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(tr("Stage"));
    setAccessibleDescription(tr("The lights of the show at their places. Plus and minus zoom, 0 "
                                "shows all, arrow keys pan."));

    m_label->setObjectName(QStringLiteral("m_label"));
    m_label->setTextFormat(Qt::RichText);
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_label->setStyleSheet(labelStyle);
    m_label->hide();
}

void StageView::setMap(const StageMap *map)
{
    setHovered(-1);
    m_map = map;
    m_lights.clear();
    std::vector<Spot> spots;
    if (map) {
        for (const StageLight *light : map->lights()) {
            m_lights.push_back(light);
            spots.push_back({light->uid(), bounded(light->place())});
        }
    }
    readBrightness();
    if (std::exchange(m_spots, std::move(spots)) != m_spots) {
        std::vector<QPointF> places;
        for (const Spot &spot : m_spots)
            places.emplace_back(spot.place.x(), spot.place.y() / pictureShape);
        m_spacing = usualSpacing(std::move(places));
        fit();
    }
    invalidateScene();
    updateHovered();
}

void StageView::showFrame()
{
    readBrightness();
    if (m_hovered >= 0)
        refreshLabel();
    if (!m_isSceneValid)
        return;
    const QRegion changed = m_canvas.show(m_brightness);
    if (!changed.isEmpty())
        update(toLogical(changed, devicePixelRatioF()));
}

void StageView::readBrightness()
{
    m_brightness.resize(m_lights.size());
    std::transform(m_lights.begin(), m_lights.end(), m_brightness.begin(),
                   [](const StageLight *light) { return light->shown(); });
}

// --- Where things are ---

double StageView::margin() const
{
    return std::min(widestMargin, 0.06 * std::min(width(), height()));
}

QSizeF StageView::pictureSize() const
{
    const double availableWidth = std::max(1.0, width() - 2 * margin());
    const double availableHeight = std::max(1.0, height() - 2 * margin());
    const double fitted = std::min(availableWidth, availableHeight * pictureShape) * m_zoom;
    return {fitted, fitted / pictureShape};
}

QPointF StageView::pictureOrigin() const
{
    const QSizeF size = pictureSize();
    return {width() / 2.0 - m_centre.x() * size.width(),
            height() / 2.0 - m_centre.y() * size.height()};
}

QSize StageView::deviceSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

QPoint StageView::devicePoint(QPointF place) const
{
    // Rounded apart, so that lights keep their distances while the picture is panned.
    const double ratio = devicePixelRatioF();
    const QSizeF size = pictureSize() * ratio;
    return (pictureOrigin() * ratio).toPoint()
           + QPointF(place.x() * size.width(), place.y() * size.height()).toPoint();
}

QPointF StageView::positionOf(quint32 uid) const
{
    const auto found = std::find_if(m_spots.begin(), m_spots.end(),
                                    [uid](const Spot &spot) { return spot.uid == uid; });
    return found == m_spots.end() ? QPointF()
                                  : QPointF(devicePoint(found->place)) / devicePixelRatioF();
}

double StageView::spacing() const
{
    return m_spacing * pictureSize().width();
}

double StageView::coreRadius() const
{
    return std::clamp(corePart * spacing(), smallestCore, largestCore);
}

double StageView::haloRadius() const
{
    return std::clamp(haloPart * spacing(), smallestHalo, largestHalo);
}

// --- Zoom and pan ---

void StageView::fit()
{
    m_centre = {0.5, 0.5};
    zoomTo(1, rect().toRectF().center());
}

void StageView::zoomIn()
{
    zoomTo(m_zoom * zoomStep, QPointF(width(), height()) / 2);
}

void StageView::zoomOut()
{
    zoomTo(m_zoom / zoomStep, QPointF(width(), height()) / 2);
}

void StageView::zoomTo(double zoom, QPointF around)
{
    const double before = m_zoom;
    const QPointF fromMiddle = around - QPointF(width(), height()) / 2;
    const auto placeAround = [&] {
        return QPointF(fromMiddle.x() / pictureSize().width(),
                       fromMiddle.y() / pictureSize().height());
    };
    const QPointF place = m_centre + placeAround();
    m_zoom = std::clamp(zoom, 1.0, maximumZoom);
    setCentre(place - placeAround());
    if (m_zoom != before)
        emit zoomChanged(m_zoom);
}

void StageView::panBy(QPointF distance)
{
    const QSizeF size = pictureSize();
    setCentre(m_centre - QPointF(distance.x() / size.width(), distance.y() / size.height()));
}

void StageView::setCentre(QPointF centre)
{
    // The picture's edge may come as far in as the margin; what is smaller than the view is
    // centred.
    const auto boundedCoordinate = [this](double coordinate, double view, double picture) {
        const double least = std::min(0.5, (view / 2 - margin()) / picture);
        return std::clamp(coordinate, least, 1 - least);
    };
    const QSizeF size = pictureSize();
    m_centre = {boundedCoordinate(centre.x(), width(), size.width()),
                boundedCoordinate(centre.y(), height(), size.height())};
    invalidateScene();
    updateHovered();
}

void StageView::invalidateScene()
{
    m_isSceneValid = false;
    update();
}

GlowScene StageView::makeScene() const
{
    const double ratio = devicePixelRatioF();
    GlowScene scene;
    scene.size = deviceSize();
    scene.picture = QRect(devicePoint({0, 0}), (pictureSize() * ratio).toSize());
    scene.lights.reserve(m_spots.size());
    for (const Spot &spot : m_spots)
        scene.lights.push_back(devicePoint(spot.place));
    scene.coreRadius = coreRadius() * ratio;
    scene.haloRadius = haloRadius() * ratio;
    return scene;
}

void StageView::updateScene()
{
    m_canvas.setScene(makeScene());
    m_canvas.show(m_brightness);
    m_isSceneValid = true;
}

// --- Painting ---

void StageView::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    if (!m_isSceneValid || m_canvas.image().size() != deviceSize())
        updateScene();
    QPainter painter(this);
    painter.save();
    painter.scale(1 / devicePixelRatioF(), 1 / devicePixelRatioF());
    painter.drawImage(0, 0, m_canvas.image());
    painter.restore();
    if (m_lights.empty()) {
        painter.setPen(quietText);
        painter.drawText(rect(), Qt::AlignCenter, tr("No lights"));
    }
    if (m_hovered >= 0)
        paintRing(painter);
}

void StageView::paintRing(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ringColour, 1.5));
    painter.drawEllipse(ring());
}

void StageView::resizeEvent(QResizeEvent *event)
{
    Q_UNUSED(event)
    setCentre(m_centre);
}

// --- Mouse and keys ---

void StageView::wheelEvent(QWheelEvent *event)
{
    const int turned = event->angleDelta().y();
    if (turned == 0) {
        event->ignore();
        return;
    }
    zoomTo(m_zoom * std::pow(zoomStep, turned / 120.0), event->position());
    event->accept();
}

void StageView::mousePressEvent(QMouseEvent *event)
{
    const bool isDrag = event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton;
    if (!isDrag || m_dragButton != Qt::NoButton) {
        event->ignore();
        return;
    }
    m_dragButton = event->button();
    m_draggedTo = event->position();
    if (m_zoom > 1)
        setCursor(Qt::ClosedHandCursor);
}

void StageView::mouseMoveEvent(QMouseEvent *event)
{
    m_cursor = event->position();
    if (m_dragButton != Qt::NoButton)
        panBy(event->position() - std::exchange(m_draggedTo, event->position()));
    else
        updateHovered();
}

void StageView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != m_dragButton) {
        event->ignore();
        return;
    }
    m_dragButton = Qt::NoButton;
    unsetCursor();
    updateHovered();
}

void StageView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        fit();
    else
        mousePressEvent(event);
}

void StageView::keyPressEvent(QKeyEvent *event)
{
    if (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) {
        event->ignore();
        return;
    }
    const auto panIfZoomed = [this, event](int x, int y) {
        if (m_zoom > 1)
            panBy(QPointF(x, y) * arrowStep);
        else
            event->ignore();
    };
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: zoomIn(); break;
    case Qt::Key_Minus: zoomOut(); break;
    case Qt::Key_0: fit(); break;
    case Qt::Key_Left: panIfZoomed(1, 0); break;
    case Qt::Key_Right: panIfZoomed(-1, 0); break;
    case Qt::Key_Up: panIfZoomed(0, 1); break;
    case Qt::Key_Down: panIfZoomed(0, -1); break;
    default: event->ignore();
    }
}

void StageView::leaveEvent(QEvent *event)
{
    Q_UNUSED(event)
    m_cursor.reset();
    updateHovered();
}

// --- The light under the cursor ---

int StageView::lightNear(QPointF position) const
{
    const double reach = std::max(hoverReach, coreRadius() + 4);
    double nearest = reach * reach;
    int found = -1;
    const QSizeF size = pictureSize();
    const QPointF fromOrigin = position - pictureOrigin();
    for (size_t i = 0; i < m_spots.size(); ++i) {
        const QPointF place = m_spots[i].place;
        const QPointF away =
            fromOrigin - QPointF(place.x() * size.width(), place.y() * size.height());
        const double distance = QPointF::dotProduct(away, away);
        if (distance < nearest) {
            nearest = distance;
            found = static_cast<int>(i);
        }
    }
    return found;
}

void StageView::updateHovered()
{
    const bool isHovering = m_cursor && m_dragButton == Qt::NoButton;
    setHovered(isHovering ? lightNear(*m_cursor) : -1);
    if (m_hovered >= 0)
        placeLabel();
}

void StageView::setHovered(int index)
{
    if (index == m_hovered)
        return;
    updateRing();
    m_hovered = index;
    m_hoveredPercent = -1;
    m_hoveredGroups = groupNames();
    updateRing();
    m_label->setVisible(index >= 0);
    if (index >= 0)
        refreshLabel();
    emit lightHovered(index >= 0 ? m_spots[static_cast<size_t>(index)].uid : 0);
}

void StageView::refreshLabel()
{
    const double brightness = boundedBrightness(m_brightness[static_cast<size_t>(m_hovered)]);
    const int percent = static_cast<int>(std::lround(100 * brightness));
    if (std::exchange(m_hoveredPercent, percent) == percent)
        return;
    m_label->setText(labelText());
    m_label->adjustSize();
    placeLabel();
}

void StageView::placeLabel()
{
    // Right of and below the cursor, or on its other side where there is no room.
    const auto beside = [](int cursor, int length, int view) {
        const int after = cursor + labelDistance;
        const int before = cursor - labelDistance - length;
        return after + length <= view ? after : std::clamp(before, 0, std::max(0, view - length));
    };
    const QPoint cursor = m_cursor->toPoint();
    m_label->move(beside(cursor.x(), m_label->width(), width()),
                  beside(cursor.y(), m_label->height(), height()));
}

QString StageView::labelText() const
{
    const StageLight &light = *m_lights[static_cast<size_t>(m_hovered)];
    const auto line = [this](const QString &text) {
        return fontMetrics()
            .elidedText(text.simplified(), Qt::ElideMiddle, longestName)
            .toHtmlEscaped();
    };
    QString text = QStringLiteral("<b>%1</b><br>").arg(line(light.name()));
    text += tr("Light %1, %2 %").arg(light.uid()).arg(m_hoveredPercent);
    for (const QString &group : m_hoveredGroups.mid(0, mostGroups))
        text += QStringLiteral("<br><span style='color:#a9b4c6'>%1</span>").arg(line(group));
    if (m_hoveredGroups.size() > mostGroups)
        text += QStringLiteral("<br><span style='color:#a9b4c6'>%1</span>")
                    .arg(tr("and %n more", nullptr,
                            static_cast<int>(m_hoveredGroups.size() - mostGroups)));
    return text;
}

QStringList StageView::groupNames() const
{
    QStringList names;
    if (m_hovered < 0)
        return names;
    const StageLight *hovered = m_lights[static_cast<size_t>(m_hovered)];
    for (const StageGroup *group : m_map->groups()) {
        const QList<StageLight *> &lights = group->lights();
        if (std::find(lights.begin(), lights.end(), hovered) != lights.end())
            names.append(group->name());
    }
    return names;
}

QRectF StageView::ring() const
{
    const double ratio = devicePixelRatioF();
    const QPointF middle =
        (QPointF(devicePoint(m_spots[static_cast<size_t>(m_hovered)].place)) + QPointF(0.5, 0.5))
        / ratio;
    const double radius = coreRadius() * 1.4 + 4;
    return {middle.x() - radius, middle.y() - radius, 2 * radius, 2 * radius};
}

void StageView::updateRing()
{
    if (m_hovered >= 0)
        update(ring().toAlignedRect().adjusted(-2, -2, 2, 2));
}

} // namespace rehearsal
