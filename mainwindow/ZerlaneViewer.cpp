#include "mainwindow/ZerlaneViewer.h"

#include "ui_ZerlaneViewer.h"

#include "app/StartupOptions.h"
#include "app/YuvConverter.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/StandardDeviationHistory.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "tree/DeviceTreeModel.h"
#include "widgets/AboutDialog.h"
#include "widgets/ZRMessageBox.h"
#include "worker/Settings.h"

#include <QCloseEvent>
#include <QLabel>
#include <QRecursiveMutex>
#include <QMutexLocker>

using Zerlane::Utils::Format;
using Zerlane::Utils::HMLogger;

namespace {

// Recursive: building the window selects in the tree, which asks for the (not yet existing) instance.
QRecursiveMutex instanceMutex;
ZerlaneViewer* theInstance = nullptr;

void logWarning(const std::string& message)
{
    if (HMLogger* logger = HMLogger::instance()) {
        logger->warning(message);
        logger->release();
    }
}

bool isConfigurationProperty(const Zerlane::PropertyBase& property)
{
    return property.is<Zerlane::Property<Zerlane::DepthNode::Configuration>>()
        || property.is<Zerlane::Property<Zerlane::ColorNode::Configuration>>()
        || property.is<Zerlane::Property<Zerlane::AudioNode::Configuration>>();
}

} // namespace

ZerlaneViewer* ZerlaneViewer::instance()
{
    QMutexLocker lock(&instanceMutex);
    if (!theInstance)
        theInstance = new ZerlaneViewer();
    return theInstance;
}

ZerlaneViewer* ZerlaneViewer::existingInstance()
{
    QMutexLocker lock(&instanceMutex);
    return theInstance;
}

void ZerlaneViewer::destroyInstance()
{
    ZerlaneViewer* window = nullptr;
    {
        QMutexLocker lock(&instanceMutex);
        window = theInstance;
        theInstance = nullptr;
    }
    delete window;
}

ZerlaneViewer::ZerlaneViewer()
    : ui(std::make_unique<Ui::ZerlaneViewerClass>())
{
    ui->setupUi(this);
    ui->actionDepthPalette->setVisible(StartupOptions::showHidden());

    CameraManager* manager = CameraManager::instance();
    m_treeModel = new DeviceTreeModel(manager);
    m_treeModel->setParent(this);
    manager->setTreeModel(m_treeModel);
    ui->treeView->setModel(m_treeModel);
    ui->treeView->setInfoWidget(ui->widgetInfo);
    ui->treeView->setDragEnabled(true);
    ZerlaneThread::instance()->setTreeView(ui->treeView);

    ui->actionStartNodes->setShortcut(QKeySequence(Qt::Key_F5));
    ui->actionPauseNodes->setShortcut(QKeySequence(Qt::Key_F6));
    ui->actionStopNodes->setShortcut(QKeySequence(Qt::Key_F7));
    ui->actionRegisterNode->setShortcut(QKeySequence(Qt::Key_F9));
    ui->actionControlNode->setShortcut(QKeySequence(Qt::Key_F10));
    ui->actionRegisterDevice->setShortcut(QKeySequence(Qt::Key_F11));
    ui->actionControlDevice->setShortcut(QKeySequence(Qt::Key_F12));
    for (QAction* action : {ui->actionRegisterNode, ui->actionControlNode, ui->actionRegisterDevice, ui->actionControlDevice})
        action->setEnabled(true);

    m_stoppedPixmap = QPixmap(":/images/status-stop.png");
    m_frozenPixmap = QPixmap(":/images/status-frozen.png");
    m_streamingPixmap = QPixmap(":/images/status-play.png");
    m_recordPixmap = QPixmap(":/images/export-qvf.png");
    m_stopRecordPixmap = QPixmap(":/images/stop-export-qvf.png");

    m_statusIcon = new QLabel(this);
    setStatusIcon(m_stoppedPixmap, "Stopped");
    ui->toolBar->insertWidget(ui->actionStartNodes, m_statusIcon);
    ui->toolBar->insertSeparator(ui->actionStartNodes);

    m_recordingLabel = new QLabel(" Not Recording ", this);
    m_recordingLabel->setEnabled(false);
    ui->statusbar->addPermanentWidget(m_recordingLabel);
    ui->actionRecordQvf->setVisible(false);

    connect(ui->actionCascade, &QAction::triggered, ui->mdiArea, &QMdiArea::cascadeSubWindows);
    connect(ui->actionTile, &QAction::triggered, ui->mdiArea, &QMdiArea::tileSubWindows);

    // Parts of the window that later versions fill in say so instead of doing nothing.
    markNotYetAvailable(ui->actionExportCurrentFrame, "Current frame export");
    markNotYetAvailable(ui->actionDepthPalette, "The palette dialog");
    markNotYetAvailable(ui->actionPreferences, "The preferences dialog");
    for (QAction* action : {ui->actionViewFront, ui->actionViewLeft, ui->actionViewRight, ui->actionViewTop, ui->actionViewBottom})
        markNotYetAvailable(action, "3D camera presets");

    if (Settings::autoSaveWorkspace())
        restoreWindowGeometry();

    m_statisticsTimer.setInterval(1000);
    connect(&m_statisticsTimer, &QTimer::timeout, this, &ZerlaneViewer::onTimeOut);
    m_statisticsTimer.start();
    m_statisticsClock.start();

    YuvConverter::initTables();
}

