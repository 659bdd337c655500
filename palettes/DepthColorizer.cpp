#include "palettes/DepthColorizer.h"

#include "palettes/DepthPalette.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr uint32_t kLowConfidence = 32769;
constexpr uint32_t kOtherSpecial = 32772;

// Index of a floating-point depth value, by the colouring rule.
inline uint32_t depthFloatIndex(float v, float range)
{
    if (v >= -0.5f)
        return DepthColorizer::truncatedIndex(v * 32767.0f / range);
    return kOtherSpecial - uint32_t(v >= -1.5f) - uint32_t(v >= -2.5f) - uint32_t(v >= -3.5f);
}

#if defined(__SSE2__)
// Four values at a time: the float to integer conversion of SSE2 gives 0x80000000 out of range, which
// is what truncatedIndex() gives, so both paths produce the same indices.
inline __m128i depthFloatIndices(__m128 v, __m128 range)
{
    const __m128i scaled = _mm_and_si128(_mm_cvttps_epi32(_mm_div_ps(_mm_mul_ps(v, _mm_set1_ps(32767.0f)), range)),
                                         _mm_set1_epi32(0xFFFF));
    // Each comparison that holds is -1: 32772 - (count of thresholds reached).
    __m128i special = _mm_set1_epi32(int(kOtherSpecial));
    special = _mm_add_epi32(special, _mm_castps_si128(_mm_cmpge_ps(v, _mm_set1_ps(-1.5f))));
    special = _mm_add_epi32(special, _mm_castps_si128(_mm_cmpge_ps(v, _mm_set1_ps(-2.5f))));
    special = _mm_add_epi32(special, _mm_castps_si128(_mm_cmpge_ps(v, _mm_set1_ps(-3.5f))));
    const __m128i measured = _mm_castps_si128(_mm_cmpge_ps(v, _mm_set1_ps(-0.5f)));
    return _mm_or_si128(_mm_and_si128(measured, scaled), _mm_andnot_si128(measured, special));
}

// Looks up eight 16-bit indices held in a vector, without a round trip through memory.
inline void lookUpEight(__m128i indices, const uint32_t* table, uint32_t* dst)
{
    dst[0] = table[_mm_extract_epi16(indices, 0)];
    dst[1] = table[_mm_extract_epi16(indices, 1)];
    dst[2] = table[_mm_extract_epi16(indices, 2)];
    dst[3] = table[_mm_extract_epi16(indices, 3)];
    dst[4] = table[_mm_extract_epi16(indices, 4)];
    dst[5] = table[_mm_extract_epi16(indices, 5)];
    dst[6] = table[_mm_extract_epi16(indices, 6)];
    dst[7] = table[_mm_extract_epi16(indices, 7)];
}

inline __m128i deviationIndices(__m128 v, __m128 scale)
{
    return _mm_and_si128(_mm_cvttps_epi32(_mm_mul_ps(_mm_mul_ps(v, scale), _mm_set1_ps(4.0f))),
                         _mm_set1_epi32(0xFFFF));
}

// Eight millimetre values at a time in 16-bit lanes. Valid for factors of 0..65535 (ranges from
// 0.128 m up), where bits 8..23 of the 32-bit product are (low 16 bits >> 8) | (high 16 bits << 8).
inline __m128i depthIndices(__m128i v, __m128i factor)
{
    const __m128i low = _mm_mullo_epi16(v, factor);
    // Unsigned high half, corrected for negative values (two's complement product).
    const __m128i negative = _mm_srai_epi16(v, 15);
    const __m128i high = _mm_sub_epi16(_mm_mulhi_epu16(v, factor), _mm_and_si128(negative, factor));
    const __m128i scaled = _mm_or_si128(_mm_srli_epi16(low, 8), _mm_slli_epi16(high, 8));
    const __m128i special = _mm_add_epi16(_mm_min_epi16(v, _mm_set1_epi16(32004)),
                                          _mm_set1_epi16(int16_t(kLowConfidence - 32001)));
    const __m128i isSpecial = _mm_cmpgt_epi16(v, _mm_set1_epi16(32000));
    return _mm_or_si128(_mm_and_si128(isSpecial, special), _mm_andnot_si128(isSpecial, scaled));
}
#endif

