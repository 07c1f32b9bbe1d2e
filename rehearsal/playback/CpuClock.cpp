#include "CpuClock.h"

#include <ctime>

namespace rehearsal {

qint64 threadCpuNs()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace rehearsal