ZerlaneViewer::~ZerlaneViewer()
{
    if (CameraManager* manager = CameraManager::existingInstance()) {
        manager->setTreeModel(nullptr);
        manager->setMainWindow(nullptr);
    }
    if (ZerlaneThread* thread = ZerlaneThread::existingInstance())
        thread->setTreeView(nullptr);
}

void ZerlaneViewer::markNotYetAvailable(QAction* action, const QString& what)
{
    action->setEnabled(false);
    action->setToolTip(QString("%1 is not available in this version").arg(what));
}

void ZerlaneViewer::restoreWindowGeometry()
{
    const QPoint position = Settings::workspacePos();
    if (position != QPoint(0, 0))
        move(position);
    const QSize size = Settings::workspaceSize();
    if (size.width() >= 0 && size.height() >= 0)
        resize(size);
    if (Settings::workspaceIsMaximized())
        setWindowState(windowState() | Qt::WindowMaximized);
}

QAction* ZerlaneViewer::actionRegisterNode() const { return ui->actionRegisterNode; }
QAction* ZerlaneViewer::actionControlNode() const { return ui->actionControlNode; }
QAction* ZerlaneViewer::actionRegisterDevice() const { return ui->actionRegisterDevice; }
QAction* ZerlaneViewer::actionControlDevice() const { return ui->actionControlDevice; }

bool ZerlaneViewer::mirrorView() const
{
    return ui->actionMirrorView->isChecked();
}

QString ZerlaneViewer::streamingStatusText() const
{
    return m_statusText;
}

void ZerlaneViewer::setStatusIcon(const QPixmap& pixmap, const QString& text)
{
    m_statusIcon->setPixmap(pixmap);
    m_statusIcon->setToolTip(text);
    m_statusText = text;
}

// ---- Called by the camera manager -------------------------------------------------------------------

void ZerlaneViewer::updateNodeRegisterAction(bool registered)
{
    ui->actionRegisterNode->setChecked(registered);
}

void ZerlaneViewer::updateNodeControlAction(bool controlled)
{
    ui->actionControlNode->setChecked(controlled);
}

void ZerlaneViewer::updateDeviceRegisterAction(bool registered)
{
    ui->actionRegisterDevice->setChecked(registered);
}

void ZerlaneViewer::updateDeviceControlAction(bool controlled)
{
    ui->actionControlDevice->setChecked(controlled);
}

void ZerlaneViewer::onPropertySet(DeviceNodeBufferData*)
{
    updateActions();
}

void ZerlaneViewer::showRegistrationOfViews(NodeData*)
{
    // Buffer views come with the view area; until then no view can show a registration state.
}

void ZerlaneViewer::updateActions()
{
    // The only action that depends on the selection and the streaming state is the current frame
    // export, which is not available in this version and stays disabled.
}

// ---- Devices and nodes ------------------------------------------------------------------------------

void ZerlaneViewer::onDeviceConnected(Zerlane::Device device)
{
    DeviceData* record = CameraManager::instance()->addDevice(device);
    if (record && Settings::autoExpandDevices())
        ui->treeView->expand(m_treeModel->indexOf(record));
}

