#include "mainwindow/ZerlaneViewer.h"

#include "app/SingletonHolder.h"
#include "ui_ZerlaneViewer.h"

#include "app/StartupOptions.h"
#include "app/ViewerLog.h"
#include "app/YuvConverter.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/StandardDeviationHistory.h"
#include "events/CameraManager.h"
#include "events/ZerlaneThread.h"
#include "tree/DeviceTreeModel.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/DisplayWidget.h"
#include "views/MdiArea.h"
#include "widgets/AboutDialog.h"
#include "widgets/ZRMessageBox.h"
#include "worker/Settings.h"

#include <QCloseEvent>
#include <QLabel>
#include <QRecursiveMutex>
#include <QMutexLocker>

using Zerlane::Utils::Format;

namespace {

SingletonHolder<ZerlaneViewer> holder;

bool isConfigurationProperty(const Zerlane::PropertyBase& property)
{
    return property.is<Zerlane::Property<Zerlane::DepthNode::Configuration>>()
        || property.is<Zerlane::Property<Zerlane::ColorNode::Configuration>>()
        || property.is<Zerlane::Property<Zerlane::AudioNode::Configuration>>();
}

} // namespace

ZerlaneViewer* ZerlaneViewer::instance()
{
    return holder.instance([] { return new ZerlaneViewer(); });
}

ZerlaneViewer* ZerlaneViewer::existingInstance()
{
    return holder.existing();
}

