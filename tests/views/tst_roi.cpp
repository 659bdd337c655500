// Choosing a region of interest with the mouse in a flat view: press, drag past the edges, release,
// double click, with and without mirror; the selection text while dragging; and the texts of the
// standard-deviation view's summary.

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/DeviationSummary.h"
#include "camera/NodeData.h"
#include "camera/RegionOfInterest.h"
#include "views/BufferDisplayWidget.h"
#include "views/DisplayWidget.h"
#include "views/StandardDeviationDisplayWidget.h"
#include "views/ViewContext.h"

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

namespace {

class QuietContext : public ViewContext {
public:
    bool streamingStopped() const override { return false; }
    qint64 relativeTime(quint64 time) const override { return qint64(time); }
    void lockBuffers() override {}
    void unlockBuffers() override {}
    DisplayPreferences preferences() const override { return {}; }
};

} // namespace

class TestRoi : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        device = new DeviceData(Zerlane::Device(), {});
        node = new NodeData(Zerlane::Node(), device, {});
        buffer = new BufferData(node, BufferData::Depth);
        node->buffers = {buffer};
        // An 8 x 6 image in the displayed slot: each pixel is 40 x 40 widget pixels at 320 x 240.
        const int slot = buffer->readSlot();
        buffer->width[slot] = 8;
        buffer->height[slot] = 6;
        buffer->image[slot].resize(8, 6);
        view = new BufferDisplayWidget;
        view->setViewContext(&context);
        view->setBuffer(buffer);
        view->show();
        display = view->displayWidget();
        display->setFixedSize(320, 240);
        QVERIFY(QTest::qWaitForWindowExposed(view));
    }

    void cleanup()
    {
        delete view;
        node->release();
        device->release();
    }

    void dragPressReleaseAndDoubleClick()
    {
        QSignalSpy changed(view, &BufferDisplayWidget::regionChanged);
        QTest::mousePress(display, Qt::LeftButton, {}, QPoint(45, 45)); // pixel (1, 1)
        QVERIFY(!node->roi().isSet()); // nothing until the first move
        QTest::mouseMove(display, QPoint(50, 50));
        QCOMPARE(node->roi(), (RegionOfInterest{1, 1, 1, 1}));
        // Past the right and bottom edges: the region ends at the last column and row.
        QTest::mouseMove(display, QPoint(319, 239));
        sendMove(QPoint(900, 700));
        QCOMPARE(node->roi(), (RegionOfInterest{1, 1, 7, 5}));
        QTest::mouseMove(display, QPoint(130, 90));
        QCOMPARE(node->roi(), (RegionOfInterest{1, 1, 3, 2}));
        QCOMPARE(view->interactiveInfo(), QString("ROI selection : X,Y = (1,1)     W,H = (3,2)"));
        QTest::mouseRelease(display, Qt::LeftButton, {}, QPoint(130, 90));
        QVERIFY(!display->selecting());
        QTest::mouseMove(display, QPoint(200, 200)); // no longer selecting: the region stays
        QCOMPARE(node->roi(), (RegionOfInterest{1, 1, 3, 2}));
        QVERIFY(changed.count() >= 3);
        QCOMPARE(changed.last().first().value<NodeData*>(), node);

        QTest::mouseDClick(display, Qt::LeftButton, {}, QPoint(100, 100));
        QVERIFY(!node->roi().isSet());

        // Mirrored, the widget's left edge is the image's last column.
        display->setMirror(true);
        QTest::mousePress(display, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseMove(display, QPoint(85, 5));
        QCOMPARE(node->roi(), (RegionOfInterest{5, 0, 3, 1}));
        QTest::mouseRelease(display, Qt::LeftButton, {}, QPoint(85, 5));
    }

    void statisticsViewTexts()
    {
        StandardDeviationDisplayWidget statistics;
        const QStringList titles = [&] {
            QStringList texts;
            for (QLabel* label : statistics.findChildren<QLabel*>())
                texts << label->text();
            return texts;
        }();
        QVERIFY(titles.contains("Maxiumum standard deviation:"));
        QCOMPARE(statistics.valueText("roiLabel"), QString("No ROI selected"));
        const float values[] = {0.25f, 0.0020125f, 0.5f};
        statistics.showSummary(DeviationSummary::of(values, 3), 3, 100);
        statistics.showRegion({12, 34, 56, 78});
        QCOMPARE(statistics.valueText("medStandardDeviationLabel"), QString("0.25m"));
        QCOMPARE(statistics.valueText("minStandardDeviationLabel"), QString("0.0020125m"));
        QCOMPARE(statistics.valueText("maxStandardDeviationLabel"), QString("0.5m"));
        QCOMPARE(statistics.valueText("populationSizeLabel"), QString("3/100"));
        QCOMPARE(statistics.valueText("roiLabel"), QString("X,Y = (12, 34)     W,H = (56, 78)"));
        statistics.showSummary(DeviationSummary(), 0, 100);
        QCOMPARE(statistics.valueText("medStandardDeviationLabel"), QString("-"));
        QCOMPARE(statistics.valueText("populationSizeLabel"), QString("-"));
    }

private:
    // A move with the left button held to a point outside the widget, as a drag past its edge sends.
    void sendMove(QPoint position)
    {
        QMouseEvent move(QEvent::MouseMove, position, display->mapToGlobal(position), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(display, &move);
    }

    QuietContext context;
    DeviceData* device = nullptr;
    NodeData* node = nullptr;
    BufferData* buffer = nullptr;
    BufferDisplayWidget* view = nullptr;
    DisplayWidget* display = nullptr;
};

QTEST_MAIN(TestRoi)
#include "tst_roi.moc"
