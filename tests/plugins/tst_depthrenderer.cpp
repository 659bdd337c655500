// The simulated camera's depth renderer on its own, at chosen capture times: determinism for a seed, the
// statistics of its range noise, moving objects that leave nothing behind, and the room of the long-range
// mode exactly as it always was.
#include "Checksum.h"

#include "sdk/plugins/DepthRenderer.h"
#include "sdk/plugins/PinholeCamera.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace Zerlane;
using Zerlane::sim::DepthRenderer;

namespace {

constexpr int Width = 640, Height = 480, Pixels = Width * Height;

DepthRenderer::Settings vgaSettings()
{
    DepthRenderer::Settings s;
    s.configuration.frameFormat = FRAME_FORMAT_VGA;
    s.configuration.frameRate = 30;
    s.configuration.mode = CAMERA_MODE_LONG_RANGE;
    s.confidenceMap = s.depthMap = s.depthMapFloatingPoint = true;
    return s;
}

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
        const DepthRenderer::Settings settings = vgaSettings();
        DepthRenderer a(5), b(5), other(6);
        for (uint64_t time : {0ull, 2'500'000ull, 51'735'000ull}) {
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
        // Any history of capture times gives the scene of the last one: the same codes (which carry the
        // moving edges' flying pixels) as a renderer that only ever saw that time.
        const DepthRenderer::Settings settings = vgaSettings();
        DepthRenderer travelled(3);
        for (uint64_t time : {0ull, 1'420'000ull, 4'500'000ull, 51'735'000ull, 8'000'000ull, 700'000ull}) {
            const auto after = travelled.render(settings, time);
            DepthRenderer fresh(3);
            const auto reference = fresh.render(settings, time);
            QCOMPARE(codesOf(after), codesOf(reference));
            int kamikaze = 0;
            for (int16_t d : depthOf(after))
                kamikaze += d == DepthRenderer::DepthCodeBase + DepthRenderer::Kamikaze;
            QVERIFY2(kamikaze > 20, qPrintable(QString("%1 flying pixels at %2 us").arg(kamikaze).arg(time)));
        }
    }
};

QTEST_GUILESS_MAIN(TestDepthRenderer)
#include "tst_depthrenderer.moc"
