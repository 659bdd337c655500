#include "Zerlane/Utils/StreamingMemory.h"

#include <malloc.h>

namespace Zerlane::Utils {

bool StreamingMemory::keepSampleBlocks()
{
    // Setting either threshold also stops glibc from adjusting them on its own.
    return ::mallopt(M_MMAP_THRESHOLD, KeptBlockBytes) == 1 && ::mallopt(M_TRIM_THRESHOLD, KeptFreeBytes) == 1;
}

} // namespace Zerlane::Utils
