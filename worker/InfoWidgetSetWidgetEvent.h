#pragma once

#include <QEvent>

class QWidget;

// Asks the info panel to install a new content widget; posted by the postponed calls once no modal
// widget is open any more. It lives beside the postponed calls that make it; the panel receives it.
class InfoWidgetSetWidgetEvent : public QEvent {
public:
    // Registered with Qt once, on first use.
    static QEvent::Type eventType();

    explicit InfoWidgetSetWidgetEvent(QWidget* widget);

    QWidget* widget() const { return m_widget; }

private:
    QWidget* m_widget;
};
