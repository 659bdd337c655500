// The standard-deviation statistic: the formula kept exactly, the ring of frames cut from the node's
// region (clamped to the map, started over when the region changes, its count clamped when N is
// lowered), the summary's median for odd and even counts, and the region's own rules.

#include "camera/DepthNodeData.h"
#include "camera/DeviationSummary.h"
#include "camera/RegionOfInterest.h"
#include "camera/StandardDeviationHistory.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

// The statistic as written per pixel: sums in slot order, single precision, root in double.
float referenceDeviation(const std::vector<float>& values)
{
    const uint32_t c = uint32_t(values.size());
    if (c <= 1)
        return 0.f;
    float sum = 0.f;
    for (float v : values)
        sum += v;
    const float mean = sum * (1.f / float(c));
    float squares = 0.f;
    for (float v : values) {
        const float d = v - mean;
        squares += d * d;
    }
    return float(std::sqrt(double(squares)) * double(1.f / float(c - 1)));
}

} // namespace

class TestStatistics : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        node = new DepthNodeData(Zerlane::Node(), nullptr, {}, &configurations, &current, 7.5f);
    }
    void cleanup() { node->release(); }

    void formulaIsKeptBitForBit()
    {
        // c = 3 of 1.0, 1.1, 1.2: the root of the summed squares over c - 1, not the sample deviation.
        const float a[] = {1.0f}, b[] = {1.1f}, c[] = {1.2f};
        const float* three[] = {a, b, c};
        float mean = 0.f, result = 0.f;
        StandardDeviationHistory::compute(three, 3, 1, &mean, &result);
        QVERIFY(std::fabs(result - 0.0707107f) < 1e-6f);
        StandardDeviationHistory::compute(three, 1, 1, &mean, &result);
        QCOMPARE(result, 0.f);

        // Any data: exactly what the per-pixel formula gives.
        std::mt19937 random(3);
        std::normal_distribution<float> noise(2.f, 0.05f);
        constexpr uint32_t Pixels = 257, Count = 37;
        std::vector<std::vector<float>> frames(Count, std::vector<float>(Pixels));
        std::vector<const float*> pointers;
        for (auto& frame : frames) {
            for (float& v : frame)
                v = noise(random);
            pointers.push_back(frame.data());
        }
        std::vector<float> means(Pixels), results(Pixels);
        StandardDeviationHistory::compute(pointers.data(), Count, Pixels, means.data(), results.data());
        for (uint32_t p = 0; p < Pixels; ++p) {
            std::vector<float> values;
            for (const auto& frame : frames)
                values.push_back(frame[p]);
            const float expected = referenceDeviation(values);
            QVERIFY2(std::memcmp(&results[p], &expected, sizeof(float)) == 0, qPrintable(QString::number(p)));
        }
    }

    void ringIsCutFromTheRegionAndStartsOver()
    {
        // A 4 x 3 map whose pixel i holds i + frame / 10.
        auto map = [](int frame) {
            std::vector<float> values(12);
            for (int i = 0; i < 12; ++i)
                values[size_t(i)] = float(i) + float(frame) / 10.f;
            return values;
        };
        QVERIFY(!StandardDeviationHistory::addFrame(*node, map(0).data(), 4, 3, 100).deviation); // no region

        node->setRoi({1, 1, 2, 2});
        StandardDeviationHistory::Statistic statistic;
        for (int frame = 0; frame < 5; ++frame)
            statistic = StandardDeviationHistory::addFrame(*node, map(frame).data(), 4, 3, 100);
        QCOMPARE(node->historyCount.load(), 5u);
        QCOMPARE(statistic.roi, (RegionOfInterest{1, 1, 2, 2}));
        QCOMPARE(node->history[0][0], 5.f);  // row 1, column 1 of frame 0
        QCOMPARE(node->history[0][3], 10.f); // row 2, column 2
        QCOMPARE(statistic.deviation[0], statistic.deviation[3]); // every pixel varies alike

        // N lowered below the count: clamped at the next frame, the write index wraps.
        StandardDeviationHistory::addFrame(*node, map(5).data(), 4, 3, 3);
        QCOMPARE(node->historyCount.load(), 3u);

        // Another region, or a reset asked for by another thread: the ring starts over.
        node->setRoi({0, 0, 1, 1});
        StandardDeviationHistory::addFrame(*node, map(6).data(), 4, 3, 100);
        QCOMPARE(node->historyCount.load(), 1u);
        StandardDeviationHistory::addFrame(*node, map(7).data(), 4, 3, 100);
        StandardDeviationHistory::requestReset(*node);
        StandardDeviationHistory::addFrame(*node, map(8).data(), 4, 3, 100);
        QCOMPARE(node->historyCount.load(), 1u);

        // A region drawn on a larger image is cut to this map, never read past it.
        node->setRoi({2, 1, 600, 400});
        statistic = StandardDeviationHistory::addFrame(*node, map(9).data(), 4, 3, 100);
        QCOMPARE(statistic.roi, (RegionOfInterest{2, 1, 2, 2}));
        node->setRoi({10, 10, 5, 5});
        QVERIFY(!StandardDeviationHistory::addFrame(*node, map(10).data(), 4, 3, 100).deviation);
    }

    void summaryAndRegionRules()
    {
        const float odd[] = {0.1f, 0.3f, 0.2f};
        QCOMPARE(DeviationSummary::of(odd, 3).median, 0.2f);
        const float even[] = {0.4f, 0.1f, 0.3f, 0.2f};
        const DeviationSummary summary = DeviationSummary::of(even, 4);
        QCOMPARE(summary.median, (0.2f + 0.3f) * 0.5f);
        QCOMPARE(summary.minimum, 0.1f);
        QCOMPARE(summary.maximum, 0.4f);
        QVERIFY(DeviationSummary::of(even, 0).empty);

        QCOMPARE(RegionOfInterest::spanning(5, 2, 5, 2), (RegionOfInterest{5, 2, 1, 1}));
        QCOMPARE(RegionOfInterest::spanning(9, 1, 3, 7), (RegionOfInterest{3, 1, 7, 7}));
        QVERIFY(!RegionOfInterest().clampedTo(640, 480).isSet());
    }

private:
    std::vector<Zerlane::DepthNode::Configuration> configurations;
    Zerlane::DepthNode::Configuration current;
    DepthNodeData* node = nullptr;
};

QTEST_MAIN(TestStatistics)
#include "tst_statistics.moc"
