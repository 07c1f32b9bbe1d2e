#include "RulerTicks.h"

namespace rehearsal {

namespace {

constexpr qint64 second = 1000;
constexpr qint64 minute = 60 * second;
constexpr qint64 hour = 60 * minute;
constexpr qint64 steps[] = {
    1,
    2,
    5,
    10,
    20,
    50,
    100,
    200,
    500,
    second,
    2 * second,
    5 * second,
    10 * second,
    30 * second,
    minute,
    2 * minute,
    5 * minute,
    10 * minute,
    30 * minute,
    hour,
    2 * hour,
    5 * hour,
    10 * hour,
    20 * hour,
    50 * hour,
    100 * hour,
    200 * hour,
    500 * hour,
    1000 * hour,
    2000 * hour,
    5000 * hour,
    10000 * hour,
    50000 * hour,
    100000 * hour,
};
constexpr double narrowestMinor = 6;

int decimalsOf(qint64 step)
{
    if (step % 1000 == 0)
        return 0;
    if (step % 100 == 0)
        return 1;
    return step % 10 == 0 ? 2 : 3;
}

} // namespace

RulerTicks RulerTicks::fitting(double pixelsPerMs, const LabelWidth &labelWidth)
{
    RulerTicks ticks;
    for (const qint64 step : steps) {
        ticks.major = step;
        ticks.decimals = decimalsOf(step);
        if (double(step) * pixelsPerMs >= labelWidth(ticks.decimals))
            break;
    }
    ticks.minor = ticks.major;
    for (const qint64 step : steps) {
        if (double(step) * pixelsPerMs >= narrowestMinor && ticks.major % step == 0) {
            ticks.minor = step;
            break;
        }
    }
    return ticks;
}

} // namespace rehearsal
