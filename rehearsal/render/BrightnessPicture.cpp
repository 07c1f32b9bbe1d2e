#include "BrightnessPicture.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

constexpr QRgb paper = 0xffffffff;
constexpr QRgb ink = 0xff1d2229;
constexpr QRgb faintInk = 0xff6b7480;
constexpr QRgb plotGround = 0xff000000;
constexpr QRgb rowGap = 0xff182028; // bluish: no shade of a light

// Pixels.
constexpr int margin = 28;
constexpr int headingHeight = 62;
constexpr int tickLength = 6;
constexpr int minorTickLength = 3;
constexpr int labelGap = 10; // between a text and what it belongs to
constexpr int timeAxisHeight = 58;
constexpr int scaleWidth = 180;
constexpr int scaleHeight = 12;
constexpr int longestName = 220;
constexpr int usualPlotHeight = 560;
constexpr int highestRow = 28;
constexpr int lowestGappedRow = 9; // rows below this height touch each other
constexpr int timeLabelDistance = 90;
constexpr int emptyPlotWidth = 900;
constexpr int emptyPlotHeight = 80;

// Sizes in pixels and no hinting: the same on every screen.
QFont font(int pixelSize, QFont::Weight weight = QFont::Normal)
{
    QFont font(QStringList{QStringLiteral("DejaVu Sans")});
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return font;
}

const QFont &labelFont()
{
    static const QFont labels = font(13);
    return labels;
}

int fittingSize(int pixels, int cells)
{
    return cells > 0 ? std::max(1, pixels / cells) : 1;
}

QString counted(qint64 count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(QString::number(count), count == 1 ? one : many);
}

} // namespace

double niceStep(double atLeast)
{
    const double power = std::pow(10, std::floor(std::log10(atLeast)));
    for (const int factor : {1, 2, 5}) {
        if (factor * power >= atLeast * (1 - 1e-9))
            return factor * power;
    }
    return 10 * power;
}

struct BrightnessPicture::Layout
{
    QRect plot;
    int cellWidth;
    int cellHeight;
    double pixelsPerSecond;
    QSize size;
};

BrightnessPicture::BrightnessPicture(QString title, QStringList lightNames, FrameTimes times)
    : m_title(std::move(title)), m_lightNames(std::move(lightNames)), m_times(times)
{
}

QImage BrightnessPicture::draw(const BrightnessGrid &grid) const
{
    const Layout layout = layOut(grid);
    QImage image(layout.size, QImage::Format_RGB32);
    image.fill(paper);
    QPainter painter(&image);
    drawHeading(painter, layout);
    drawScale(painter, layout);
    drawPlot(painter, layout, grid);
    if (grid.isEmpty())
        return image;
    drawLightNames(painter, layout, grid);
    drawTimeAxis(painter, layout, caption(grid));
    return image;
}

BrightnessPicture::Layout BrightnessPicture::layOut(const BrightnessGrid &grid) const
{
    const QFontMetrics metrics(labelFont());
    int nameWidth = 0;
    for (const QString &name : m_lightNames)
        nameWidth = std::max(nameWidth, metrics.horizontalAdvance(name));
    nameWidth = std::min(nameWidth, longestName);

    Layout layout;
    layout.cellWidth = fittingSize(BrightnessGrid::maximumColumns, grid.columns());
    layout.cellHeight = std::min(highestRow, fittingSize(usualPlotHeight, grid.rows()));
    if (grid.rows() > usualPlotHeight / 2)
        layout.cellHeight = grid.rows() > BrightnessGrid::maximumRows / 2 ? 1 : 2;
    const int left = margin + nameWidth + labelGap + tickLength;
    layout.plot = grid.isEmpty()
                      ? QRect(left, margin + headingHeight, emptyPlotWidth, emptyPlotHeight)
                      : QRect(left, margin + headingHeight, layout.cellWidth * grid.columns(),
                              layout.cellHeight * grid.rows());
    layout.pixelsPerSecond =
        m_times.fps() / static_cast<double>(grid.framesPerColumn()) * layout.cellWidth;
    layout.size = {layout.plot.right() + 1 + margin + labelGap,
                   layout.plot.bottom() + 1 + timeAxisHeight + margin / 2};
    return layout;
}

QString BrightnessPicture::subtitle() const
{
    return counted(m_lightNames.size(), QStringLiteral("light"), QStringLiteral("lights"))
           + QStringLiteral("  \u00b7  %1 s  \u00b7  %2 frames a second")
                 .arg(QString::number(m_times.lengthMs() / 1000.0, 'g', 10),
                      QString::number(m_times.fps()));
}

QString BrightnessPicture::caption(const BrightnessGrid &grid)
{
    QString caption = QStringLiteral("time in seconds");
    if (grid.framesPerColumn() > 1)
        caption += QStringLiteral("  \u00b7  a column shows the brightest of %1 frames")
                       .arg(grid.framesPerColumn());
    if (grid.lightsPerRow() > 1)
        caption += QStringLiteral("  \u00b7  a row shows the brightest of %1 lights")
                       .arg(grid.lightsPerRow());
    return caption;
}

