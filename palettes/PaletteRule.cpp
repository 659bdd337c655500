#include "palettes/PaletteRule.h"

#include "palettes/DepthPalette.h"

namespace {

constexpr quint32 kOpaque = 0xFF000000u;

// Start + (k x difference) / span per byte of two 0xRRGGBB values, truncating toward zero.
quint32 interpolateBytes(quint32 startRrggbb, quint32 endRrggbb, int k, int span)
{
    quint32 result = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        const int a = int((startRrggbb >> shift) & 0xFF);
        const int b = int((endRrggbb >> shift) & 0xFF);
        const int value = a + (span == 0 ? 0 : (k * (b - a)) / span);
        result |= quint32(value & 0xFF) << shift;
    }
    return result;
}

// The three bytes read as hue (0..255 for 0..360 degrees), saturation and value.
quint32 hsvWordFromBytes(quint32 rrggbb)
{
    const float hue = float(((rrggbb >> 16) & 0xFF) * 360) / 255.0f;
    const float saturation = float((rrggbb >> 8) & 0xFF) / 255.0f;
    const float value = float(rrggbb & 0xFF) / 255.0f;
    return DepthPalette::hsvToRgb(hue, saturation, value);
}

} // namespace

quint32 PaletteRule::entry(quint32 index) const
{
    if (kind == Plain)
        return DepthPalette::fromRrggbb(startRrggbb);
    const quint32 bytes = interpolateBytes(startRrggbb, endRrggbb, int(index - first), int(last - first));
    if (kind == HsvGradient)
        return hsvWordFromBytes(bytes) | kOpaque;
    return DepthPalette::fromRrggbb(bytes) | kOpaque;
}
