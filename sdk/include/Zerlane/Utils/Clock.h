#pragma once

#include "Zerlane/Export.h"

#include <cstdint>

namespace Zerlane::Utils {

// The library clock: a monotonic time in microseconds, the same in every process of the machine.
// Sample capture and arrival times use it.
class ZERLANE_API Clock {
public:
    static void getTime(long& microseconds);
    static uint64_t now();
};

} // namespace Zerlane::Utils