void ZerlaneViewer::destroyInstance()
{
    holder.destroy();
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

void ZerlaneViewer::showRegistrationOfViews(NodeData* node)
{
    for (BufferData* buffer : node->buffers) {
        if (BufferDisplayWidget* view = viewOf(buffer))
            view->showRegistrationState();
    }
}

BufferDisplayWidget* ZerlaneViewer::viewOf(const BufferData* buffer)
{
    return buffer->subWindow ? qobject_cast<BufferDisplayWidget*>(buffer->subWindow->widget()) : nullptr;
}

MdiArea* ZerlaneViewer::mdiArea() const
{
    return ui->mdiArea;
}

void ZerlaneViewer::onViewOpened(BufferData* buffer)
{
    m_treeModel->refreshRecord(buffer);
}

void ZerlaneViewer::onViewClosed(BufferData* buffer)
{
    m_treeModel->refreshRecord(buffer);
    NodeData* node = buffer->node;
    DeviceData* device = node->device;
    if (node->disconnected && !CameraManager::isInUse(node))
        CameraManager::instance()->removeNode(node);
    if (device->disconnected && !CameraManager::isInUse(device))
        CameraManager::instance()->removeDevice(device);
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
        // Kept until its last view closes; the views say that nothing comes any more.
        node->disconnected = true;
        for (BufferData* buffer : node->buffers) {
            if (BufferDisplayWidget* view = viewOf(buffer))
                view->setInteractiveInfo("Not streaming", QColor(0, 0, 0, 255));
        }
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
        const std::vector<NodeData*> nodes = device->nodes; // removing a node changes the list
        for (NodeData* node : nodes)
            removeIfUnused(node);
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
    // While frozen the cameras keep delivering, but nothing new is shown.
    if (CameraManager::instance()->streamingState() != CameraManager::Streaming)
        return;
    updateAvailability(bufferData);
    BufferDisplayWidget* view = viewOf(bufferData);
    if (!view)
        return;
    if (bufferData->unavailable)
        view->setInteractiveInfo(unavailableText(bufferData), QColor(0, 0, 0, 255));
    else
        showFrame(bufferData, view);
}

namespace {

BufferData* bufferOfType(NodeData* node, uint32_t type)
{
    for (BufferData* buffer : node->buffers) {
        if (buffer->type == type)
            return buffer;
    }
    return nullptr;
}

NodeData* colorNodeOf(DeviceData* device)
{
    for (NodeData* node : device->nodes) {
        if (node->node.is<Zerlane::ColorNode>())
            return node;
    }
    return nullptr;
}

} // namespace

void ZerlaneViewer::updateAvailability(BufferData* buffer) const
{
    if (buffer->type != BufferData::UV) {
        buffer->unavailable = buffer->noData;
        return;
    }
    // The UV view needs the node's floating-point vertices and a streaming colour image.
    BufferData* vertices = bufferOfType(buffer->node, BufferData::VerticesFloatingPoint);
    NodeData* color = colorNodeOf(buffer->node->device);
    BufferData* colorMap = color && !color->buffers.empty() ? color->buffers.front() : nullptr;
    buffer->unavailable = buffer->noData || !vertices || vertices->noData || !color || !color->dataReceived
        || !colorMap || colorMap->noData;
}

QString ZerlaneViewer::unavailableText(BufferData* buffer) const
{
    if (buffer->type == BufferData::UV) {
        BufferData* vertices = bufferOfType(buffer->node, BufferData::VerticesFloatingPoint);
        NodeData* color = colorNodeOf(buffer->node->device);
        BufferData* colorMap = color && !color->buffers.empty() ? color->buffers.front() : nullptr;
        if (!color)
            return "Color node not present";
        if (!vertices || vertices->noData)
            return "Vertices Floating Point not streaming";
        if (colorMap && !colorMap->noData && color->dataReceived)
            return "Not streaming";
        return "Color not streaming";
    }
    if (buffer->type == BufferData::StandardDeviation)
        return buffer->node->roiX < 0 ? "No ROI selected" : "Not streaming";
    return "Not streaming";
}

void ZerlaneViewer::showFrame(BufferData* buffer, BufferDisplayWidget* view)
{
    CameraManager* manager = CameraManager::instance();
    if (buffer->node->node.is<Zerlane::DepthNode>()) {
        const Zerlane::DepthNode::Acceleration& a = static_cast<DepthNodeData*>(buffer->node)->acceleration;
        view->setAcceleration(a.x, a.y, a.z);
    }
    {
        QMutexLocker lock(&buffer->dataMutex);
        const int slot = buffer->readSlot();
        if (buffer->timeOfArrival[slot] == 0)
            return; // right after the first sample the reader's slot has not been written yet
        view->setTimeOfCapture(manager->relativeTime(buffer->timeOfCapture[slot]));
        view->setTimeOfArrival(manager->relativeTime(buffer->timeOfArrival[slot]));
        view->setTimeOfEvent(manager->relativeTime(buffer->timeOfEvent[slot]));
        view->setDroppedFrames(int(buffer->droppedFrames[slot]));
        view->setTotalDroppedFrames(int(buffer->totalDroppedFrames[slot]));
        if (recording && buffer->recorded)
            emit newRecordedFrame();
    }
    if (!buffer->notRegisteredShown && buffer->resetPending[buffer->readSlot()]) {
        buffer->resetPending[0] = buffer->resetPending[1] = false;
        view->reset();
    }
    view->refresh();
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
        const std::string name = property.isSet() ? property.name() : std::string();
        if (record && (name == "depthMap3Planes" || name == "depthMapFloatingPoint3Planes"))
            rebuildViewsOf(record);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not refresh property : %") % e.getMessage());
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
    auto rate = [](double value) { return QString("%1").arg(value, 2, 'f', 0); };
    for (BufferData* buffer : CameraManager::instance()->displayedBuffers()) {
        BufferDisplayWidget* view = viewOf(buffer);
        if (!view)
            continue;
        const double frameRate = buffer->frameCount * factor;
        const double paintRate = view->displayWidget()->repaintCount() * factor;
        buffer->frameCount = 0;
        view->clearRepaintCount();
        if (buffer->node && CameraManager::instance()->findNode(buffer->node->node))
            view->setInfo(QString("Frame rate : %1      Event rate : %2      Paint rate : %3")
                              .arg(rate(frameRate), rate(m_eventRates.value(buffer->node, 0.0)), rate(paintRate)));
        else
            view->setInfo("- No Info -");
    }
    m_statisticsClock.restart();
}

void ZerlaneViewer::onAddBuffer(BufferData* bufferData, QPoint pos, QSize size, bool maximized, float x, float y,
                                float z, float distance, float pan, float tilt)
{
    if (bufferData->subWindow)
        return;
    BufferSubWindow* window = ui->mdiArea->openView(bufferData);
    window->resize(size);
    window->move(pos);
    if (maximized)
        window->showMaximized();
    if (auto* view = qobject_cast<BufferDisplayWidget*>(window->widget()))
        view->setCamera(x, y, z, distance, pan, tilt);
}

void ZerlaneViewer::on_treeView_doubleClicked(const QModelIndex& index)
{
    DeviceNodeBufferData* record = DeviceTreeModel::recordOf(index);
    if (record && record->kind() == DeviceNodeBufferData::KindBuffer) {
        auto* buffer = static_cast<BufferData*>(record);
        if (!buffer->subWindow)
            ui->mdiArea->openView(buffer);
    }
}

void ZerlaneViewer::rebuildViewsOf(NodeData* node)
{
    // A depth map switched to or from three planes is drawn in 3D or flat: its view is rebuilt in place.
    for (BufferData* buffer : node->buffers) {
        BufferSubWindow* old = buffer->subWindow;
        if (!old)
            continue;
        if (buffer->type != BufferData::Depth && buffer->type != BufferData::DepthFloatingPoint) {
            old->setWindowTitle(MdiArea::titleFor(buffer));
            continue;
        }
        const QRect geometry = old->geometry();
        const bool maximized = old->isMaximized();
        buffer->reopening = true;
        old->close();
        BufferSubWindow* window = ui->mdiArea->reopenView(buffer);
        window->setGeometry(geometry);
        if (maximized)
            window->showMaximized();
    }
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
    for (BufferData* buffer : CameraManager::instance()->displayedBuffers()) {
        if (BufferDisplayWidget* view = viewOf(buffer))
            view->reset();
    }
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
    for (BufferData* buffer : CameraManager::instance()->displayedBuffers()) {
        if (BufferDisplayWidget* view = viewOf(buffer)) {
            view->displayWidget()->setMirror(mirrorView());
            view->refresh();
        }
    }
}

void ZerlaneViewer::applyPresetToActiveView(int preset)
{
    QMdiSubWindow* active = ui->mdiArea->activeSubWindow();
    if (auto* view = active ? qobject_cast<BufferDisplayWidget*>(active->widget()) : nullptr)
        view->applyPreset(preset);
}

void ZerlaneViewer::on_actionViewFront_triggered() { applyPresetToActiveView(0); }
void ZerlaneViewer::on_actionViewLeft_triggered() { applyPresetToActiveView(1); }
void ZerlaneViewer::on_actionViewRight_triggered() { applyPresetToActiveView(2); }
void ZerlaneViewer::on_actionViewTop_triggered() { applyPresetToActiveView(3); }
void ZerlaneViewer::on_actionViewBottom_triggered() { applyPresetToActiveView(4); }

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
        for (NodeData* node : device->nodes) {
            const int nodeNumber = Settings::writeNode(node, deviceNumber);
            for (BufferData* buffer : node->buffers) {
                BufferSubWindow* window = buffer->subWindow;
                BufferDisplayWidget* view = viewOf(buffer);
                if (!window || !view)
                    continue;
                float x, y, z, distance, pan, tilt;
                view->getCamera(&x, &y, &z, &distance, &pan, &tilt);
                Settings::writeBuffer(buffer, nodeNumber, window->lastNormalPosition(), window->lastNormalSize(),
                                      window->isMaximized(), x, y, z, distance, pan, tilt);
            }
        }
    }
}
