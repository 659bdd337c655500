// The simulated camera's depth renderer on its own, at chosen capture times: determinism for a seed, the
// statistics of its range noise, moving objects that leave nothing behind, the room of the long-range mode
// exactly as it always was, and the desk of the close-range mode within its metre.
#include "Checksum.h"

#include "sdk/plugins/DepthRenderer.h"
#include "sdk/plugins/PinholeCamera.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace Zerlane;
using Zerlane::sim::DepthRenderer;

namespace {

constexpr int Width = 640, Height = 480, Pixels = Width * Height;

DepthRenderer::Settings vgaSettings(CameraMode mode = CAMERA_MODE_LONG_RANGE, bool saturation = false)
{
    DepthRenderer::Settings s;
    s.configuration.frameFormat = FRAME_FORMAT_VGA;
    s.configuration.frameRate = 30;
    s.configuration.mode = mode;
    s.configuration.saturation = saturation;
    s.confidenceMap = s.depthMap = s.depthMapFloatingPoint = true;
    return s;
}

// The close-range hand hovers, and reaches nearest to the camera at 4 s of every 8.
constexpr uint64_t HandHovers = 1'000'000, HandNearest = 4'000'000, HandCycle = 8'000'000;

std::vector<int16_t> depthOf(const DepthNode::NewSampleReceivedData& s)
{
    return {s.depthMap.data(), s.depthMap.data() + s.depthMap.size()};
}

DepthRenderer::Settings allMaps(FrameFormat format, CameraMode mode)
{
    DepthRenderer::Settings s;
    s.configuration.frameFormat = format;
    s.configuration.frameRate = 30;
    s.configuration.mode = mode;
    s.phaseMap = s.confidenceMap = s.depthMap = s.depthMapFloatingPoint = true;
    s.vertices = s.verticesFloatingPoint = s.uvMap = true;
    return s;
}

uint64_t checksumOfAllMaps(const DepthNode::NewSampleReceivedData& s)
{
    uint64_t hash = checksum(s.phaseMap.data(), std::size_t(s.phaseMap.size()) * sizeof(int16_t));
    hash = checksum(s.confidenceMap.data(), std::size_t(s.confidenceMap.size()) * sizeof(int16_t), hash);
    hash = checksum(s.depthMap.data(), std::size_t(s.depthMap.size()) * sizeof(int16_t), hash);
    hash = checksum(s.depthMapFloatingPoint.data(), std::size_t(s.depthMapFloatingPoint.size()) * sizeof(float), hash);
    hash = checksum(s.vertices.data(), std::size_t(s.vertices.size()) * sizeof(Vertex), hash);
    hash = checksum(s.verticesFloatingPoint.data(), std::size_t(s.verticesFloatingPoint.size()) * sizeof(FPVertex), hash);
    return checksum(s.uvMap.data(), std::size_t(s.uvMap.size()) * sizeof(UV), hash);
}

bool isCode(int16_t depth)
{
    return depth > DepthRenderer::DepthCodeBase;
}

int countCode(const DepthNode::NewSampleReceivedData& s, DepthRenderer::Code code)
{
    return int(std::count(s.depthMap.data(), s.depthMap.data() + Pixels, int16_t(DepthRenderer::DepthCodeBase + code)));
}

bool inCentralThird(int x, int y)
{
    return x >= Width / 3 && x < 2 * Width / 3 && y >= Height / 3 && y < 2 * Height / 3;
}

// The lower left corner of the close-range picture: the desk top, where neither the hand nor its arm ever go.
bool onBareDesk(int x, int y)
{
    return x < 120 && y >= 420;
}

// Where the maps say something other than a measurement (the codes), 0 elsewhere.
std::vector<int16_t> codesOf(const DepthNode::NewSampleReceivedData& s)
{
    std::vector<int16_t> codes = depthOf(s);
    for (int16_t& d : codes)
        d = isCode(d) ? d : 0;
    return codes;
}

} // namespace

