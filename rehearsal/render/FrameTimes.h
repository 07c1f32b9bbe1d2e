#pragma once

#include <QtGlobal>

namespace rehearsal {

/// When the frames of a render are: frame k at floor(k x 1000 / fps) ms, k from 0, while that is
/// below the length.
class FrameTimes
{
public:
    /// @param fps frames a second, from lowestFps to highestFps
    FrameTimes(double fps, quint32 lengthMs);

    static constexpr double lowestFps = 0.001;
    static constexpr double highestFps = 1000;

    double fps() const { return m_fps; }
    quint32 lengthMs() const { return m_lengthMs; }
    qint64 count() const { return m_count; }
    /// Milliseconds from the start of the render; goes on counting after a day.
    qint64 at(qint64 frame) const;

private:
    double m_fps;
    quint32 m_lengthMs;
    qint64 m_count;
};

} // namespace rehearsal
