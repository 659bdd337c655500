// Message boxes with postponed calls, wheel-safe editors, the separator and the text colour.
#include "app/shared/StartupOptions.h"
#include "support/WhenModal.h"
#include "worker/InfoWidgetSetWidgetEvent.h"
#include "widgets/QHLine.h"
#include "widgets/TextColor.h"
#include "widgets/ZRComboBox.h"
#include "widgets/ZRDoubleSpinBox.h"
#include "widgets/ZRMessageBox.h"
#include "widgets/ZRSpinBox.h"
#include "worker/PostponedCalls.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtTest>

#include <functional>

namespace {

class Receiver : public QObject {
public:
    QList<QWidget*> widgets;

protected:
    bool event(QEvent* e) override
    {
        if (e->type() == InfoWidgetSetWidgetEvent::eventType()) {
            widgets << static_cast<InfoWidgetSetWidgetEvent*>(e)->widget();
            return true;
        }
        return QObject::event(e);
    }
};

void clickOk(QWidget* modal)
{
    auto* box = qobject_cast<QMessageBox*>(modal);
    QVERIFY(box);
    box->button(QMessageBox::Ok)->click();
}

bool wheel(QWidget* target)
{
    const QPointF at(target->width() / 2.0, target->height() / 2.0);
    QWheelEvent event(at, target->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
    return event.isAccepted();
}

QWidget* fakeWidget(quintptr n)
{
    return reinterpret_cast<QWidget*>(n * 16);
}

} // namespace

class TstWidgets : public QObject {
    Q_OBJECT
private slots:
    void cleanup();
    void warningAndErrorBoxes();
    void nestedBoxesRunTheCallsWhenTheLastCloses();
    void disabledPopupsShowNothingAndRunNothing();
    void questionBoxIgnoresDisabledPopups();
    void editorsIgnoreTheWheel();
    void separatorLine();
    void textColourInEveryGroup();
};

void TstWidgets::cleanup()
{
    StartupOptions::setDisablePopups(false);
    PostponedCalls::destroyInstance();
}

void TstWidgets::warningAndErrorBoxes()
{
    const struct {
        void (*show)(const QString&);
        const char* title;
        QMessageBox::Icon icon;
    } kinds[] = {{&ZRMessageBox::warning, "Warning", QMessageBox::Warning},
                 {&ZRMessageBox::error, "Error", QMessageBox::Critical}};
    for (const auto& kind : kinds) {
        Receiver panel;
        PostponedCalls::instance()->setWidget(&panel, fakeWidget(1));
        bool seen = false;
        ViewerTest::whenModal([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            seen = true;
            QCOMPARE(box->windowTitle(), QString::fromLatin1(kind.title));
            QCOMPARE(box->icon(), kind.icon);
            QCOMPARE(box->text(), QStringLiteral("Something happened"));
            QCOMPARE(box->standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
            QVERIFY(!box->parentWidget());
            QVERIFY(box->windowFlags().testFlag(Qt::MSWindowsFixedSizeDialogHint));
            QCOMPARE(PostponedCalls::instance()->count(), 1);
            clickOk(box);
        });
        kind.show(QStringLiteral("Something happened"));
        QVERIFY(seen);
        QCOMPARE(PostponedCalls::instance()->count(), 0);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(panel.widgets, QList<QWidget*>{fakeWidget(1)});
    }
}

void TstWidgets::nestedBoxesRunTheCallsWhenTheLastCloses()
{
    Receiver panel;
    int keptAfterInner = -1;
    ZRMessageBox outer(QMessageBox::Warning, QStringLiteral("Outer"), QStringLiteral("outer"), QMessageBox::Ok);
    ViewerTest::whenModal([&](QWidget* modal) {
        QCOMPARE(modal, &outer);
        PostponedCalls::instance()->setWidget(&panel, fakeWidget(1));
        PostponedCalls::instance()->setWidget(&panel, fakeWidget(2));
        ZRMessageBox inner(QMessageBox::Critical, QStringLiteral("Inner"), QStringLiteral("inner"),
                           QMessageBox::Ok | QMessageBox::Cancel);
        ViewerTest::whenModal(clickOk, &outer);
        QCOMPARE(inner.exec(), int(QMessageBox::Ok));
        keptAfterInner = PostponedCalls::instance()->count();
        QCoreApplication::sendPostedEvents();
        QVERIFY(panel.widgets.isEmpty());
        clickOk(&outer);
    });
    QCOMPARE(outer.exec(), int(QMessageBox::Ok));
    QCOMPARE(keptAfterInner, 1);
    QCOMPARE(PostponedCalls::instance()->count(), 0);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(panel.widgets, QList<QWidget*>{fakeWidget(2)});
}

void TstWidgets::disabledPopupsShowNothingAndRunNothing()
{
    StartupOptions::setDisablePopups(true);
    Receiver panel;
    PostponedCalls::instance()->setWidget(&panel, fakeWidget(1));
    bool shown = false;
    QTimer guard; // closes a box that should not be there
    QObject::connect(&guard, &QTimer::timeout, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            shown = true;
            modal->close();
        }
    });
    guard.start(10);
    ZRMessageBox::warning(QStringLiteral("quiet"));
    ZRMessageBox::error(QStringLiteral("quiet"));
    guard.stop();
    QVERIFY(!shown);
    QCOMPARE(PostponedCalls::instance()->count(), 1);
}