void ZerlaneViewer::onNodeConnected(Zerlane::Device device, Zerlane::Node node)
{
    NodeData* record = CameraManager::instance()->addNode(device, node);
    if (!record)
        return;
    if (Settings::autoExpandNodes())
        ui->treeView->expand(m_treeModel->indexOf(record));
    if (Settings::autoSaveWorkspace()) {
        record->incrementActive(); // held until the worker's jobDone
        emit nodeAdded(record);
    }
}

void ZerlaneViewer::removeIfUnused(NodeData* node)
{
    if (CameraManager::isInUse(node)) {
        node->disconnected = true;
        return;
    }
    try {
        CameraManager::instance()->removeNode(node);
    } catch (const Zerlane::Exception&) {
        // the camera is gone already; the record is out of the lists either way
    }
}

void ZerlaneViewer::removeIfUnused(DeviceData* device)
{
    if (CameraManager::isInUse(device)) {
        device->disconnected = true;
        for (NodeData* node : device->nodes)
            node->disconnected = true;
        return;
    }
    try {
        CameraManager::instance()->removeDevice(device);
    } catch (const Zerlane::Exception&) {
    }
}

void ZerlaneViewer::onNodeDisconnected(Zerlane::Node node)
{
    if (NodeData* record = CameraManager::instance()->findNode(node))
        removeIfUnused(record);
    updateActions();
}

void ZerlaneViewer::onDeviceDisconnected(Zerlane::Device device)
{
    DeviceData* record = CameraManager::instance()->findDevice(device);
    if (!record)
        return;
    bool overheated = false;
    try {
        overheated = device.getOverheated();
    } catch (const Zerlane::Exception&) {
    }
    if (overheated)
        ZRMessageBox::warning("Device disconnected due to overheating");
    removeIfUnused(record);
    updateActions();
}

void ZerlaneViewer::onJobDone(NodeData* nodeData)
{
    DeviceData* device = nodeData->device;
    nodeData->decrementActive();
    if (nodeData->disconnected && !CameraManager::isInUse(nodeData))
        CameraManager::instance()->removeNode(nodeData);
    if (device && device->disconnected && !CameraManager::isInUse(device))
        CameraManager::instance()->removeDevice(device);
}

void ZerlaneViewer::onRegisterNode(NodeData* nodeData)
{
    CameraManager::instance()->registerNode(nodeData, true);
}

void ZerlaneViewer::onControlNode(NodeData* nodeData)
{
    CameraManager::instance()->controlNode(nodeData, true);
}

// ---- Frames, properties, messages -------------------------------------------------------------------

void ZerlaneViewer::onNewFrame(BufferData* bufferData)
{
    // While frozen the cameras keep delivering, but nothing new is shown; buffers without a view have
    // nothing to show.
    if (CameraManager::instance()->streamingState() != CameraManager::Streaming || !bufferData->subWindow)
        return;
}

void ZerlaneViewer::onPropertyChanged(Zerlane::Device, Zerlane::PropertyBase)
{
    // The device page of the info panel is not built yet: nothing shows device properties.
}

void ZerlaneViewer::onPropertyChanged(Zerlane::Node node, Zerlane::PropertyBase property)
{
    try {
        NodeData* record = CameraManager::instance()->findNode(node);
        if (record && isConfigurationProperty(property))
            CameraManager::instance()->storeReportedConfiguration(record);
    } catch (const Zerlane::Exception& e) {
        logWarning(Format("Could not refresh property : %") % e.getMessage());
    }
}

void ZerlaneViewer::onPopup(int level, QString msg)
{
    if (level == 2)
        ZRMessageBox::warning(msg);
    else if (level == 3)
        ZRMessageBox::error(msg);
}

void ZerlaneViewer::onSetStatusMessage(QString message, int timeout)
{
    ui->statusbar->showMessage(message, timeout);
}

void ZerlaneViewer::onTimeOut()
{
    const qint64 elapsed = std::max<qint64>(1, m_statisticsClock.elapsed());
    const double factor = 1000.0 / double(elapsed);
    for (NodeData* node : CameraManager::instance()->nodes()) {
        m_eventRates[node] = node->sampleCount * factor;
        node->sampleCount = 0;
    }
    m_statisticsClock.restart();
}

void ZerlaneViewer::onAddBuffer(BufferData*, QPoint, QSize, bool, float, float, float, float, float, float)
{
    // Buffer views come with the view area; the workspace restore that asks for them is not built yet.
}

