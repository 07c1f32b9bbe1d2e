#pragma once

#include <QImage>

#include <vector>

namespace rehearsal {

/// The brightness of lights over time as shades of grey: lights down, time across.
///
/// It is bounded: where there are more frames or lights than it has columns or rows, a cell shows
/// the brightest of the frames and lights that it stands for, so that no flash is lost.
class BrightnessGrid
{
public:
    static constexpr int maximumColumns = 1600;
    static constexpr int maximumRows = 1600;

    BrightnessGrid(qint64 frames, qsizetype lights);

    /// @param brightness of every light, 0 ... 1
    void addFrame(qint64 frame, const std::vector<double> &brightness);

    bool isEmpty() const { return m_cells.isNull(); }
    int columns() const { return m_cells.width(); }
    int rows() const { return m_cells.height(); }
    qint64 framesPerColumn() const { return m_framesPerColumn; }
    qint64 lightsPerRow() const { return m_lightsPerRow; }

    /// One pixel a cell, black for 0 and white for 1.
    const QImage &cells() const { return m_cells; }

private:
    qint64 m_framesPerColumn;
    qint64 m_lightsPerRow;
    QImage m_cells;
};

} // namespace rehearsal