class TestDepthRenderer : public QObject {
    Q_OBJECT

private slots:
    void sameSeedSameSample()
    {
        for (CameraMode mode : {CAMERA_MODE_LONG_RANGE, CAMERA_MODE_CLOSE_RANGE}) {
            const DepthRenderer::Settings settings = vgaSettings(mode);
            DepthRenderer a(5), b(5), other(6);
            for (uint64_t time : {uint64_t(0), uint64_t(2'500'000), HandNearest, uint64_t(51'735'000)}) {
                const auto sa = a.render(settings, time);
                const auto sb = b.render(settings, time);
                const auto so = other.render(settings, time);
                QCOMPARE(depthOf(sa), depthOf(sb));
                QVERIFY(std::equal(sa.depthMapFloatingPoint.data(), sa.depthMapFloatingPoint.data() + Pixels,
                                   sb.depthMapFloatingPoint.data()));
                // Another seed: the same scene and codes, other noise.
                QCOMPARE(codesOf(so), codesOf(sa));
                int differing = 0;
                for (int i = 0; i < Pixels; ++i)
                    differing += sa.depthMapFloatingPoint[i] != so.depthMapFloatingPoint[i];
                QVERIFY2(differing > Pixels / 2, qPrintable(QString::number(differing)));
            }
        }
    }

    void longRangeSamplesAreAsBefore()
    {
        // Every map of the room at a few capture times, one renderer per format (so its caches and its noise
        // run through the sequence), as the long-range mode rendered them before the close-range scene came:
        // benchmarks and tests measure this room, so not a single bit of it may change.
        struct Expected {
            FrameFormat format;
            uint64_t time;
            uint64_t checksum;
        };
        const Expected expected[] = {
            {FRAME_FORMAT_VGA, 0, 0x06252cc12dba3e79ull},
            {FRAME_FORMAT_VGA, 2'500'000, 0x56eceb55737ffa06ull},
            {FRAME_FORMAT_VGA, 51'735'000, 0x4fa476a3a25023edull},
            {FRAME_FORMAT_VGA, 8'000'000, 0x925e6bf79a306c90ull},
            {FRAME_FORMAT_QVGA, 0, 0x2c68db7993bbeae6ull},
            {FRAME_FORMAT_QVGA, 2'500'000, 0xdcfed25566205a3aull},
            {FRAME_FORMAT_QVGA, 51'735'000, 0xef560cfc16c6e6f4ull},
            {FRAME_FORMAT_QVGA, 8'000'000, 0x1e6e155cc5c33e6aull},
        };
        for (FrameFormat format : {FRAME_FORMAT_VGA, FRAME_FORMAT_QVGA}) {
            DepthRenderer renderer(5);
            for (const Expected& e : expected) {
                if (e.format != format)
                    continue;
                const uint64_t actual = checksumOfAllMaps(renderer.render(allMaps(format, CAMERA_MODE_LONG_RANGE), e.time));
                QVERIFY2(actual == e.checksum, qPrintable(QString("%1 at %2 us: checksum %3")
                                                              .arg(FrameFormat_toString(format).c_str())
                                                              .arg(e.time)
                                                              .arg(actual, 16, 16, QChar('0'))));
            }
        }
    }

