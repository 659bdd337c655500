#pragma once

#include <cstdint>

class DepthPalette;

// Colours maps through a palette, one colour word per pixel. Entries 32769..32772 of a palette are
// its special-value colours (low confidence, saturated, aliased, other); `range` is the node's range
// in metres. The caller marks the image as changed.
class DepthColorizer {
public:
    // Phase and confidence: the value is the index (codes 0x8001..0x8004 land on the special entries).
    static void colorize16(const uint16_t* src, uint32_t* dst, int count, const DepthPalette& palette);
    // Depth in millimetres: codes 32001..32003 and 32004 and above take the special entries; any other
    // value v is scaled so that the range lands mid-table: table[((v x f) >> 8) & 0xFFFF] with
    // f = integer part of 8388.352 / range.
    static void colorizeDepth(const int16_t* src, uint32_t* dst, int count, const DepthPalette& palette, float range);
    // Depth in metres: v >= -0.5 takes table[16 bits of trunc(v x 32767 / range)]; lower values are the
    // codes -1..-4 and take the special entries by the nearest code.
    static void colorizeDepthFloat(const float* src, uint32_t* dst, int count, const DepthPalette& palette,
                                   float range);
    // Standard deviation in metres, stretched four times as much as depth.
    static void colorizeStandardDeviation(const float* src, uint32_t* dst, int count, const DepthPalette& palette,
                                          float range);

    // The low 16 bits of a float truncated to a 32-bit integer; values outside that range (and NaN)
    // give 0, the processor's "integer indefinite" 0x80000000 cut to 16 bits.
    static uint16_t truncatedIndex(float value);
    // f of colorizeDepth; 0 when 8388.352 / range is not a 32-bit integer (a zero or tiny range).
    static int32_t depthScaleFactor(float range);
};
