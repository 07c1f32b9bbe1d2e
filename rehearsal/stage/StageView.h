#pragma once

#include "GlowCanvas.h"

#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QStringList>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QPainter;

namespace rehearsal {

class StageLight;
class StageMap;

/// The stage by night: every light of a map at its place, glowing by what it shows. The stage
/// picture is 16:10; the wheel zooms, dragging pans, and the light under the cursor is named.
class StageView : public QWidget
{
    Q_OBJECT

public:
    explicit StageView(QWidget *parent = nullptr);

    /// Shows the lights of a map; null shows an empty night. The map is not owned and must outlive
    /// the view, or be replaced before it dies. Its lights are read here, their light in
    /// showFrame(). Zoom and pan are kept when the lights and their places are the same as before.
    void setMap(const StageMap *map);

    /// Shows what the lights of the map show now.
    void showFrame();

    /// 1 (the whole picture) ... maximumZoom.
    double zoom() const { return m_zoom; }
    static constexpr double maximumZoom = 32;

    /// Where a light is drawn, in this widget's coordinates: the top left corner of the middle
    /// pixel. A null point when there is no such light.
    QPointF positionOf(quint32 uid) const;

    QSize sizeHint() const override { return {800, 520}; }
    QSize minimumSizeHint() const override { return {240, 150}; }

public slots:
    void fit();
    void zoomIn();
    void zoomOut();

signals:
    /// The light under the cursor, 0 for none. Once a change.
    void lightHovered(quint32 uid);
    void zoomChanged(double zoom);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    struct Spot
    {
        quint32 uid;
        QPointF place;
        bool operator==(const Spot &) const = default;
    };

    /// Of the stage picture, in this widget's coordinates.
    QSizeF pictureSize() const;
    QPointF pictureOrigin() const;
    double margin() const;
    QSize deviceSize() const;
    /// Of a place on the stage picture, in device pixels.
    QPoint devicePoint(QPointF place) const;

    void zoomTo(double zoom, QPointF around);
    void panBy(QPointF distance);
    void setCentre(QPointF centre);
    void invalidateScene();
    void updateScene();
    GlowScene makeScene() const;
    void readBrightness();

    /// The index of the nearest light within reach, or -1.
    int lightNear(QPointF position) const;
    void updateHovered();
    void setHovered(int index);
    void refreshLabel();
    void placeLabel();
    QString labelText() const;
    QStringList groupNames() const;
    QRectF ring() const;
    void updateRing();
    void paintRing(QPainter &painter) const;
    double coreRadius() const;
    double haloRadius() const;
    double spacing() const;

    const StageMap *m_map = nullptr;
    std::vector<const StageLight *> m_lights;
    std::vector<Spot> m_spots; // of the lights, in their order
    std::vector<double> m_brightness;
    double m_spacing = 0; // usual distance of neighbours; the width of the stage picture is 1

    GlowCanvas m_canvas;
    bool m_isSceneValid = false;
    double m_zoom = 1;
    QPointF m_centre{0.5, 0.5}; // the place in the middle of the view

    Qt::MouseButton m_dragButton = Qt::NoButton;
    QPointF m_draggedTo;
    std::optional<QPointF> m_cursor; // none while it is elsewhere
    int m_hovered = -1;
    QStringList m_hoveredGroups;
    int m_hoveredPercent = -1;
    QLabel *m_label;
};

} // namespace rehearsal
