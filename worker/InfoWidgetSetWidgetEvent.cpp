#include "worker/InfoWidgetSetWidgetEvent.h"

QEvent::Type InfoWidgetSetWidgetEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

InfoWidgetSetWidgetEvent::InfoWidgetSetWidgetEvent(QWidget* widget) : QEvent(eventType()), m_widget(widget) {}