    void closeRangeSeesTheDeskWithinAMetre()
    {
        // A whole cycle of the hand with the default settings: every measured pixel lies between about 0.15 and
        // 1 m (desk, objects, partition, hand and arm), most of the picture is measured at every moment, and
        // its centre most of the time (the hand saturates it briefly when it comes nearest).
        const DepthRenderer::Settings settings = vgaSettings(CAMERA_MODE_CLOSE_RANGE);
        DepthRenderer renderer(7);
        double centreShares = 0.0;
        int samples = 0;
        for (uint64_t time = 0; time < HandCycle; time += 250'000, ++samples) {
            const auto s = renderer.render(settings, time);
            int valid = 0, centre = 0, centreValid = 0;
            for (int y = 0; y < Height; ++y) {
                for (int x = 0; x < Width; ++x) {
                    const float z = s.depthMapFloatingPoint[y * Width + x];
                    const bool measured = z > 0.f;
                    if (measured && (z < 0.14f || z > 1.f))
                        QFAIL(qPrintable(QString("%1 m at (%2,%3) at %4 us").arg(z).arg(x).arg(y).arg(time)));
                    valid += measured;
                    if (inCentralThird(x, y)) {
                        ++centre;
                        centreValid += measured;
                    }
                }
            }
            QVERIFY2(valid > Pixels * 55 / 100, qPrintable(QString("%1 valid at %2 us").arg(valid).arg(time)));
            centreShares += double(centreValid) / centre;
        }
        QVERIFY2(centreShares / samples > 0.8, qPrintable(QString::number(centreShares / samples)));
    }

