#pragma once

#include <QList>
#include <QMetaObject>

class QApplication;
class RecordingThread;
class WorkingThread;
class ZerlaneThread;
class ZerlaneViewer;

// The program's signal-slot table: every connection between the application, the event thread,
// the worker, the recording thread and the main window, made in one place and in one order.
class Wiring {
public:
    static constexpr int ConnectionCount = 28;

    // The service types that travel through queued connections.
    static void registerMetaTypes();
    // Makes the connections in table order; a connection that fails is returned invalid.
    static QList<QMetaObject::Connection> connectAll(QApplication* application, ZerlaneThread* events,
                                                     WorkingThread* worker, RecordingThread* recorder,
                                                     ZerlaneViewer* window);
};
