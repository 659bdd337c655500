#include "Zerlane/Utils/Clock.h"

#include <ctime>

namespace Zerlane::Utils {

void Clock::getTime(long& microseconds)
{
    microseconds = static_cast<long>(now());
}

uint64_t Clock::now()
{
    timespec ts {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<uint64_t>(ts.tv_sec) * 1000000u + static_cast<uint64_t>(ts.tv_nsec) / 1000u;
}

} // namespace Zerlane::Utils
