#pragma once

#include "RulerTicks.h"
#include "TimelineColours.h"
#include "TimelineGeometry.h"
#include "TimelineModel.h"

#include <QFont>

#include <vector>

class QPainter;

namespace rehearsal {

/// Draws all of a timeline that stays while it plays: everything but the playhead.
class TimelinePainter
{
public:
    struct Scene
    {
        const TimelineModel &model;
        const TimelineGeometry &geometry;
        const TimelineColours &colours;
        const std::vector<char> &running; ///< for every row of the model
        int highlighted = -1;             ///< row; -1 for none
        bool isPacked = false;
        QFont font;
        qreal pixelRatio = 1;
    };

    /// What the scene refers to outlives the painter.
    explicit TimelinePainter(const Scene &scene);

    void paint(QPainter &painter, const QRect &area) const;

private:
    void paintLanes(QPainter &painter, const QRect &area) const;
    void paintGrid(QPainter &painter, const QRect &area) const;
    void paintBars(QPainter &painter, const QRect &area) const;
    void paintBar(QPainter &painter, int row, const QRectF &bar) const;
    void paintMark(QPainter &painter, int row, const QRectF &bar) const;
    void paintBody(QPainter &painter, int row, const QRectF &bar, const QRectF &part) const;
    void paintBarText(QPainter &painter, int row, const QRectF &part) const;
    void paintHeader(QPainter &painter, const QRect &area) const;
    void paintName(QPainter &painter, int row) const;
    void paintTriangle(QPainter &painter, const QRectF &box, bool unfolded) const;
    void paintRuler(QPainter &painter, const QRect &area) const;

    bool isRunning(int row) const { return m_scene.running[std::size_t(row)] != 0; }
    bool isWithin(int lane, const QRect &area) const;
    /// The first time of a series of marks that is to be seen in the area, ms.
    qint64 firstTick(qint64 step, const QRect &area) const;

    Scene m_scene;
    const TimelineModel &m_model;
    const TimelineGeometry &m_geometry;
    const TimelineColours &m_colours;
    RulerTicks m_ticks;
};

} // namespace rehearsal
