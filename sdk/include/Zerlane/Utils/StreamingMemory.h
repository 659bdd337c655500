#pragma once

#include "Zerlane/Export.h"

namespace Zerlane::Utils {

// Memory policy for programs that stream samples of megabytes at camera rates (recordings above all,
// whose demuxer allocates a fresh block per map). By default the C library hands such blocks back to
// the kernel when they are freed and takes new, zeroed pages for the next sample: at VGA with every map
// that is most of playback's time. Keeping them costs at most a few samples' worth of memory.
// Process-wide, so the library never applies it by itself: a program opts in, first thing in main().
class ZERLANE_API StreamingMemory {
public:
    static constexpr int KeptBlockBytes = 32 * 1024 * 1024;  // blocks up to this size come from the heap
    static constexpr int KeptFreeBytes = 64 * 1024 * 1024;   // free heap kept before it is returned

    // Returns false when the C library refused the settings (the program runs as before).
    static bool keepSampleBlocks();
};

} // namespace Zerlane::Utils