inline uint32_t depthIndex(int32_t v, uint32_t factor)
{
    // Only bits 8..23 of the product are kept, so a wrapping unsigned product is exact.
    const uint32_t scaled = ((uint32_t(v) * factor) >> 8) & 0xFFFF;
    const uint32_t special = uint32_t((v < 32004 ? v : 32004) + (int32_t(kLowConfidence) - 32001));
    return v > 32000 ? special : scaled;
}

} // namespace

uint16_t DepthColorizer::truncatedIndex(float value)
{
    if (!(value > -2147483904.0f && value < 2147483648.0f))
        return 0;
    return uint16_t(int32_t(value));
}

int32_t DepthColorizer::depthScaleFactor(float range)
{
    const double factor = 8388.352 / double(range);
    if (!(factor > -2147483649.0 && factor < 2147483648.0))
        return 0;
    return int32_t(factor);
}

void DepthColorizer::colorize16(const uint16_t* src, uint32_t* dst, int count, const DepthPalette& palette)
{
    const uint32_t* table = palette.colors();
    for (int i = 0; i < count; ++i)
        dst[i] = table[src[i]];
}

void DepthColorizer::colorizeDepth(const int16_t* src, uint32_t* dst, int count, const DepthPalette& palette,
                                   float range)
{
    const uint32_t* table = palette.colors();
    const uint32_t factor = uint32_t(depthScaleFactor(range));
    int i = 0;
#if defined(__SSE2__)
    if (factor <= 0xFFFF) {
        const __m128i f = _mm_set1_epi16(int16_t(uint16_t(factor)));
        for (; i + 8 <= count; i += 8)
            lookUpEight(depthIndices(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)), f), table, dst + i);
    }
#endif
    for (; i < count; ++i)
        dst[i] = table[depthIndex(src[i], factor)];
}

void DepthColorizer::colorizeDepthFloat(const float* src, uint32_t* dst, int count, const DepthPalette& palette,
                                        float range)
{
    const uint32_t* table = palette.colors();
    int i = 0;
#if defined(__SSE2__)
    const __m128 r = _mm_set1_ps(range);
    alignas(16) uint32_t indices[8];
    for (; i + 8 <= count; i += 8) {
        _mm_store_si128(reinterpret_cast<__m128i*>(indices), depthFloatIndices(_mm_loadu_ps(src + i), r));
        _mm_store_si128(reinterpret_cast<__m128i*>(indices + 4), depthFloatIndices(_mm_loadu_ps(src + i + 4), r));
        for (int k = 0; k < 8; ++k)
            dst[i + k] = table[indices[k]];
    }
#endif
    for (; i < count; ++i)
        dst[i] = table[depthFloatIndex(src[i], range)];
}

void DepthColorizer::colorizeStandardDeviation(const float* src, uint32_t* dst, int count, const DepthPalette& palette,
                                               float range)
{
    const uint32_t* table = palette.colors();
    const float scale = 32767.0f / range;
    int i = 0;
#if defined(__SSE2__)
    const __m128 s = _mm_set1_ps(scale);
    alignas(16) uint32_t indices[8];
    for (; i + 8 <= count; i += 8) {
        _mm_store_si128(reinterpret_cast<__m128i*>(indices), deviationIndices(_mm_loadu_ps(src + i), s));
        _mm_store_si128(reinterpret_cast<__m128i*>(indices + 4), deviationIndices(_mm_loadu_ps(src + i + 4), s));
        for (int k = 0; k < 8; ++k)
            dst[i + k] = table[indices[k]];
    }
#endif
    for (; i < count; ++i)
        dst[i] = table[truncatedIndex(src[i] * scale * 4.0f)];
}
