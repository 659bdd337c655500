#include "app/shared/YuvConverter.h"

#include <cstring>
#include <mutex>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define ZR_YUV_X86 1
#endif

namespace {

// Luma factor 298, red from V 409, green from U -100 and from V -208, blue from U 516; the sums are
// shifted right by 8 with rounding, then clamped to 0..255 through a table indexed with an offset of
// 280 (indices below 281 give 0, 281..534 give the index minus 280, above give 255).
constexpr int kLuma = 298;
constexpr int kRedFromV = 409;
constexpr int kGreenFromU = -100;
constexpr int kGreenFromV = -208;
constexpr int kBlueFromU = 516;
constexpr int kRounding = 128;
constexpr int kClampOffset = 280;
constexpr int kClampSize = 1024;

struct Tables {
    int32_t luma[256];
    int32_t redV[256];
    int32_t greenU[256];
    int32_t greenV[256];
    int32_t blueU[256];
    uint8_t clamp[kClampSize];
};

Tables g_tables;
std::once_flag g_tablesOnce;

void buildTables()
{
    for (int i = 0; i < 256; ++i) {
        g_tables.luma[i] = kLuma * (i - 16) + kRounding;
        g_tables.redV[i] = kRedFromV * (i - 128);
        g_tables.greenU[i] = kGreenFromU * (i - 128);
        g_tables.greenV[i] = kGreenFromV * (i - 128);
        g_tables.blueU[i] = kBlueFromU * (i - 128);
    }
    for (int i = 0; i < kClampSize; ++i)
        g_tables.clamp[i] = uint8_t(i <= kClampOffset ? 0 : (i < kClampOffset + 255 ? i - kClampOffset : 255));
}

inline void convertGroupTable(const Tables& t, const uint8_t* src, uint8_t* dst)
{
    const int red = t.redV[src[3]];
    const int green = t.greenU[src[1]] + t.greenV[src[3]];
    const int blue = t.blueU[src[1]];
    for (int i = 0; i < 2; ++i) {
        const int luma = t.luma[src[2 * i]];
        dst[3 * i + 0] = t.clamp[((luma + blue) >> 8) + kClampOffset];
        dst[3 * i + 1] = t.clamp[((luma + green) >> 8) + kClampOffset];
        dst[3 * i + 2] = t.clamp[((luma + red) >> 8) + kClampOffset];
    }
}

void convertTable(const uint8_t* src, uint8_t* dst, long groups)
{
    const Tables& t = g_tables;
    for (long g = 0; g < groups; ++g)
        convertGroupTable(t, src + 4 * g, dst + 6 * g);
}

#if ZR_YUV_X86
// The same integer arithmetic on vectors: pairs of 16-bit terms are multiplied and summed into 32 bits
// (pmaddwd), shifted, and saturated to bytes, which is exactly the clamp table. Each 128-bit lane
// turns four groups (16 bytes of YUY2) into eight pixels (24 bytes of B, G, R).
struct Constants128 {
    __m128i lumaIndex, uIndex, vIndex, lumaBias, chromaBias, one, red, blue, green, greenV, rounding;
    __m128i firstFromBg, firstFromR, secondFromBg, secondFromR;
};

__attribute__((target("ssse3"))) Constants128 constants128()
{
    Constants128 k;
    k.lumaIndex = _mm_setr_epi8(0, -1, 2, -1, 4, -1, 6, -1, 8, -1, 10, -1, 12, -1, 14, -1);
    k.uIndex = _mm_setr_epi8(1, -1, 1, -1, 5, -1, 5, -1, 9, -1, 9, -1, 13, -1, 13, -1);
    k.vIndex = _mm_setr_epi8(3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1);
    k.lumaBias = _mm_set1_epi16(16);
    k.chromaBias = _mm_set1_epi16(128);
    k.one = _mm_set1_epi16(1);
    k.red = _mm_setr_epi16(kLuma, kRedFromV, kLuma, kRedFromV, kLuma, kRedFromV, kLuma, kRedFromV);
    k.blue = _mm_setr_epi16(kLuma, kBlueFromU, kLuma, kBlueFromU, kLuma, kBlueFromU, kLuma, kBlueFromU);
    k.green = _mm_setr_epi16(kLuma, kGreenFromU, kLuma, kGreenFromU, kLuma, kGreenFromU, kLuma, kGreenFromU);
    k.greenV = _mm_setr_epi16(kGreenFromV, kRounding, kGreenFromV, kRounding, kGreenFromV, kRounding, kGreenFromV,
                              kRounding);
    k.rounding = _mm_set1_epi32(kRounding);
    // Bytes B0..B7 G0..G7 and R0..R7 interleaved into B, G, R triples.
    k.firstFromBg = _mm_setr_epi8(0, 8, -1, 1, 9, -1, 2, 10, -1, 3, 11, -1, 4, 12, -1, 5);
    k.firstFromR = _mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1);
    k.secondFromBg = _mm_setr_epi8(13, -1, 6, 14, -1, 7, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    k.secondFromR = _mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, -1, -1, -1, -1, -1, -1);
    return k;
}

