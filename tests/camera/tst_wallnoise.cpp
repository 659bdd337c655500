// The standard-deviation statistic over what the simulated camera really sends: on a still, flat wall its
// median reads the noise the camera puts there, sigma / sqrt(N - 1) for the root of the summed squares
// over N - 1. The camera's renderer is linked in so that the test holds one moment still for N frames.
#include "camera/DeviationSummary.h"
#include "camera/DepthNodeData.h"
#include "camera/RegionOfInterest.h"
#include "camera/StandardDeviationHistory.h"
#include "sdk/plugins/DepthRenderer.h"
#include "sdk/plugins/PinholeCamera.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <vector>

using Zerlane::sim::DepthRenderer;

class TestWallNoise : public QObject {
    Q_OBJECT

private slots:
    void medianReadsTheCamerasNoiseOnAWall()
    {
        constexpr int Width = 640, Height = 480, Frames = 100;
        // The far wall of the room, right of its dark screen, clear of everything that moves at that moment.
        const RegionOfInterest wall {380, 130, 60, 40};

        DepthRenderer::Settings settings;
        settings.configuration.frameFormat = Zerlane::FRAME_FORMAT_VGA;
        settings.configuration.frameRate = 30;
        settings.configuration.mode = Zerlane::CAMERA_MODE_LONG_RANGE;
        settings.depthMapFloatingPoint = settings.confidenceMap = true;
        DepthRenderer renderer(5);

        std::vector<Zerlane::DepthNode::Configuration> configurations;
        Zerlane::DepthNode::Configuration current;
        DepthNodeData* node = new DepthNodeData(Zerlane::Node(), nullptr, {}, &configurations, &current, 7.5f);
        node->setRoi(wall);

        std::vector<float> zSum(std::size_t(wall.width * wall.height), 0.f);
        std::vector<int16_t> confidence;
        StandardDeviationHistory::Statistic statistic;
        for (int f = 0; f < Frames; ++f) {
            const auto sample = renderer.render(settings, 2'000'000);
            statistic = StandardDeviationHistory::addFrame(*node, sample.depthMapFloatingPoint.data(), Width, Height, Frames);
            for (int y = 0; y < wall.height; ++y)
                for (int x = 0; x < wall.width; ++x)
                    zSum[std::size_t(y * wall.width + x)] += sample.depthMapFloatingPoint[(wall.y + y) * Width + wall.x + x];
            if (f == 0)
                confidence.assign(sample.confidenceMap.data(), sample.confidenceMap.data() + Width * Height);
        }
        QCOMPARE(node->historyCount.load(), uint32_t(Frames));
        QCOMPARE(statistic.roi, wall);

        // The noise the camera model puts on each pixel: sigma = NoiseScale * d^2 / sqrt(signal) along the
        // ray, which is z / d of it in depth.
        const auto camera = Zerlane::sim::PinholeCamera::depth(Width, Height);
        std::vector<float> expected;
        float nearest = 1e9f, farthest = 0.f;
        for (int y = 0; y < wall.height; ++y)
            for (int x = 0; x < wall.width; ++x) {
                const int i = (wall.y + y) * Width + wall.x + x;
                const float z = zSum[std::size_t(y * wall.width + x)] / Frames;
                QVERIFY2(z > 0.f && confidence[std::size_t(i)] > 0, "the wall region holds only valid pixels");
                nearest = std::min(nearest, z);
                farthest = std::max(farthest, z);
                const float d = z * camera.backProject(wall.x + x, wall.y + y, 1.f).length();
                const float sigma = DepthRenderer::NoiseScale * d * d / std::sqrt(float(confidence[std::size_t(i)]));
                expected.push_back(sigma * (z / d) / std::sqrt(float(Frames - 1)));
            }
        QVERIFY2(farthest - nearest < 0.1f, "the region is a flat wall, not an edge");

        const float* deviation = statistic.deviation;
        const DeviationSummary measured = DeviationSummary::of(deviation, expected.size());
        const DeviationSummary modelled = DeviationSummary::of(expected.data(), expected.size());
        QVERIFY2(std::fabs(measured.median / modelled.median - 1.f) < 0.10f,
                 qPrintable(QString("median %1 m, the camera's noise gives %2 m").arg(measured.median).arg(modelled.median)));
        node->release();
    }
};

QTEST_GUILESS_MAIN(TestWallNoise)
#include "tst_wallnoise.moc"
