#include "worker/PostponedCalls.h"

#include "worker/InfoWidgetSetWidgetEvent.h"

#include <QCoreApplication>

void PostponedCalls::addOrReplace(const Call& call)
{
    QMutexLocker locker(&m_mutex);
    for (Call& kept : m_calls) {
        if (kept.type == call.type) {
            kept = call;
            return;
        }
    }
    m_calls.push_back(call);
}

void PostponedCalls::append(const Call& call)
{
    QMutexLocker locker(&m_mutex);
    m_calls.push_back(call);
}

void PostponedCalls::setWidget(QObject* receiver, QWidget* widget)
{
    addOrReplace(Call{SetWidget, receiver, widget});
}

void PostponedCalls::run()
{
    QMutexLocker locker(&m_mutex);
    for (const Call& call : m_calls) {
        if (call.type == SetWidget && call.receiver)
            QCoreApplication::postEvent(call.receiver,
                                        new InfoWidgetSetWidgetEvent(static_cast<QWidget*>(call.argument)));
    }
    m_calls.clear();
}

int PostponedCalls::count() const
{
    QMutexLocker locker(&m_mutex);
    return int(m_calls.size());
}
