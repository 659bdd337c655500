#pragma once

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace ViewerTest {

// Runs `action` once the next modal widget other than `besides` is up (polling, so it works on any
// platform); set up before the call that runs the modal widget.
inline void whenModal(std::function<void(QWidget*)> action, QWidget* besides = nullptr)
{
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, action, besides] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == besides)
            return;
        timer->stop();
        timer->deleteLater();
        action(modal);
    });
    timer->start();
}

} // namespace ViewerTest