void BrightnessPicture::drawHeading(QPainter &painter, const Layout &layout) const
{
    painter.setFont(font(22, QFont::Bold));
    painter.setPen(QColor(ink));
    const QString title = painter.fontMetrics().elidedText(
        m_title, Qt::ElideMiddle, layout.plot.width() - scaleWidth - 4 * margin);
    painter.drawText(layout.plot.left(), margin + 20, title);
    painter.setFont(labelFont());
    painter.setPen(QColor(faintInk));
    painter.drawText(layout.plot.left(), margin + 46, subtitle());
}

void BrightnessPicture::drawScale(QPainter &painter, const Layout &layout)
{
    const QRect bar(layout.plot.right() + 1 - scaleWidth, margin + 8, scaleWidth, scaleHeight);
    for (int x = 0; x < bar.width(); ++x) {
        const int shade = x * 255 / (bar.width() - 1);
        painter.fillRect(bar.left() + x, bar.top(), 1, bar.height(), QColor(shade, shade, shade));
    }
    painter.setPen(QColor(faintInk));
    painter.drawRect(bar.adjusted(-1, -1, 0, 0));
    const QRect line(bar.left(), bar.bottom() + 4, bar.width(), 20);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("0"));
    painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter, QStringLiteral("brightness"));
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("1"));
}

void BrightnessPicture::drawPlot(QPainter &painter, const Layout &layout,
                                 const BrightnessGrid &grid) const
{
    painter.fillRect(layout.plot, QColor(plotGround));
    if (grid.isEmpty()) {
        painter.setPen(QColor(paper));
        painter.drawText(layout.plot, Qt::AlignCenter,
                         m_lightNames.isEmpty() ? QStringLiteral("no lights")
                                                : QStringLiteral("no frames"));
        return;
    }
    painter.drawImage(layout.plot, grid.cells());
    if (layout.cellHeight < lowestGappedRow)
        return;
    for (int row = 1; row < grid.rows(); ++row)
        painter.fillRect(layout.plot.left(), layout.plot.top() + row * layout.cellHeight,
                         layout.plot.width(), 1, QColor(rowGap));
}

void BrightnessPicture::drawLightNames(QPainter &painter, const Layout &layout,
                                       const BrightnessGrid &grid) const
{
    const QFontMetrics metrics = painter.fontMetrics();
    const double lightHeight =
        static_cast<double>(layout.cellHeight) / static_cast<double>(grid.lightsPerRow());
    const auto step = std::max<qsizetype>(
        1, static_cast<qsizetype>(niceStep(std::max(1.0, (metrics.ascent() + 2) / lightHeight))));
    for (qsizetype light = 0; light < m_lightNames.size(); light += step) {
        const int middle =
            layout.plot.top() + static_cast<int>((static_cast<double>(light) + 0.5) * lightHeight);
        const int right = layout.plot.left() - tickLength;
        painter.setPen(QColor(faintInk));
        painter.drawLine(right, middle, layout.plot.left() - 2, middle);
        painter.setPen(QColor(ink));
        const QString name = metrics.elidedText(m_lightNames[light], Qt::ElideMiddle, longestName);
        painter.drawText(
            QRect(0, middle - metrics.height(), right - labelGap + 4, 2 * metrics.height()),
            Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, name);
    }
}

void BrightnessPicture::drawTimeAxis(QPainter &painter, const Layout &layout,
                                     const QString &caption)
{
    const int top = layout.plot.bottom() + 2;
    const double seconds = layout.plot.width() / layout.pixelsPerSecond;
    const double step = niceStep(timeLabelDistance / layout.pixelsPerSecond);
    const int minorTicks = 5;
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    const QFontMetrics metrics = painter.fontMetrics();
    for (int tick = 0; tick * step / minorTicks <= seconds * (1 + 1e-9); ++tick) {
        const bool isMajor = tick % minorTicks == 0;
        const double time = tick * step / minorTicks;
        const int x = layout.plot.left()
                      + std::min(static_cast<int>(std::lround(time * layout.pixelsPerSecond)),
                                 layout.plot.width() - 1);
        painter.setPen(QColor(faintInk));
        painter.drawLine(x, top, x, top + (isMajor ? tickLength : minorTickLength));
        if (!isMajor)
            continue;
        painter.setPen(QColor(ink));
        painter.drawText(
            QRect(x - timeLabelDistance, top + labelGap, 2 * timeLabelDistance, metrics.height()),
            Qt::AlignHCenter, QString::number(time, 'f', decimals));
    }
    painter.setPen(QColor(faintInk));
    painter.drawText(QRect(layout.plot.left(), top + labelGap + metrics.height() + 6,
                           layout.plot.width(), metrics.height()),
                     Qt::AlignHCenter, caption);
}

} // namespace rehearsal
