#pragma once

// Helpers shared by the viewer's test suites: isolated settings, the simulated camera in a standalone
// context, waiting on the event loop, and recording message boxes and log lines.

#include "app/shared/StartupOptions.h"
#include "support/LogRecorder.h"

#include "Zerlane/Zerlane.h"
#include "Zerlane/sim/SimulatorControl.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <mutex>

namespace ViewerTest {

// Settings go to a temporary directory for the whole test process, never to the user's.
inline void isolateSettings()
{
    static QTemporaryDir directory;
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, directory.path());
    QSettings("Hallmere", "ZerlaneViewer").clear();
}

inline void resetStartupOptions()
{
    StartupOptions::setStandalone(false);
    StartupOptions::setPort(0);
    StartupOptions::setDisableDepth(false);
    StartupOptions::setDisableColor(false);
    StartupOptions::setDisableAudio(false);
    StartupOptions::setShowHidden(false);
    StartupOptions::setDisablePopups(false);
}

// The next contexts are standalone ones over one simulated camera, stepped by the test.
inline void useSteppedSimulator()
{
    resetStartupOptions();
    StartupOptions::setStandalone(true);
    Zerlane::plugin::FaultInjector::clear();
    Zerlane::Sim::Control::reset();
    Zerlane::Sim::Control::setStepped(true);
}

template <class Predicate>
bool waitFor(Predicate predicate, int timeoutMs = 5000)
{
    QElapsedTimer clock;
    clock.start();
    while (!predicate()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}

// Accepts every message box as soon as it opens, remembering its title and text.
class MessageBoxRecorder : public QObject {
public:
    MessageBoxRecorder()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                titles << box->windowTitle();
                texts << box->text();
                box->accept();
            }
        });
        m_timer.start(10);
    }
    QStringList titles;
    QStringList texts;

private:
    QTimer m_timer;
};

} // namespace ViewerTest
