#pragma once

#include <cstdint>

// Colour conversion of the colour buffer: YUY2 to B, G, R bytes (integer ITU-R BT.601 with tables),
// and a plain copy for uncompressed frames. Pixels are taken as one run of width x height, no padding.
class YuvConverter {
public:
    // Builds the conversion tables; called once at start-up (later calls do nothing).
    static void initTables();

    // Each 4-byte group (Y0, U, Y1, V) becomes two pixels B, G, R. Uses vector instructions when the
    // processor has them; the bytes are always those of yuy2ToBgrTable().
    static void yuy2ToBgr(const uint8_t* src, uint8_t* dst, int width, int height);
    // The table method itself, one group at a time.
    static void yuy2ToBgrTable(const uint8_t* src, uint8_t* dst, int width, int height);

    // A chosen implementation (for tests and benchmarks); false, converting nothing, when the
    // processor lacks it.
    enum Implementation { Table, Ssse3, Avx2 };
    static bool yuy2ToBgrUsing(Implementation implementation, const uint8_t* src, uint8_t* dst, int width,
                               int height);
    // Copies width x height x 3 bytes.
    static void copyBgr(const uint8_t* src, uint8_t* dst, int width, int height);
};
