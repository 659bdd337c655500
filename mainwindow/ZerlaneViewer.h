#pragma once

#include "Zerlane/Zerlane.h"
#include "app/shared/Singleton.h"
#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/CameraManagerListener.h"
#include "mainwindow/ViewStatistics.h"

#include <QMainWindow>
#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QTimer>

#include <memory>

class BufferDisplayWidget;
class CameraManager;
class DeviceTreeModel;
class QLabel;
class RecordActions;
class StandardDeviationDisplayWidget;
class InfoContext;
class InfoWidget;
class ViewContext;
namespace Ui {
class ZerlaneViewerClass;
}

// The application's main window: device tree, view area and info panel; streaming, registration and
// control actions; the status icon, statistics and recording state.
//
// It is where the program decides: the tree and the view area report selections, drops and views
// opening and closing; the camera manager reports what it changed through CameraManagerListener; the
// window turns these into rows, check marks, views and calls on the manager.
class ZerlaneViewer : public QMainWindow, public Singleton<ZerlaneViewer>, public CameraManagerListener {
    Q_OBJECT

public:
    ~ZerlaneViewer() override;

    // The status icon's state text: "Stopped", "Streaming" or "Frozen".
    QString streamingStatusText() const;
    // The node record of the tree's selection (a buffer's node), or null.
    NodeData* currentNode() const { return m_currentNode; }

    // CameraManagerListener.
    void registrationChanged(DeviceNodeBufferData* record) override;
    void controlChanged(DeviceNodeBufferData* record) override;
    void propertySet(DeviceNodeBufferData* record) override;
    void configurationChanged(NodeData* node) override;
    void showWarning(const QString& text) override;

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
    void on_actionDepthPalette_triggered();
    void on_actionMirrorView_triggered();
    void on_actionStartNodes_triggered();
    void on_actionPauseNodes_triggered();
    void on_actionStopNodes_triggered();
    void on_actionRegisterNode_triggered();
    void on_actionControlNode_triggered();
    void on_actionRegisterDevice_triggered();
    void on_actionControlDevice_triggered();
    void on_actionAbout_triggered();
    void on_actionPreferences_triggered();
    void on_actionExportCurrentFrame_triggered();
    void on_actionExportPointCloud_triggered();
    void on_actionExportSnapshot_triggered();
    void on_treeView_doubleClicked(const QModelIndex& index);
    void on_actionRecordQvf_triggered();
    void on_actionViewFront_triggered();
    void on_actionViewLeft_triggered();
    void on_actionViewRight_triggered();
    void on_actionViewTop_triggered();
    void on_actionViewBottom_triggered();

    // From the tree and the view area.
    void onSelectedRecordChanged(DeviceNodeBufferData* record);
    void onViewOpened(BufferData* buffer, bool rebuilt);
    void onViewClosing(BufferData* buffer);
    void onRecordDropped(quintptr address);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    friend class Singleton<ZerlaneViewer>;
    ZerlaneViewer();

    void setStatusIcon(const QPixmap& pixmap, const QString& text);
    void restoreWindowGeometry();
    void saveWorkspace();
    bool mirrorView() const;
    // Every buffer record, device by device and node by node; those of them with a view.
    std::vector<BufferData*> allBuffers() const;
    std::vector<BufferData*> shownBuffers() const;
    // Marks exactly the given buffers for recording.
    void markRecordedBuffers(const std::vector<BufferData*>& checked);
    void requestRecordingStop();

    // Records the camera has left: kept, marked disconnected, while in use; otherwise their rows and
    // records go. releaseIfUnused applies the same rule once a use ends (a view closed, a job done):
    // the node first, then its device.
    void removeWhenUnused(NodeData* node);
    void removeWhenUnused(DeviceData* device);
    void releaseIfUnused(NodeData* node);
    void removeRecord(NodeData* node);
    void removeRecord(DeviceData* device);

    // Every open view of the node shows whether the node is registered.
    void showRegistrationOfViews(NodeData* node);
    void applyPresetToActiveView(int preset);
    void showFrame(BufferData* buffer, BufferDisplayWidget* view);
    void rebuildViewsOf(NodeData* node);
    // Every open view of the node shows its new region.
    void showRegionOf(NodeData* node);
    void showDeviationSummary(BufferData* buffer, StandardDeviationDisplayWidget* view);
    // Gives the info pane the width its page needs, taken from the view area.
    void widenInfoPane(int width);
    // A node's configuration property changed: the camera's configuration is stored, without applying
    // it again, and the info panel follows it. False for any other property.
    bool followConfiguration(NodeData* record, const Zerlane::PropertyBase& property);
    template <class Kind, class Configuration>
    void followConfiguration(NodeData* record, Configuration (CameraManager::*stored)(const NodeData*) const,
                             void (CameraManager::*store)(NodeData*, const Configuration&, bool),
                             void (InfoWidget::*show)(NodeData*, const Configuration&, const Configuration&));
    void refreshRows(DeviceNodeBufferData* record);
    static BufferDisplayWidget* viewOf(const BufferData* buffer);

    std::unique_ptr<Ui::ZerlaneViewerClass> ui;
    CameraManager* m_manager;
    DeviceTreeModel* m_treeModel = nullptr;
    std::unique_ptr<ViewContext> m_viewContext;
    std::unique_ptr<InfoContext> m_infoContext;
    bool m_infoPaneSizedByUser = false;
    std::unique_ptr<RecordActions> m_recordActions;
    NodeData* m_currentNode = nullptr;
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
    ViewStatistics m_statistics;
    QPoint m_normalPosition{0, 0};
    QSize m_normalSize{-1, -1};
};