// ---- Streaming --------------------------------------------------------------------------------------

void ZerlaneViewer::onStreamingStarted(bool ok)
{
    if (!ok)
        return;
    setStatusIcon(m_streamingPixmap, "Streaming");
    updateActions();
}

void ZerlaneViewer::onStreamingStopped(bool ok)
{
    if (!ok)
        return;
    for (NodeData* node : CameraManager::instance()->nodes()) {
        node->dataReceived = false;
        if (node->node.is<Zerlane::DepthNode>())
            StandardDeviationHistory::clear(*static_cast<DepthNodeData*>(node));
    }
    setStatusIcon(m_stoppedPixmap, "Stopped");
    updateActions();
}

void ZerlaneViewer::on_actionStartNodes_triggered()
{
    ui->widgetInfo->askToApplyPendingChanges();
    emit startStreaming();
}

void ZerlaneViewer::on_actionPauseNodes_triggered()
{
    CameraManager::instance()->setStreamingState(CameraManager::Frozen);
    setStatusIcon(m_frozenPixmap, "Frozen");
    updateActions();
}

void ZerlaneViewer::on_actionStopNodes_triggered()
{
    emit stopStreaming();
}

// ---- Recording ----------------------------------------------------------------------------------

void ZerlaneViewer::onForceStopRecording(QString reason)
{
    recordingPending = true;
    recording = false;
    ui->actionRecordQvf->setEnabled(false);
    emit stopRecording();
    ZRMessageBox::warning(QString("Recording must be stopped: %1").arg(reason));
}

void ZerlaneViewer::onUpdateRecordingInfo(bool isRecording, unsigned int recordedFrameCount, unsigned int totalFrameCount)
{
    ui->actionRecordQvf->setIcon(QIcon(isRecording ? m_stopRecordPixmap : m_recordPixmap));
    if (!ui->actionRecordQvf->isEnabled() && recording == isRecording) {
        recordingPending = false;
        if (!CameraManager::instance()->displayedBuffers().empty())
            ui->actionRecordQvf->setEnabled(true);
    }
    m_recordingLabel->setEnabled(isRecording);
    m_recordingLabel->setText(isRecording ? QString("Recording %1/%2").arg(recordedFrameCount).arg(totalFrameCount)
                                          : QString(" Not recording"));
}

// ---- Other actions ------------------------------------------------------------------------------

void ZerlaneViewer::on_actionQuit_triggered()
{
    close();
}

void ZerlaneViewer::on_actionMirrorView_triggered()
{
    // The views read the action's state when they paint.
}

void ZerlaneViewer::on_actionRegisterNode_triggered()
{
    ui->treeView->toggleNodeRegistration();
}

void ZerlaneViewer::on_actionControlNode_triggered()
{
    ui->treeView->toggleNodeControl();
}

void ZerlaneViewer::on_actionRegisterDevice_triggered()
{
    ui->treeView->toggleDeviceRegistration();
}

void ZerlaneViewer::on_actionControlDevice_triggered()
{
    ui->treeView->toggleDeviceControl();
}

void ZerlaneViewer::on_actionAbout_triggered()
{
    AboutDialog dialog(this);
    dialog.exec();
}

// ---- Window state and workspace -----------------------------------------------------------------

void ZerlaneViewer::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isMaximized()) {
        m_normalPosition = normalGeometry().topLeft();
        m_normalSize = normalGeometry().size();
    }
}

void ZerlaneViewer::closeEvent(QCloseEvent* event)
{
    QMainWindow::closeEvent(event);
    if (Settings::autoSaveWorkspace())
        saveWorkspace();
}

void ZerlaneViewer::saveWorkspace()
{
    Settings::clearWorkspace();
    const bool maximized = isMaximized();
    Settings::setWorkspacePos(maximized ? m_normalPosition : pos());
    Settings::setWorkspaceSize(maximized ? m_normalSize : QSize(frameGeometry().width(), frameGeometry().height()));
    Settings::setWorkspaceIsMaximized(maximized);
    for (DeviceData* device : CameraManager::instance()->devices()) {
        const int deviceNumber = Settings::writeDevice(device);
        for (NodeData* node : device->nodes)
            Settings::writeNode(node, deviceNumber);
    }
}
