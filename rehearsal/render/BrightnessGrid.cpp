#include "BrightnessGrid.h"

#include <algorithm>
#include <cmath>

namespace rehearsal {

namespace {

qint64 dividedUp(qint64 dividend, qint64 divisor)
{
    return (dividend + divisor - 1) / divisor;
}

// What is not a number is dark.
uchar shadeOf(double brightness)
{
    return brightness > 0 ? static_cast<uchar>(std::lround(std::min(brightness, 1.0) * 255))
                          : uchar{0};
}

} // namespace

BrightnessGrid::BrightnessGrid(qint64 frames, qsizetype lights)
    : m_framesPerColumn(std::max<qint64>(1, dividedUp(frames, maximumColumns))),
      m_lightsPerRow(std::max<qint64>(1, dividedUp(lights, maximumRows))),
      m_cells(static_cast<int>(dividedUp(frames, m_framesPerColumn)),
              static_cast<int>(dividedUp(lights, m_lightsPerRow)), QImage::Format_Grayscale8)
{
    m_cells.fill(0);
}

void BrightnessGrid::addFrame(qint64 frame, const std::vector<double> &brightness)
{
    const auto column = frame / m_framesPerColumn;
    uchar *const bits = m_cells.bits();
    for (std::size_t light = 0; light < brightness.size(); ++light) {
        const auto row = static_cast<qint64>(light) / m_lightsPerRow;
        uchar &cell = bits[row * m_cells.bytesPerLine() + column];
        cell = std::max(cell, shadeOf(brightness[light]));
    }
}

} // namespace rehearsal
