#pragma once

#include <QByteArray>

#include <vector>

class QIODevice;

namespace rehearsal {

/// Writes the brightness of lights as comma-separated text: a column a light, a row a frame.
class BrightnessTable
{
public:
    /// Writes the header. The device is not owned; its own error says whether a row was lost.
    BrightnessTable(QIODevice &device, const std::vector<quint32> &uids);

    /// @param brightness in the order of the header's uids
    void addFrame(qint64 timeMs, const std::vector<double> &brightness);

private:
    QIODevice &m_device;
    QByteArray m_row;
};

} // namespace rehearsal
