// The library's private queues: the per-node sample bound and the context's event queue.

#include "sdk/src/EventQueue.h"
#include "sdk/src/SampleQueue.h"

#include "Zerlane/Exceptions.h"

#include <QtTest>

#include <atomic>
#include <thread>

using namespace Zerlane;
using Zerlane::detail::EventQueue;
using Zerlane::detail::SampleQueue;

namespace {

SampleQueue::Sample depthSample(uint64_t capture)
{
    DepthNode::NewSampleReceivedData data;
    data.timeOfCapture = capture;
    return data;
}

const DepthNode::NewSampleReceivedData& depth(const std::optional<SampleQueue::Sample>& sample)
{
    return std::get<DepthNode::NewSampleReceivedData>(*sample);
}

} // namespace

class TestSdkQueues : public QObject {
    Q_OBJECT

private slots:
    void sampleQueueKeepsNewestTwoAndCountsDrops();
    void sampleQueueSharesMapsWithoutCopy();
    void eventQueueQuitIsStickyAndConsumed();
    void eventQueueFailureAndCoalescing();
};

void TestSdkQueues::sampleQueueKeepsNewestTwoAndCountsDrops()
{
    SampleQueue queue;
    QVERIFY(!queue.pop());
    // Five arrive before anyone delivers: 1 and 2 fit, 3, 4 and 5 each push out the oldest.
    QVERIFY(queue.push(depthSample(1)));
    QVERIFY(queue.push(depthSample(2)));
    QVERIFY(!queue.push(depthSample(3)));
    QVERIFY(!queue.push(depthSample(4)));
    QVERIFY(!queue.push(depthSample(5)));
    QCOMPARE(queue.waiting(), std::size_t(2));

    const auto first = queue.pop();
    QCOMPARE(depth(first).timeOfCapture, uint64_t(4));
    QCOMPARE(depth(first).droppedSampleCount, 3);
    QCOMPARE(depth(first).droppedSampleTotalCount, 3);
    const auto second = queue.pop();
    QCOMPARE(depth(second).timeOfCapture, uint64_t(5));
    QCOMPARE(depth(second).droppedSampleCount, 0);
    QCOMPARE(depth(second).droppedSampleTotalCount, 3);
    QVERIFY(!queue.pop());

    // One more drop later adds to the total; a plug-in's own drop count is kept and added.
    queue.push(depthSample(6));
    queue.push(depthSample(7));
    queue.push(depthSample(8));
    auto own = depthSample(9);
    std::get<DepthNode::NewSampleReceivedData>(own).droppedSampleCount = 2;
    queue.push(std::move(own)); // pushes out 7
    QCOMPARE(depth(queue.pop()).droppedSampleTotalCount, 5); // 8 carries the two drops
    const auto last = queue.pop();
    QCOMPARE(depth(last).droppedSampleCount, 2);
    QCOMPARE(depth(last).droppedSampleTotalCount, 7);

    // Stopping forgets waiting samples without counting them as drops.
    queue.push(depthSample(10));
    queue.push(depthSample(11));
    queue.push(depthSample(12));
    queue.clear();
    QCOMPARE(queue.waiting(), std::size_t(0));
    queue.push(depthSample(13));
    QCOMPARE(depth(queue.pop()).droppedSampleCount, 0);
    QCOMPARE(queue.totalDropped(), 7);
}

void TestSdkQueues::sampleQueueSharesMapsWithoutCopy()
{
    auto block = std::make_shared<std::vector<int16_t>>(640 * 480, int16_t(1234));
    DepthNode::NewSampleReceivedData data;
    data.depthMap = Pointer<int16_t>(block, block->data(), int32_t(block->size()));
    SampleQueue queue;
    queue.push(SampleQueue::Sample(std::move(data)));
    const auto delivered = queue.pop();
    QCOMPARE(depth(delivered).depthMap.data(), block->data());
    QCOMPARE(depth(delivered).depthMap.size(), int32_t(640 * 480));
    QCOMPARE(block.use_count(), 2L); // the delivered sample keeps the block alive
}

void TestSdkQueues::eventQueueQuitIsStickyAndConsumed()
{
    EventQueue queue;
    int ran = 0;
    queue.post([&] { ++ran; });
    queue.quit();
    QVERIFY(!queue.waitNext()); // quit wins over waiting actions
    EventQueue::Action action = queue.waitNext(); // and was consumed
    QVERIFY(action);
    action();
    QCOMPARE(ran, 1);

    std::atomic<bool> returned {false};
    std::thread waiter([&] {
        const EventQueue::Action a = queue.waitNext();
        returned = !a;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    QVERIFY(!returned);
    queue.quit();
    waiter.join();
    QVERIFY(returned);
}

void TestSdkQueues::eventQueueFailureAndCoalescing()
{
    EventQueue queue;
    int changes = 0;
    for (int i = 0; i < 5; ++i)
        queue.postOnce("node/range", [&] { ++changes; });
    queue.postOnce("node/gain", [&] { ++changes; });
    QCOMPARE(queue.size(), std::size_t(2));
    queue.waitNext()();
    queue.postOnce("node/range", [&] { ++changes; }); // delivered already: a new change queues again
    QCOMPARE(queue.size(), std::size_t(2));

    queue.fail("server gone");
    try {
        queue.waitNext();
        QFAIL("no exception");
    } catch (const TransportException& e) {
        QCOMPARE(std::string(e.what()), std::string("server gone"));
    }
    queue.waitNext()(); // the failure is reported once
    queue.waitNext()();
    QCOMPARE(changes, 3);
}

QTEST_GUILESS_MAIN(TestSdkQueues)
#include "tst_sdkqueues.moc"