// One step of the conversion, written once for both vector widths: `in` holds whole groups, `first`
// and `second` receive the first 16 and the next 8 bytes of B, G, R of every 128-bit lane.
#define ZR_YUV_BODY(SHUFFLE, SUB16, UNPACKLO16, UNPACKHI16, MADD, ADD32, SRAI32, PACKS32, PACKUS16, OR)            \
    const auto c = SUB16(SHUFFLE(in, k.lumaIndex), k.lumaBias);                                                     \
    const auto d = SUB16(SHUFFLE(in, k.uIndex), k.chromaBias);                                                      \
    const auto e = SUB16(SHUFFLE(in, k.vIndex), k.chromaBias);                                                      \
    const auto ceLow = UNPACKLO16(c, e), ceHigh = UNPACKHI16(c, e);                                                 \
    const auto cdLow = UNPACKLO16(c, d), cdHigh = UNPACKHI16(c, d);                                                 \
    const auto e1Low = UNPACKLO16(e, k.one), e1High = UNPACKHI16(e, k.one);                                         \
    const auto redLow = SRAI32(ADD32(MADD(ceLow, k.red), k.rounding), 8);                                           \
    const auto redHigh = SRAI32(ADD32(MADD(ceHigh, k.red), k.rounding), 8);                                         \
    const auto blueLow = SRAI32(ADD32(MADD(cdLow, k.blue), k.rounding), 8);                                         \
    const auto blueHigh = SRAI32(ADD32(MADD(cdHigh, k.blue), k.rounding), 8);                                       \
    const auto greenLow = SRAI32(ADD32(MADD(cdLow, k.green), MADD(e1Low, k.greenV)), 8);                            \
    const auto greenHigh = SRAI32(ADD32(MADD(cdHigh, k.green), MADD(e1High, k.greenV)), 8);                         \
    const auto red16 = PACKS32(redLow, redHigh);                                                                    \
    const auto blueGreen = PACKUS16(PACKS32(blueLow, blueHigh), PACKS32(greenLow, greenHigh));                      \
    const auto red = PACKUS16(red16, red16);                                                                        \
    const auto first = OR(SHUFFLE(blueGreen, k.firstFromBg), SHUFFLE(red, k.firstFromR));                           \
    const auto second = OR(SHUFFLE(blueGreen, k.secondFromBg), SHUFFLE(red, k.secondFromR));

__attribute__((target("ssse3"))) void convertSsse3(const uint8_t* src, uint8_t* dst, long groups)
{
    const Constants128 k = constants128();
    long g = 0;
    for (; g + 4 <= groups; g += 4) {
        const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 4 * g));
        ZR_YUV_BODY(_mm_shuffle_epi8, _mm_sub_epi16, _mm_unpacklo_epi16, _mm_unpackhi_epi16, _mm_madd_epi16,
                    _mm_add_epi32, _mm_srai_epi32, _mm_packs_epi32, _mm_packus_epi16, _mm_or_si128)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 6 * g), first);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 6 * g + 16), second);
    }
    convertTable(src + 4 * g, dst + 6 * g, groups - g);
}

struct Constants256 {
    __m256i lumaIndex, uIndex, vIndex, lumaBias, chromaBias, one, red, blue, green, greenV, rounding;
    __m256i firstFromBg, firstFromR, secondFromBg, secondFromR;
};

