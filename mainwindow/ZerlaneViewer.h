#pragma once

#include "Zerlane/Zerlane.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <QMap>
#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QTimer>

#include <memory>

class DeviceTreeModel;
class BaseBufferDisplayWidget;
class BufferDisplayWidget;
class MdiArea;
class QLabel;
namespace Ui {
class ZerlaneViewerClass;
}

// The application's main window: device tree, view area and info panel; streaming, registration and
// control actions; the status icon, statistics and recording state.
class ZerlaneViewer : public QMainWindow {
    Q_OBJECT

public:
    static ZerlaneViewer* instance();
    static ZerlaneViewer* existingInstance();
    static void destroyInstance();
    ~ZerlaneViewer() override;

    QAction* actionRegisterNode() const;
    QAction* actionControlNode() const;
    QAction* actionRegisterDevice() const;
    QAction* actionControlDevice() const;
    DeviceTreeModel* treeModel() const { return m_treeModel; }
    bool mirrorView() const;
    // The status icon's state text: "Stopped", "Streaming" or "Frozen".
    QString streamingStatusText() const;
    double eventRate(const NodeData* node) const { return m_eventRates.value(node, 0.0); }

    // Called by the camera manager after registration, control and property operations.
    void updateNodeRegisterAction(bool registered);
    void updateNodeControlAction(bool controlled);
    void updateDeviceRegisterAction(bool registered);
    void updateDeviceControlAction(bool controlled);
    void onPropertySet(DeviceNodeBufferData* record);
    // Every open view of the node learns whether its node is registered now.
    void showRegistrationOfViews(NodeData* node);
    // A view of the buffer was opened or closed (the tree shows shown buffers in bold; a disconnected
    // node goes once its last view has closed).
    void onViewOpened(BufferData* buffer);
    void onViewClosed(BufferData* buffer);
    MdiArea* mdiArea() const;

signals:
    void nodeAdded(NodeData* nodeData);
    void startStreaming();
    void stopStreaming();
    void startRecording(QString filename);
    void stopRecording();
    void newRecordedFrame();

public slots:
    void onNodeConnected(Zerlane::Device device, Zerlane::Node node);
    void onNodeDisconnected(Zerlane::Node node);
    void onDeviceConnected(Zerlane::Device device);
    void onDeviceDisconnected(Zerlane::Device device);
    void onNewFrame(BufferData* bufferData);
    void onPropertyChanged(Zerlane::Device device, Zerlane::PropertyBase property);
    void onPropertyChanged(Zerlane::Node node, Zerlane::PropertyBase property);
    void onPopup(int level, QString msg);
    void onSetStatusMessage(QString message, int timeout);
    void onTimeOut();
    void onAddBuffer(BufferData* bufferData, QPoint pos, QSize size, bool maximized, float x, float y, float z,
                     float distance, float pan, float tilt);
    void onRegisterNode(NodeData* nodeData);
    void onControlNode(NodeData* nodeData);
    void onJobDone(NodeData* nodeData);
    void onStreamingStarted(bool ok);
    void onStreamingStopped(bool ok);
    void onForceStopRecording(QString reason);
    void onUpdateRecordingInfo(bool isRecording, unsigned int recordedFrameCount, unsigned int totalFrameCount);
    // Re-evaluates the enabled state of the actions that depend on the selection and streaming state.
    void updateActions();

private slots:
    void on_actionQuit_triggered();
    void on_actionMirrorView_triggered();
    void on_actionStartNodes_triggered();
    void on_actionPauseNodes_triggered();
    void on_actionStopNodes_triggered();
    void on_actionRegisterNode_triggered();
    void on_actionControlNode_triggered();
    void on_actionRegisterDevice_triggered();
    void on_actionControlDevice_triggered();
    void on_actionAbout_triggered();
    void on_treeView_doubleClicked(const QModelIndex& index);
    void on_actionViewFront_triggered();
    void on_actionViewLeft_triggered();
    void on_actionViewRight_triggered();
    void on_actionViewTop_triggered();
    void on_actionViewBottom_triggered();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    ZerlaneViewer();

    void setStatusIcon(const QPixmap& pixmap, const QString& text);
    void markNotYetAvailable(QAction* action, const QString& what);
    void restoreWindowGeometry();
    void saveWorkspace();
    void removeIfUnused(NodeData* node);
    void removeIfUnused(DeviceData* device);
    void applyPresetToActiveView(int preset);
    void showFrame(BufferData* buffer, BufferDisplayWidget* view);
    QString unavailableText(BufferData* buffer) const;
    void updateAvailability(BufferData* buffer) const;
    void rebuildViewsOf(NodeData* node);
    static BufferDisplayWidget* viewOf(const BufferData* buffer);

    std::unique_ptr<Ui::ZerlaneViewerClass> ui;
    DeviceTreeModel* m_treeModel = nullptr;
    QLabel* m_statusIcon = nullptr;
    QLabel* m_recordingLabel = nullptr;
    QString m_statusText;
    QPixmap m_stoppedPixmap;
    QPixmap m_frozenPixmap;
    QPixmap m_streamingPixmap;
    QPixmap m_recordPixmap;
    QPixmap m_stopRecordPixmap;
    bool recordingPending = false;
    bool recording = false;
    QTimer m_statisticsTimer;
    QElapsedTimer m_statisticsClock;
    QMap<const NodeData*, double> m_eventRates;
    QPoint m_normalPosition{0, 0};
    QSize m_normalSize{-1, -1};
};
