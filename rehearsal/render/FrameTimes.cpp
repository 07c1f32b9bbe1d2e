#include "FrameTimes.h"

#include <cmath>

namespace rehearsal {

FrameTimes::FrameTimes(double fps, quint32 lengthMs)
    : m_fps(fps),
      m_lengthMs(lengthMs),
      m_count(static_cast<qint64>(std::ceil(lengthMs * fps / 1000)))
{
    // The product above is rounded; what counts is each frame's own time.
    while (m_count > 0 && at(m_count - 1) >= lengthMs)
        --m_count;
    while (at(m_count) < lengthMs)
        ++m_count;
}

qint64 FrameTimes::at(qint64 frame) const
{
    return static_cast<qint64>(std::floor(static_cast<double>(frame) * 1000 / m_fps));
}

} // namespace rehearsal
