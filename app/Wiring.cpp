#include "app/Wiring.h"

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/ZerlaneThread.h"
#include "mainwindow/RecordingThread.h"
#include "mainwindow/ZerlaneViewer.h"
#include "worker/WorkingThread.h"

#include <QApplication>

void Wiring::registerMetaTypes()
{
    qRegisterMetaType<Zerlane::Node>("Zerlane::Node");
    qRegisterMetaType<Zerlane::Device>("Zerlane::Device");
    qRegisterMetaType<Zerlane::PropertyBase>("Zerlane::PropertyBase");
    qRegisterMetaType<Zerlane::DepthNode::Configuration>("Zerlane::DepthNode::Configuration");
    qRegisterMetaType<Zerlane::ColorNode::Configuration>("Zerlane::ColorNode::Configuration");
    qRegisterMetaType<Zerlane::AudioNode::Configuration>("Zerlane::AudioNode::Configuration");
    // The record pointers travel through queued connections too.
    qRegisterMetaType<NodeData*>("NodeData*");
    qRegisterMetaType<DeviceData*>("DeviceData*");
    qRegisterMetaType<BufferData*>("BufferData*");
}

QList<QMetaObject::Connection> Wiring::connectAll(QApplication* application, ZerlaneThread* events,
                                                  WorkingThread* worker, RecordingThread* recorder,
                                                  ZerlaneViewer* window)
{
    struct Row {
        QObject* sender;
        const char* signal;
        QObject* receiver;
        const char* slot;
        Qt::ConnectionType type;
    };
    const Row table[ConnectionCount] = {
        {application, SIGNAL(lastWindowClosed()), application, SLOT(quit()), Qt::AutoConnection},
        {application, SIGNAL(aboutToQuit()), events, SLOT(on_aboutToQuitApplication()), Qt::DirectConnection},
        {events, SIGNAL(quitQApplication()), application, SLOT(quit()), Qt::AutoConnection},
        {events, SIGNAL(deviceConnected(Zerlane::Device)), window, SLOT(onDeviceConnected(Zerlane::Device)), Qt::AutoConnection},
        {events, SIGNAL(deviceDisconnected(Zerlane::Device)), window, SLOT(onDeviceDisconnected(Zerlane::Device)), Qt::AutoConnection},
        {events, SIGNAL(nodeConnected(Zerlane::Device, Zerlane::Node)), window, SLOT(onNodeConnected(Zerlane::Device, Zerlane::Node)), Qt::AutoConnection},
        {events, SIGNAL(nodeDisconnected(Zerlane::Node)), window, SLOT(onNodeDisconnected(Zerlane::Node)), Qt::AutoConnection},
        {events, SIGNAL(newFrame(BufferData*)), window, SLOT(onNewFrame(BufferData*)), Qt::AutoConnection},
        {events, SIGNAL(propertyChanged(Zerlane::Device, Zerlane::PropertyBase)), window, SLOT(onPropertyChanged(Zerlane::Device, Zerlane::PropertyBase)), Qt::AutoConnection},
        {events, SIGNAL(propertyChanged(Zerlane::Node, Zerlane::PropertyBase)), window, SLOT(onPropertyChanged(Zerlane::Node, Zerlane::PropertyBase)), Qt::AutoConnection},
        {events, SIGNAL(setStatusMessage(QString, int)), window, SLOT(onSetStatusMessage(QString, int)), Qt::AutoConnection},
        {events, SIGNAL(popup(int, QString)), window, SLOT(onPopup(int, QString)), Qt::BlockingQueuedConnection},
        {worker, SIGNAL(popup(int, QString)), window, SLOT(onPopup(int, QString)), Qt::BlockingQueuedConnection},
        {window, SIGNAL(nodeAdded(NodeData*)), worker, SLOT(onNodeAdded(NodeData*)), Qt::AutoConnection},
        {window, SIGNAL(startStreaming()), worker, SLOT(onStartStreaming()), Qt::AutoConnection},
        {window, SIGNAL(stopStreaming()), worker, SLOT(onStopStreaming()), Qt::AutoConnection},
        {worker, SIGNAL(addBuffer(BufferData*, QPoint, QSize, bool, float, float, float, float, float, float)), window,
         SLOT(onAddBuffer(BufferData*, QPoint, QSize, bool, float, float, float, float, float, float)), Qt::BlockingQueuedConnection},
        {worker, SIGNAL(registerNode(NodeData*)), window, SLOT(onRegisterNode(NodeData*)), Qt::AutoConnection},
        {worker, SIGNAL(controlNode(NodeData*)), window, SLOT(onControlNode(NodeData*)), Qt::AutoConnection},
        {worker, SIGNAL(jobDone(NodeData*)), window, SLOT(onJobDone(NodeData*)), Qt::AutoConnection},
        {worker, SIGNAL(streamingStarted(bool)), window, SLOT(onStreamingStarted(bool)), Qt::AutoConnection},
        {worker, SIGNAL(streamingStopped(bool)), window, SLOT(onStreamingStopped(bool)), Qt::AutoConnection},
        {window, SIGNAL(startRecording(QString)), recorder, SLOT(onStartRecording(QString)), Qt::AutoConnection},
        {window, SIGNAL(stopRecording()), recorder, SLOT(onStopRecording()), Qt::AutoConnection},
        {window, SIGNAL(newRecordedFrame()), recorder, SLOT(onNewFrame()), Qt::AutoConnection},
        {window, SIGNAL(newRecordedFrame()), recorder, SLOT(onNewFrameIncTotalFrameCount()), Qt::DirectConnection},
        // Emitted on the GUI thread while the window offers a frame under the buffer's lock: queued, so
        // that the warning box does not run its event loop inside that frame.
        {recorder, SIGNAL(forceStopRecording(QString)), window, SLOT(onForceStopRecording(QString)), Qt::QueuedConnection},
        {recorder, SIGNAL(updateRecordingInfo(bool, unsigned int, unsigned int)), window,
         SLOT(onUpdateRecordingInfo(bool, unsigned int, unsigned int)), Qt::AutoConnection},
    };
    QList<QMetaObject::Connection> connections;
    for (const Row& row : table)
        connections.append(QObject::connect(row.sender, row.signal, row.receiver, row.slot, row.type));
    return connections;
}
