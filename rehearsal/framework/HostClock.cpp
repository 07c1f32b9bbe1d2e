#include "HostClock.h"

namespace rehearsal {

namespace {

constexpr int msPerDay = 24 * 60 * 60 * 1000;

} // namespace

quint32 elapsedBetween(QTime from, QTime to)
{
    const int difference = to.msecsSinceStartOfDay() - from.msecsSinceStartOfDay();
    return static_cast<quint32>(difference < 0 ? difference + msPerDay : difference);
}

QTime HostClock::now() const
{
    if (m_frame.isValid())
        return m_frame;
    if (m_stepped.isValid())
        return m_stepped;
    return m_wallStart.addMSecs(static_cast<int>(m_sinceWallStart.elapsed() % msPerDay));
}

void HostClock::step(QTime time)
{
    m_stepped = time;
}

void HostClock::beginFrame(QTime time)
{
    m_frame = time;
}

void HostClock::endFrame()
{
    m_frame = QTime();
}

} // namespace rehearsal