void TstWidgets::questionBoxIgnoresDisabledPopups()
{
    StartupOptions::setDisablePopups(true);
    ZRMessageBox question(QMessageBox::Question, QStringLiteral("Node configuration changed"), QStringLiteral("?"),
                          QMessageBox::Yes | QMessageBox::No);
    ViewerTest::whenModal([](QWidget* modal) { static_cast<QMessageBox*>(modal)->button(QMessageBox::No)->click(); });
    QCOMPARE(question.exec(), int(QMessageBox::No));
}

void TstWidgets::editorsIgnoreTheWheel()
{
    QScrollArea area;
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    auto* spin = new ZRSpinBox;
    auto* doubleSpin = new ZRDoubleSpinBox;
    auto* combo = new ZRComboBox;
    auto* plainSpin = new QSpinBox;
    combo->addItems({"a", "b", "c"});
    combo->setCurrentIndex(1);
    for (QWidget* w : std::initializer_list<QWidget*>{spin, doubleSpin, combo, plainSpin}) {
        layout->addWidget(w);
        w->setFocus();
    }
    spin->setValue(5);
    doubleSpin->setValue(5.0);
    plainSpin->setValue(5);
    auto* filler = new QLabel(QStringLiteral("filler"));
    filler->setMinimumHeight(3000);
    layout->addWidget(filler);
    area.setWidget(content);
    area.resize(300, 200);
    area.show();
    QVERIFY(QTest::qWaitForWindowExposed(&area));

    // Left ignored, so Qt hands a real wheel turn on to the scrolling panel.
    QVERIFY(!wheel(spin));
    QCOMPARE(spin->value(), 5);
    QVERIFY(!wheel(doubleSpin));
    QCOMPARE(doubleSpin->value(), 5.0);
    QVERIFY(!wheel(combo));
    QCOMPARE(combo->currentIndex(), 1);
    // The panel itself scrolls under the same turn.
    QScrollBar* bar = area.verticalScrollBar();
    QCOMPARE(bar->value(), 0);
    wheel(area.viewport());
    QVERIFY(bar->value() > 0);
    // The plain editor would have changed: the wheel really reached the editors.
    wheel(plainSpin);
    QVERIFY(plainSpin->value() != 5);
}

void TstWidgets::separatorLine()
{
    QWidget parent;
    QHLine line(&parent);
    QCOMPARE(line.frameShape(), QFrame::HLine);
    QCOMPARE(line.frameShadow(), QFrame::Plain);
    QCOMPARE(line.parentWidget(), &parent);
    QHLine tool(nullptr, Qt::Tool);
    QVERIFY(tool.windowFlags().testFlag(Qt::Tool));
}

void TstWidgets::textColourInEveryGroup()
{
    QLabel label;
    setTextColor(&label, QColor(0x12, 0x34, 0x56));
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(label.palette().color(group, QPalette::Text), QColor(0x12, 0x34, 0x56));
        QCOMPARE(label.palette().color(group, QPalette::WindowText), QColor(0x12, 0x34, 0x56));
        QCOMPARE(label.palette().brush(group, QPalette::Text).style(), Qt::SolidPattern);
    }
    setTextColor(nullptr, Qt::red); // harmless
}

QTEST_MAIN(TstWidgets)
#include "tst_widgets.moc"
