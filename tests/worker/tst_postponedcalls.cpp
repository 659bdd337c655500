// Postponed calls: the replace rule and what run() posts.
#include "worker/InfoWidgetSetWidgetEvent.h"
#include "worker/PostponedCalls.h"

#include <QCoreApplication>
#include <QtTest>

namespace {

// Records the widgets that set-widget events carry.
class Receiver : public QObject {
public:
    QList<QWidget*> widgets;
    int otherEvents = 0;

protected:
    bool event(QEvent* e) override
    {
        if (e->type() == InfoWidgetSetWidgetEvent::eventType()) {
            widgets << static_cast<InfoWidgetSetWidgetEvent*>(e)->widget();
            return true;
        }
        ++otherEvents;
        return QObject::event(e);
    }
};

QWidget* fakeWidget(quintptr n)
{
    return reinterpret_cast<QWidget*>(n * 16); // only carried, never touched
}

} // namespace

class TstPostponedCalls : public QObject {
    Q_OBJECT
private slots:
    void cleanup();
    void singleInstance();
    void eventTypeIsRegisteredOnce();
    void newestContentWins();
    void replaceComparesTypeOnly();
    void runPostsOnlySetWidgetCallsAndForgetsAll();
    void emptyRunPostsNothing();
};

void TstPostponedCalls::cleanup()
{
    PostponedCalls::destroyInstance();
}

void TstPostponedCalls::singleInstance()
{
    PostponedCalls* first = PostponedCalls::instance();
    QCOMPARE(PostponedCalls::instance(), first);
    first->append({7, nullptr, nullptr});
    PostponedCalls::destroyInstance();
    QCOMPARE(PostponedCalls::instance()->count(), 0);
}

void TstPostponedCalls::eventTypeIsRegisteredOnce()
{
    const QEvent::Type type = InfoWidgetSetWidgetEvent::eventType();
    QVERIFY(type >= QEvent::User && type <= QEvent::MaxUser);
    QCOMPARE(InfoWidgetSetWidgetEvent::eventType(), type);
    InfoWidgetSetWidgetEvent event(fakeWidget(3));
    QCOMPARE(event.type(), type);
    QCOMPARE(event.widget(), fakeWidget(3));
}

void TstPostponedCalls::newestContentWins()
{
    Receiver panel;
    PostponedCalls* calls = PostponedCalls::instance();
    calls->setWidget(&panel, fakeWidget(1));
    calls->setWidget(&panel, fakeWidget(2));
    QCOMPARE(calls->count(), 1);
    calls->run();
    QCOMPARE(calls->count(), 0);
    QVERIFY(panel.widgets.isEmpty()); // posted, not sent
    QCoreApplication::sendPostedEvents();
    QCOMPARE(panel.widgets, QList<QWidget*>{fakeWidget(2)});
}

void TstPostponedCalls::replaceComparesTypeOnly()
{
    Receiver first, second;
    PostponedCalls* calls = PostponedCalls::instance();
    calls->append({5, &first, nullptr});
    calls->setWidget(&first, fakeWidget(1));
    calls->setWidget(&second, fakeWidget(2)); // replaces the call for `first`
    QCOMPARE(calls->count(), 2);
    calls->append({PostponedCalls::SetWidget, &first, fakeWidget(3)}); // append never replaces
    QCOMPARE(calls->count(), 3);
    calls->addOrReplace({5, &second, nullptr});
    QCOMPARE(calls->count(), 3);
    calls->run();
    QCoreApplication::sendPostedEvents();
    QVERIFY(first.widgets == QList<QWidget*>{fakeWidget(3)});
    QVERIFY(second.widgets == QList<QWidget*>{fakeWidget(2)});
}

void TstPostponedCalls::runPostsOnlySetWidgetCallsAndForgetsAll()
{
    Receiver panel;
    PostponedCalls* calls = PostponedCalls::instance();
    calls->append({2, &panel, fakeWidget(9)});
    calls->append({0, &panel, fakeWidget(8)});
    calls->run();
    QCOMPARE(calls->count(), 0);
    QCoreApplication::sendPostedEvents();
    QVERIFY(panel.widgets.isEmpty());
    QCOMPARE(panel.otherEvents, 0);
}

void TstPostponedCalls::emptyRunPostsNothing()
{
    Receiver panel;
    PostponedCalls::instance()->run();
    QCoreApplication::sendPostedEvents();
    QVERIFY(panel.widgets.isEmpty());
    QCOMPARE(panel.otherEvents, 0);
}

QTEST_GUILESS_MAIN(TstPostponedCalls)
#include "tst_postponedcalls.moc"
