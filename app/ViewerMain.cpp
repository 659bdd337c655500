#include "app/ViewerMain.h"

#include "app/CommandLine.h"
#include "app/ViewerApplication.h"
#include "app/Wiring.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "worker/PostponedCalls.h"
#include "worker/WorkingThread.h"

#include "Zerlane/Zerlane.h"

#include <QFontDatabase>
#include <QLabel>
#include <QMessageBox>
#include <QStyle>

#include <algorithm>

QString ViewerMain::contextErrorText(const std::string& message)
{
    QString text = QString::fromStdString(message);
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

std::unique_ptr<QMessageBox> ViewerMain::usageBox()
{
    auto box = std::make_unique<QMessageBox>(QMessageBox::Information, "Usage", CommandLine::usageText(),
                                             QMessageBox::Ok, nullptr, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    for (QLabel* label : box->findChildren<QLabel*>()) {
        if (label->text() == box->text())
            keepLinesWhole(label);
    }
    return box;
}

// The option lines are columns laid out with blanks: a fixed-pitch font keeps them in line, and a
// label as wide as the longest line keeps the box from wrapping them. The box puts the label against
// its right edge, so the label keeps a margin of its own there.
void ViewerMain::keepLinesWhole(QLabel* label)
{
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    int widest = 0;
    for (const QString& line : label->text().split('\n'))
        widest = std::max(widest, label->fontMetrics().horizontalAdvance(line));
    const int margin = label->style()->pixelMetric(QStyle::PM_LayoutRightMargin);
    label->setContentsMargins(0, 0, margin, 0);
    label->setMinimumWidth(widest + margin);
}

void ViewerMain::showUsage()
{
    usageBox()->exec();
}

void ViewerMain::showContextError(const QString& text)
{
    QMessageBox box(QMessageBox::Critical, "Error", text, QMessageBox::Ok, nullptr,
                    Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    box.exec();
}

int ViewerMain::run(int argc, char** argv)
{
    Zerlane::Utils::StreamingMemory::keepSampleBlocks();
    // Sub-windows re-parent their OpenGL views (maximise, rebuild): their contexts must share.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    auto* application = new ViewerApplication(argc, argv);
    const int environmentPort = Zerlane::Utils::EnvironmentVariable("ZERLANE_SERVER_PORT_NUMBER").getIntValue(0);
    if (CommandLine::parse(argc, argv, environmentPort)) {
        showUsage();
        delete application;
        return 0;
    }

    try {
        startProgram(application);
    } catch (const Zerlane::Exception& e) {
        showContextError(contextErrorText(e.getMessage()));
        ZerlaneThread::destroyInstance(); // never started
        delete application;
        return 1;
    }
    const int result = application->exec();

    shutDown();
    delete application;
    return result;
}

ViewerMain::Objects ViewerMain::createObjects()
{
    ZerlaneThread* events = ZerlaneThread::instance();
    CameraManager::instance();
    WorkingThread* worker = WorkingThread::instance();
    worker->moveToThread(worker);
    RecordingThread* recorder = RecordingThread::instance();
    recorder->moveToThread(recorder);
    ZerlaneViewer* window = ZerlaneViewer::instance();
    CameraManager::instance()->setMainWindow(window);
    return {events, worker, recorder, window};
}

ZerlaneViewer* ViewerMain::startProgram(QApplication* application)
{
    const Objects objects = createObjects();
    Wiring::registerMetaTypes();
    Wiring::connectAll(application, objects.events, objects.worker, objects.recorder, objects.window);

    // Started only now, so that no signal is emitted before its receiver is connected.
    objects.events->start(QThread::InheritPriority);
    objects.worker->start(QThread::InheritPriority);
    objects.recorder->start(QThread::InheritPriority);
    objects.window->show();
    return objects.window;
}

void ViewerMain::shutDown()
{
    if (ZerlaneThread* events = ZerlaneThread::existingInstance())
        events->on_aboutToQuitApplication(); // nothing more to do when the application quit normally
    ZerlaneThread::destroyInstance();
    ZerlaneViewer::destroyInstance();
    RecordingThread::destroyInstance();
    WorkingThread::destroyInstance();
    CameraManager::destroyInstance();
    PostponedCalls::destroyInstance();
}