    void closeRangeKeepsTheSensorsTraits()
    {
        // While the hand hovers: the room's ceiling over the partition is beyond the mode's 3 m (aliased, in
        // the top rows only), the black phone is too dark to measure, the reflective badge saturates unless
        // the saturation mode is on, and the hand's edges fly.
        DepthRenderer renderer(9);
        const auto hovering = renderer.render(vgaSettings(CAMERA_MODE_CLOSE_RANGE), HandHovers);
        int aliased = 0, aliasedLow = 0, dark = 0, darkHigh = 0;
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                const int16_t d = hovering.depthMap[y * Width + x];
                const bool isAliased = d == DepthRenderer::DepthCodeBase + DepthRenderer::Aliased;
                const bool isDark = d == DepthRenderer::DepthCodeBase + DepthRenderer::LowConfidence;
                aliased += isAliased;
                aliasedLow += isAliased && y >= Height / 10;
                dark += isDark;
                darkHigh += isDark && y < Height / 2;
            }
        }
        QVERIFY2(aliased > Pixels / 50 && aliasedLow == 0, qPrintable(QString("%1 %2").arg(aliased).arg(aliasedLow)));
        QVERIFY2(dark > Pixels / 200 && darkHigh == 0, qPrintable(QString("%1 %2").arg(dark).arg(darkHigh)));
        QVERIFY2(countCode(hovering, DepthRenderer::Saturated) > Pixels / 200, "the badge does not saturate");
        QVERIFY(countCode(hovering, DepthRenderer::Kamikaze) > 20);
        const auto shortExposure = renderer.render(vgaSettings(CAMERA_MODE_CLOSE_RANGE, true), HandHovers);
        QCOMPARE(countCode(shortExposure, DepthRenderer::Saturated), 0);

        // The hand at its nearest saturates even with the saturation mode on, without it far more.
        const int nearSaturated = countCode(renderer.render(vgaSettings(CAMERA_MODE_CLOSE_RANGE, true), HandNearest),
                                            DepthRenderer::Saturated);
        const int nearSaturatedLong = countCode(renderer.render(vgaSettings(CAMERA_MODE_CLOSE_RANGE), HandNearest),
                                                DepthRenderer::Saturated);
        QVERIFY2(nearSaturated > Pixels / 100 && nearSaturatedLong > 3 * nearSaturated,
                 qPrintable(QString("%1 %2").arg(nearSaturated).arg(nearSaturatedLong)));
    }

    void theHandMovesAndComesNear()
    {
        // With the saturation mode on (so the near hand is measured), every quarter second: many pixels move
        // by centimetres while the bare desk stays within the noise; the centre's nearest point is far while
        // the hand hovers and under 0.2 m at its nearest.
        const DepthRenderer::Settings settings = vgaSettings(CAMERA_MODE_CLOSE_RANGE, true);
        DepthRenderer renderer(13);
        std::vector<float> before;
        float nearestEver = 1e9f;
        for (uint64_t time = 0; time < HandCycle; time += 250'000) {
            const auto s = renderer.render(settings, time);
            std::vector<float> depth(s.depthMapFloatingPoint.data(), s.depthMapFloatingPoint.data() + Pixels);
            float nearest = 1e9f;
            for (int y = Height / 3; y < 2 * Height / 3; ++y)
                for (int x = Width / 3; x < 2 * Width / 3; ++x)
                    if (depth[y * Width + x] > 0.f)
                        nearest = std::min(nearest, depth[y * Width + x]);
            nearestEver = std::min(nearestEver, nearest);
            if (time == HandHovers)
                QVERIFY2(nearest > 0.35f, qPrintable(QString::number(nearest)));
            if (!before.empty()) {
                int moved = 0;
                float deskChange = 0.f;
                for (int y = 0; y < Height; ++y) {
                    for (int x = 0; x < Width; ++x) {
                        const int i = y * Width + x;
                        if (depth[i] <= 0.f || before[i] <= 0.f)
                            continue;
                        moved += std::fabs(depth[i] - before[i]) > 0.03f;
                        if (onBareDesk(x, y))
                            deskChange = std::max(deskChange, std::fabs(depth[i] - before[i]));
                    }
                }
                QVERIFY2(moved > Pixels / 200, qPrintable(QString("%1 moved at %2 us").arg(moved).arg(time)));
                QVERIFY2(deskChange < 0.005f, qPrintable(QString("%1 m at %2 us").arg(deskChange).arg(time)));
            }
            before = std::move(depth);
        }
        QVERIFY2(nearestEver < 0.2f, qPrintable(QString::number(nearestEver)));
    }

    void noiseHasTheModelledSpreadAndNoPattern()
    {
        // Many samples of one moment: each valid pixel's spread around its mean, in units of the modelled
        // sigma = NoiseScale * distance^2 / sqrt(signal), must be a unit normal, and unrelated to the
        // neighbours' (a row or a frame repeating another would show up as correlation or as no spread).
        const DepthRenderer::Settings settings = vgaSettings();
        const sim::PinholeCamera camera = sim::PinholeCamera::depth(Width, Height);
        DepthRenderer renderer(11);
        constexpr int Frames = 24;
        std::vector<std::vector<float>> distances(Frames);
        std::vector<int16_t> confidence;
        for (int f = 0; f < Frames; ++f) {
            const auto s = renderer.render(settings, 1'000'000);
            distances[f].resize(Pixels);
            for (int y = 0; y < Height; ++y)
                for (int x = 0; x < Width; ++x) {
                    const float z = s.depthMapFloatingPoint[y * Width + x];
                    distances[f][y * Width + x] = z > 0.f ? z * camera.backProject(x, y, 1.f).length() : -1.f;
                }
            if (f == 0)
                confidence.assign(s.confidenceMap.data(), s.confidenceMap.data() + Pixels);
        }

        // Normalised deviations of pixels whose noise is neither clipped nor lost in the rounding.
        std::vector<float> deviation(std::size_t(Frames) * Pixels, NAN);
        double sumSquares = 0.0;
        long count = 0;
        float largest = 0.f;
        for (int i = 0; i < Pixels; ++i) {
            double mean = 0.0;
            bool valid = confidence[i] > 0;
            for (int f = 0; f < Frames && valid; ++f) {
                valid = distances[f][i] > 0.f;
                mean += distances[f][i];
            }
            if (!valid)
                continue;
            mean /= Frames;
            const float sigma = DepthRenderer::NoiseScale * float(mean * mean) / std::sqrt(float(confidence[i]));
            if (sigma < 0.002f || sigma > 0.1f || mean + 5 * sigma > 7.5)
                continue;
            for (int f = 0; f < Frames; ++f) {
                const float d = float((distances[f][i] - mean) / sigma);
                deviation[std::size_t(f) * Pixels + std::size_t(i)] = d;
                sumSquares += double(d) * d;
                largest = std::max(largest, std::fabs(d));
                ++count;
            }
        }
        QVERIFY2(count > Pixels, qPrintable(QString::number(count)));
        const double variance = sumSquares / count * Frames / (Frames - 1);
        QVERIFY2(std::fabs(variance - 1.0) < 0.05, qPrintable(QString::number(variance)));
        QVERIFY(largest < 4.5f); // the tails are cut

        auto correlation = [&](int dx, int dy, int df) {
            double sum = 0.0;
            long n = 0;
            for (int f = 0; f + df < Frames; ++f)
                for (int y = 0; y + dy < Height; ++y)
                    for (int x = 0; x + dx < Width; ++x) {
                        const float a = deviation[std::size_t(f) * Pixels + std::size_t(y * Width + x)];
                        const float b = deviation[std::size_t(f + df) * Pixels + std::size_t((y + dy) * Width + x + dx)];
                        if (std::isnan(a) || std::isnan(b))
                            continue;
                        sum += double(a) * b;
                        ++n;
                    }
            return n ? sum / n : 1.0;
        };
        for (const auto& [dx, dy, df] : {std::tuple{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 2, 0}, {5, 1, 0}}) {
            const double c = correlation(dx, dy, df);
            QVERIFY2(std::fabs(c) < 0.05, qPrintable(QString("correlation %1 at (%2,%3,%4)").arg(c).arg(dx).arg(dy).arg(df)));
        }
    }

    void movingObjectsLeaveNothingBehind()
    {
        // Any history of capture times and camera modes gives the scene of the last one: the same codes (which
        // carry the moving edges' flying pixels) as a renderer that only ever saw that time in that mode, and
        // in the close range, where well-lit pixels have a millimetre of noise, the same depths there too.
        const std::pair<CameraMode, uint64_t> history[] = {
            {CAMERA_MODE_LONG_RANGE, 0},          {CAMERA_MODE_LONG_RANGE, 1'420'000},
            {CAMERA_MODE_CLOSE_RANGE, 1'420'000}, {CAMERA_MODE_CLOSE_RANGE, HandNearest},
            {CAMERA_MODE_LONG_RANGE, 4'500'000},  {CAMERA_MODE_LONG_RANGE, 51'735'000},
            {CAMERA_MODE_CLOSE_RANGE, 8'000'000}, {CAMERA_MODE_CLOSE_RANGE, 3'600'000},
            {CAMERA_MODE_LONG_RANGE, 8'000'000},  {CAMERA_MODE_LONG_RANGE, 700'000},
        };
        DepthRenderer travelled(3);
        for (const auto& [mode, time] : history) {
            const QString moment = QString("mode %1 at %2 us").arg(int(mode)).arg(time);
            const auto after = travelled.render(vgaSettings(mode), time);
            DepthRenderer fresh(3);
            const auto reference = fresh.render(vgaSettings(mode), time);
            QVERIFY2(codesOf(after) == codesOf(reference), qPrintable(moment));
            QVERIFY2(countCode(after, DepthRenderer::Kamikaze) > 20, qPrintable("no flying pixels, " + moment));
            if (mode != CAMERA_MODE_CLOSE_RANGE)
                continue;
            int compared = 0;
            for (int i = 0; i < Pixels; ++i) {
                if (after.confidenceMap[i] < 1000 || reference.confidenceMap[i] < 1000)
                    continue;
                ++compared;
                if (std::fabs(after.depthMapFloatingPoint[i] - reference.depthMapFloatingPoint[i]) > 0.01f)
                    QFAIL(qPrintable(QString("pixel %1 differs, ").arg(i) + moment));
            }
            QVERIFY2(compared > Pixels / 2, qPrintable(moment));
        }
    }
};

QTEST_GUILESS_MAIN(TestDepthRenderer)
#include "tst_depthrenderer.moc"