__attribute__((target("avx2"))) void fillConstants256(Constants256& k)
{
    const Constants128 n = constants128();
    k.lumaIndex = _mm256_broadcastsi128_si256(n.lumaIndex);
    k.uIndex = _mm256_broadcastsi128_si256(n.uIndex);
    k.vIndex = _mm256_broadcastsi128_si256(n.vIndex);
    k.lumaBias = _mm256_broadcastsi128_si256(n.lumaBias);
    k.chromaBias = _mm256_broadcastsi128_si256(n.chromaBias);
    k.one = _mm256_broadcastsi128_si256(n.one);
    k.red = _mm256_broadcastsi128_si256(n.red);
    k.blue = _mm256_broadcastsi128_si256(n.blue);
    k.green = _mm256_broadcastsi128_si256(n.green);
    k.greenV = _mm256_broadcastsi128_si256(n.greenV);
    k.rounding = _mm256_broadcastsi128_si256(n.rounding);
    k.firstFromBg = _mm256_broadcastsi128_si256(n.firstFromBg);
    k.firstFromR = _mm256_broadcastsi128_si256(n.firstFromR);
    k.secondFromBg = _mm256_broadcastsi128_si256(n.secondFromBg);
    k.secondFromR = _mm256_broadcastsi128_si256(n.secondFromR);
}

// Two lanes, sixteen pixels, per step.
__attribute__((target("avx2"))) void convertAvx2(const uint8_t* src, uint8_t* dst, long groups)
{
    Constants256 k;
    fillConstants256(k);
    long g = 0;
    for (; g + 8 <= groups; g += 8) {
        const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * g));
        ZR_YUV_BODY(_mm256_shuffle_epi8, _mm256_sub_epi16, _mm256_unpacklo_epi16, _mm256_unpackhi_epi16,
                    _mm256_madd_epi16, _mm256_add_epi32, _mm256_srai_epi32, _mm256_packs_epi32, _mm256_packus_epi16,
                    _mm256_or_si256)
        uint8_t* out = dst + 6 * g;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(first));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_castsi256_si128(second));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 24), _mm256_extracti128_si256(first, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 40), _mm256_extracti128_si256(second, 1));
    }
    convertSsse3(src + 4 * g, dst + 6 * g, groups - g);
}
#undef ZR_YUV_BODY

bool cpuHas(YuvConverter::Implementation implementation)
{
    static const bool ssse3 = __builtin_cpu_supports("ssse3");
    static const bool avx2 = __builtin_cpu_supports("avx2");
    switch (implementation) {
    case YuvConverter::Table:
        return true;
    case YuvConverter::Ssse3:
        return ssse3;
    case YuvConverter::Avx2:
        return avx2 && ssse3;
    }
    return false;
}
#else
bool cpuHas(YuvConverter::Implementation implementation)
{
    return implementation == YuvConverter::Table;
}
#endif

} // namespace

void YuvConverter::initTables()
{
    std::call_once(g_tablesOnce, buildTables);
}

void YuvConverter::yuy2ToBgrTable(const uint8_t* src, uint8_t* dst, int width, int height)
{
    initTables();
    if (width <= 0 || height <= 0)
        return;
    convertTable(src, dst, long(width) * height / 2);
}

void YuvConverter::yuy2ToBgr(const uint8_t* src, uint8_t* dst, int width, int height)
{
    static const Implementation best = cpuHas(Avx2) ? Avx2 : (cpuHas(Ssse3) ? Ssse3 : Table);
    yuy2ToBgrUsing(best, src, dst, width, height);
}

bool YuvConverter::yuy2ToBgrUsing(Implementation implementation, const uint8_t* src, uint8_t* dst, int width,
                                  int height)
{
    if (!cpuHas(implementation))
        return false;
    initTables();
    if (width <= 0 || height <= 0)
        return true;
    const long groups = long(width) * height / 2;
    switch (implementation) {
#if ZR_YUV_X86
    case Avx2:
        convertAvx2(src, dst, groups);
        break;
    case Ssse3:
        convertSsse3(src, dst, groups);
        break;
#endif
    default:
        convertTable(src, dst, groups);
    }
    return true;
}

void YuvConverter::copyBgr(const uint8_t* src, uint8_t* dst, int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    std::memcpy(dst, src, size_t(width) * size_t(height) * 3);
}
