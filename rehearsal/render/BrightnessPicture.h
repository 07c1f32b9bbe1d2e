#pragma once

#include "BrightnessGrid.h"
#include "FrameTimes.h"

#include <QImage>
#include <QStringList>

namespace rehearsal {

/// Draws a grid of brightness as a figure: the lights' names at the left, a time axis below, and a
/// scale of the shades.
class BrightnessPicture
{
public:
    /// @param lightNames from the top
    BrightnessPicture(QString title, QStringList lightNames, FrameTimes times);

    /// The same grid always gives the same pixels.
    QImage draw(const BrightnessGrid &grid) const;

private:
    struct Layout;

    Layout layOut(const BrightnessGrid &grid) const;
    void drawHeading(QPainter &painter, const Layout &layout) const;
    static void drawScale(QPainter &painter, const Layout &layout);
    void drawPlot(QPainter &painter, const Layout &layout, const BrightnessGrid &grid) const;
    void drawLightNames(QPainter &painter, const Layout &layout, const BrightnessGrid &grid) const;
    static void drawTimeAxis(QPainter &painter, const Layout &layout, const QString &caption);
    QString subtitle() const;
    static QString caption(const BrightnessGrid &grid);

    QString m_title;
    QStringList m_lightNames;
    FrameTimes m_times;
};

/// The smallest of 1, 2 and 5 times a power of ten that is not below `atLeast`.
double niceStep(double atLeast);

} // namespace rehearsal
