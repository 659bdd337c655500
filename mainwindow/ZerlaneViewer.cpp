#include "mainwindow/ZerlaneViewer.h"

#include "ui_ZerlaneViewer.h"

#include "app/shared/StartupOptions.h"
#include "app/shared/ViewerLog.h"
#include "app/shared/YuvConverter.h"
#include "camera/BufferAvailability.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "camera/DeviationSummary.h"
#include "camera/RecordUtils.h"
#include "camera/StandardDeviationHistory.h"
#include "events/CameraManager.h"
#include "info/CameraInfoContext.h"
#include "mainwindow/FrameExport.h"
#include "mainwindow/QvfRecordingDialog.h"
#include "mainwindow/RecordActions.h"
#include "palettes/DepthPalette.h"
#include "palettes/DepthPaletteSelectionDialog.h"
#include "tree/DeviceTreeModel.h"
#include "views/BufferDisplayWidget.h"
#include "views/BufferSubWindow.h"
#include "views/CameraViewContext.h"
#include "views/DisplayWidget.h"
#include "views/MdiArea.h"
#include "views/StandardDeviationDisplayWidget.h"
#include "widgets/AboutDialog.h"
#include "widgets/PreferencesDialog.h"
#include "widgets/ZRMessageBox.h"
#include "worker/Settings.h"
#include "worker/WorkingThread.h"

#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QScreen>
#include <QLabel>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>

using Zerlane::Utils::Format;


ZerlaneViewer::ZerlaneViewer()
    : ui(std::make_unique<Ui::ZerlaneViewerClass>())
    , m_manager(CameraManager::instance())
{
    ui->setupUi(this);
    ui->actionDepthPalette->setVisible(StartupOptions::showHidden());

    m_treeModel = new DeviceTreeModel(m_manager);
    m_treeModel->setParent(this);
    ui->treeView->setModel(m_treeModel);
    ui->treeView->setDragEnabled(true);
    ui->treeView->setNodeActions({ui->actionRegisterNode, ui->actionControlNode});
    connect(ui->treeView, &DeviceTreeView::selectedRecordChanged, this, &ZerlaneViewer::onSelectedRecordChanged);
    m_recordActions = std::make_unique<RecordActions>(ui->actionRegisterNode, ui->actionControlNode,
                                                      ui->actionRegisterDevice, ui->actionControlDevice);

    // What the views draw with: read once here and kept by the manager, never per paint.
    m_manager->setDisplayPreferences(Settings::displayPreferences());
    m_viewContext = std::make_unique<CameraViewContext>(m_manager);
    ui->mdiArea->setViewContext(m_viewContext.get());
    m_infoContext = std::make_unique<CameraInfoContext>(m_manager, WorkingThread::instance());
    ui->widgetInfo->setContext(m_infoContext.get());
    // A larger window gives the views more room; the side panes keep their widths.
    ui->splitter->setStretchFactor(0, 0);
    ui->splitter->setStretchFactor(1, 1);
    ui->splitter->setStretchFactor(2, 0);
    connect(ui->splitter, &QSplitter::splitterMoved, this, [this] { m_infoPaneSizedByUser = true; });
    connect(ui->widgetInfo, &InfoWidget::contentWidthWanted, this, &ZerlaneViewer::widenInfoPane);
    connect(ui->mdiArea, &MdiArea::viewOpened, this, &ZerlaneViewer::onViewOpened);
    connect(ui->mdiArea, &MdiArea::viewClosing, this, &ZerlaneViewer::onViewClosing);
    connect(ui->mdiArea, &MdiArea::recordDropped, this, &ZerlaneViewer::onRecordDropped);
    connect(ui->mdiArea, &QMdiArea::subWindowActivated, this, &ZerlaneViewer::updateActions);

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
    m_recordingLabel->setObjectName("recordingLabel");
    m_recordingLabel->setEnabled(false);
    ui->statusbar->addPermanentWidget(m_recordingLabel);
    ui->actionRecordQvf->setVisible(false);

    connect(ui->actionCascade, &QAction::triggered, ui->mdiArea, &QMdiArea::cascadeSubWindows);
    connect(ui->actionTile, &QAction::triggered, ui->mdiArea, &MdiArea::tileSubWindows);

    if (Settings::autoSaveWorkspace())
        restoreWindowGeometry();

    m_statisticsTimer.setInterval(1000);
    connect(&m_statisticsTimer, &QTimer::timeout, this, &ZerlaneViewer::onTimeOut);
    m_statisticsTimer.start();
    m_statistics.restart();

    YuvConverter::initTables();
}

ZerlaneViewer::~ZerlaneViewer()
{
    // Views close with the window: nothing may report to it any more.
    disconnect(ui->mdiArea, nullptr, this, nullptr);
    if (CameraManager* manager = CameraManager::existingInstance())
        manager->setMainWindow(nullptr);
}

namespace {

// A saved geometry brought onto `area`: no larger than it, and with at least a corner of a title bar
// inside it, whatever the settings file says.
QSize fittedSize(const QSize& size, const QSize& area)
{
    return size.boundedTo(area).expandedTo(QSize(1, 1));
}

QPoint fittedPosition(const QPoint& position, const QRect& area)
{
    const int x = std::clamp(position.x(), area.left(), std::max(area.left(), area.right() - 100));
    const int y = std::clamp(position.y(), area.top(), std::max(area.top(), area.bottom() - 50));
    return {x, y};
}

} // namespace

void ZerlaneViewer::restoreWindowGeometry()
{
    const QRect screenArea = screen() ? screen()->availableGeometry() : QRect(0, 0, 1280, 800);
    const QPoint position = Settings::workspacePos();
    if (position != QPoint(0, 0))
        move(fittedPosition(position, screenArea));
    const QSize size = Settings::workspaceSize();
    if (size.width() >= 0 && size.height() >= 0)
        resize(fittedSize(size, screenArea.size()));
    if (Settings::workspaceIsMaximized())
        setWindowState(windowState() | Qt::WindowMaximized);
}

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

// ---- Told by the camera manager ----------------------------------------------------------------------

void ZerlaneViewer::refreshRows(DeviceNodeBufferData* record)
{
    m_treeModel->refreshRecord(record);
    if (record->kind() == DeviceNodeBufferData::KindDevice) {
        for (NodeData* node : static_cast<DeviceData*>(record)->nodes)
            m_treeModel->refreshRecord(node);
    }
}

void ZerlaneViewer::registrationChanged(DeviceNodeBufferData* record)
{
    refreshRows(record);
    m_recordActions->showRegistration(record);
    if (record->kind() == DeviceNodeBufferData::KindNode)
        showRegistrationOfViews(static_cast<NodeData*>(record));
}

void ZerlaneViewer::controlChanged(DeviceNodeBufferData* record)
{
    refreshRows(record);
    m_recordActions->showControl(record);
}

void ZerlaneViewer::propertySet(DeviceNodeBufferData*)
{
    updateActions();
}

void ZerlaneViewer::configurationChanged(NodeData*)
{
    // Applied by the worker: the actions are re-evaluated on this window's thread.
    QMetaObject::invokeMethod(this, &ZerlaneViewer::updateActions, Qt::QueuedConnection);
}

void ZerlaneViewer::showWarning(const QString& text)
{
    if (QThread::currentThread() == thread())
        ZRMessageBox::warning(text);
    else
        QMetaObject::invokeMethod(this, [text] { ZRMessageBox::warning(text); }, Qt::QueuedConnection);
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

void ZerlaneViewer::updateActions()
{
    // A frame can be exported only while paused: then the buffers hold still what the views show.
    const bool frozenDepthFrame = m_currentNode && m_manager->streamingState() == CameraManager::Frozen
                                  && m_currentNode->dataReceived && m_currentNode->node.is<Zerlane::DepthNode>();
    ui->actionExportCurrentFrame->setEnabled(frozenDepthFrame);
    ui->actionExportPointCloud->setEnabled(frozenDepthFrame);
    ui->actionExportSnapshot->setEnabled(ui->mdiArea->activeSubWindow() != nullptr);
}

// ---- The tree's selection -----------------------------------------------------------------------------

void ZerlaneViewer::widenInfoPane(int width)
{
    // Once the user has placed the splitter, the pane keeps the width given to it.
    if (m_infoPaneSizedByUser)
        return;
    QList<int> sizes = ui->splitter->sizes();
    if (sizes.size() != 3 || sizes[2] >= width)
        return;
    sizes[1] = std::max(0, sizes[1] - (width - sizes[2]));
    sizes[2] = width;
    ui->splitter->setSizes(sizes);
}

void ZerlaneViewer::onSelectedRecordChanged(DeviceNodeBufferData* record)
{
    if (!record) {
        m_currentNode = nullptr;
        ui->widgetInfo->showNothing();
    } else {
        // Pending configuration edits of the node shown until now are offered before anything changes.
        ui->widgetInfo->askToApplyPendingChanges();
        m_currentNode = nodeOf(record);
        if (m_currentNode)
            ui->widgetInfo->showNode(m_currentNode);
        else if (DeviceData* device = deviceOf(record))
            ui->widgetInfo->showDevice(device);
    }
    m_recordActions->showSelection(record);
    updateActions();
}

void ZerlaneViewer::on_actionRegisterNode_triggered()
{
    if (NodeData* node = nodeOf(ui->treeView->selectedRecord()))
        m_manager->registerNode(node, !node->registered);
}

void ZerlaneViewer::on_actionControlNode_triggered()
{
    NodeData* node = nodeOf(ui->treeView->selectedRecord());
    if (!node)
        return;
    m_manager->controlNode(node, !node->controlled);
    ui->widgetInfo->showNode(node); // its editors change between read-only and editable
}

void ZerlaneViewer::on_actionRegisterDevice_triggered()
{
    if (DeviceData* device = deviceOf(ui->treeView->selectedRecord()))
        m_manager->registerDevice(device, !device->registered);
}

void ZerlaneViewer::on_actionControlDevice_triggered()
{
    DeviceNodeBufferData* record = ui->treeView->selectedRecord();
    DeviceData* device = deviceOf(record);
    if (!device)
        return;
    m_manager->controlDevice(device, !device->controlled);
    if (NodeData* node = nodeOf(record))
        ui->widgetInfo->showNode(node);
    else
        ui->widgetInfo->showDevice(device);
}

// ---- Views opening and closing ------------------------------------------------------------------

void ZerlaneViewer::onViewOpened(BufferData* buffer, bool rebuilt)
{
    m_manager->addDisplayedBuffer(buffer);
    if (BufferDisplayWidget* view = viewOf(buffer)) {
        view->displayWidget()->setMirror(mirrorView());
        connect(view, &BufferDisplayWidget::regionChanged, this, &ZerlaneViewer::showRegionOf, Qt::UniqueConnection);
    }
    m_treeModel->refreshRecord(buffer);
    if (!rebuilt)
        m_manager->switchMapOn(buffer);
}

void ZerlaneViewer::onViewClosing(BufferData* buffer)
{
    m_manager->removeDisplayedBuffer(buffer);
    if (!buffer->reopening)
        m_manager->switchMapOff(buffer);
    m_treeModel->refreshRecord(buffer);
    releaseIfUnused(buffer->node);
}

void ZerlaneViewer::onRecordDropped(quintptr address)
{
    // Only a buffer record of this process is opened: the address is looked up, never trusted.
    BufferData* buffer = m_manager->findBuffer(address);
    if (buffer && !buffer->subWindow)
        ui->mdiArea->openView(buffer);
}

// ---- Devices and nodes ------------------------------------------------------------------------------

void ZerlaneViewer::onDeviceConnected(Zerlane::Device device)
{
    DeviceData* record = m_manager->addDevice(device);
    m_treeModel->insertItem(m_manager->deviceCount(), record, QModelIndex());
    if (Settings::autoExpandDevices())
        ui->treeView->expand(m_treeModel->indexOf(record));
}

void ZerlaneViewer::onNodeConnected(Zerlane::Device device, Zerlane::Node node)
{
    NodeData* record = m_manager->addNode(device, node);
    if (!record)
        return;
    m_treeModel->insertItem(record->position, record, m_treeModel->indexOf(record->device));
    if (Settings::autoExpandNodes())
        ui->treeView->expand(m_treeModel->indexOf(record));
    if (Settings::autoSaveWorkspace()) {
        record->incrementActive(); // held until the worker's jobDone
        emit nodeAdded(record);
    }
}

void ZerlaneViewer::removeRecord(NodeData* node)
{
    if (m_currentNode == node)
        m_currentNode = nullptr;
    try {
        m_treeModel->removeItem(node->position, m_treeModel->indexOf(node->device));
    } catch (const Zerlane::Exception&) {
        // the camera is gone already; the record is out of the lists either way
    }
}

void ZerlaneViewer::removeRecord(DeviceData* device)
{
    if (m_currentNode && m_currentNode->device == device)
        m_currentNode = nullptr;
    try {
        m_treeModel->removeItem(device->position, QModelIndex());
    } catch (const Zerlane::Exception&) {
    }
}

void ZerlaneViewer::removeWhenUnused(NodeData* node)
{
    if (!CameraManager::isInUse(node)) {
        removeRecord(node);
        return;
    }
    // Kept until its last view closes; the views say that nothing comes any more.
    node->disconnected = true;
    for (BufferData* buffer : node->buffers) {
        if (BufferDisplayWidget* view = viewOf(buffer))
            view->setInteractiveInfo("Not streaming", QColor(0, 0, 0, 255));
    }
}

void ZerlaneViewer::removeWhenUnused(DeviceData* device)
{
    if (!CameraManager::isInUse(device)) {
        removeRecord(device);
        return;
    }
    device->disconnected = true;
    const std::vector<NodeData*> nodes = device->nodes; // removing a node changes the list
    for (NodeData* node : nodes)
        removeWhenUnused(node);
}

void ZerlaneViewer::releaseIfUnused(NodeData* node)
{
    DeviceData* device = node->device;
    if (node->disconnected && !CameraManager::isInUse(node))
        removeRecord(node);
    if (device && device->disconnected && !CameraManager::isInUse(device))
        removeRecord(device);
}

void ZerlaneViewer::onNodeDisconnected(Zerlane::Node node)
{
    if (NodeData* record = m_manager->findNode(node))
        removeWhenUnused(record);
    updateActions();
}

void ZerlaneViewer::onDeviceDisconnected(Zerlane::Device device)
{
    DeviceData* record = m_manager->findDevice(device);
    if (!record)
        return;
    bool overheated = false;
    try {
        overheated = device.getOverheated();
    } catch (const Zerlane::Exception&) {
    }
    if (overheated)
        ZRMessageBox::warning("Device disconnected due to overheating");
    removeWhenUnused(record);
    updateActions();
}

void ZerlaneViewer::onJobDone(NodeData* nodeData)
{
    nodeData->decrementActive();
    ui->widgetInfo->jobDone(nodeData);
    releaseIfUnused(nodeData);
}

void ZerlaneViewer::onRegisterNode(NodeData* nodeData)
{
    m_manager->registerNode(nodeData, true);
}

void ZerlaneViewer::onControlNode(NodeData* nodeData)
{
    m_manager->controlNode(nodeData, true);
}

// ---- Frames, properties, messages -------------------------------------------------------------------

void ZerlaneViewer::onNewFrame(BufferData* bufferData)
{
    // While frozen the cameras keep delivering, but nothing new is shown.
    if (m_manager->streamingState() != CameraManager::Streaming)
        return;
    bufferData->unavailable = BufferAvailability::isUnavailable(bufferData);
    BufferDisplayWidget* view = viewOf(bufferData);
    if (!view)
        return;
    if (bufferData->unavailable)
        view->setInteractiveInfo(BufferAvailability::unavailableText(bufferData), QColor(0, 0, 0, 255));
    else
        showFrame(bufferData, view);
}

void ZerlaneViewer::showFrame(BufferData* buffer, BufferDisplayWidget* view)
{
    if (buffer->node->node.is<Zerlane::DepthNode>()) {
        const Zerlane::DepthNode::Acceleration a = static_cast<DepthNodeData*>(buffer->node)->acceleration();
        view->setAcceleration(a.x, a.y, a.z);
    }
    {
        QMutexLocker lock(&buffer->dataMutex);
        const int slot = buffer->readSlot();
        if (buffer->timeOfArrival[slot] == 0)
            return; // right after the first sample the reader's slot has not been written yet
        view->setTimeOfCapture(m_manager->relativeTime(buffer->timeOfCapture[slot]));
        view->setTimeOfArrival(m_manager->relativeTime(buffer->timeOfArrival[slot]));
        view->setTimeOfEvent(m_manager->relativeTime(buffer->timeOfEvent[slot]));
        view->setDroppedFrames(int(buffer->droppedFrames[slot]));
        view->setTotalDroppedFrames(int(buffer->totalDroppedFrames[slot]));
        if (recording && buffer->recorded)
            emit newRecordedFrame();
    }
    if (!buffer->notRegisteredShown && buffer->resetPending[buffer->readSlot()]) {
        buffer->resetPending[0] = false;
        buffer->resetPending[1] = false;
        view->reset();
    }
    view->refresh();
}

void ZerlaneViewer::onPropertyChanged(Zerlane::Device device, Zerlane::PropertyBase property)
{
    try {
        ui->widgetInfo->devicePropertyChanged(device, property);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not refresh property : %") % e.getMessage());
    }
}

void ZerlaneViewer::onPropertyChanged(Zerlane::Node node, Zerlane::PropertyBase property)
{
    try {
        NodeData* record = m_manager->findNode(node);
        if (!record)
            return;
        if (!followConfiguration(record, property))
            ui->widgetInfo->nodePropertyChanged(node, property);
        const std::string name = property.isSet() ? property.name() : std::string();
        if (name == "depthMap3Planes" || name == "depthMapFloatingPoint3Planes")
            rebuildViewsOf(record);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::warning(Format("Could not refresh property : %") % e.getMessage());
    }
}

bool ZerlaneViewer::followConfiguration(NodeData* record, const Zerlane::PropertyBase& property)
{
    if (property.is<Zerlane::Property<Zerlane::DepthNode::Configuration>>())
        followConfiguration<Zerlane::DepthNode>(record, &CameraManager::depthConfiguration,
                                                &CameraManager::setDepthConfiguration, &InfoWidget::depthConfigurationChanged);
    else if (property.is<Zerlane::Property<Zerlane::ColorNode::Configuration>>())
        followConfiguration<Zerlane::ColorNode>(record, &CameraManager::colorConfiguration,
                                                &CameraManager::setColorConfiguration, &InfoWidget::colorConfigurationChanged);
    else if (property.is<Zerlane::Property<Zerlane::AudioNode::Configuration>>())
        followConfiguration<Zerlane::AudioNode>(record, &CameraManager::audioConfiguration,
                                                &CameraManager::setAudioConfiguration, &InfoWidget::audioConfigurationChanged);
    else
        return false;
    return true;
}

template <class Kind, class Configuration>
void ZerlaneViewer::followConfiguration(NodeData* record, Configuration (CameraManager::*stored)(const NodeData*) const,
                                        void (CameraManager::*store)(NodeData*, const Configuration&, bool),
                                        void (InfoWidget::*show)(NodeData*, const Configuration&, const Configuration&))
{
    // The camera has applied it already: it is remembered, not applied again.
    const Configuration previous = (m_manager->*stored)(record);
    const Configuration configuration = Kind(record->node).getConfiguration();
    (m_manager->*store)(record, configuration, false);
    (ui->widgetInfo->*show)(record, configuration, previous);
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

void ZerlaneViewer::showRegionOf(NodeData* node)
{
    for (BufferData* buffer : node->buffers) {
        if (BufferDisplayWidget* view = viewOf(buffer)) {
            view->clearRepaintCount();
            view->repaintDisplay();
        }
    }
}

void ZerlaneViewer::showDeviationSummary(BufferData* buffer, StandardDeviationDisplayWidget* view)
{
    DeviationSummary summary;
    {
        QMutexLocker lock(&buffer->dataMutex);
        const int slot = buffer->readSlot();
        summary = DeviationSummary::of(reinterpret_cast<const float*>(buffer->data[slot]),
                                       size_t(buffer->width[slot]) * buffer->height[slot]);
    }
    const auto* node = static_cast<const DepthNodeData*>(buffer->node);
    view->showSummary(summary, node->historyCount.load(), unsigned(m_manager->displayPreferences().sdNumFrames));
    view->showRegion(summary.empty ? RegionOfInterest() : node->roi());
    view->refresh();
}

void ZerlaneViewer::onTimeOut()
{
    m_statistics.closeInterval(m_manager->nodes());
    for (BufferData* buffer : m_manager->displayedBuffers()) {
        BufferDisplayWidget* view = viewOf(buffer);
        if (!view)
            continue;
        if (auto* deviation = qobject_cast<StandardDeviationDisplayWidget*>(view))
            showDeviationSummary(buffer, deviation);
        const QString line = m_statistics.takeViewLine(buffer, view->displayWidget()->repaintCount());
        view->clearRepaintCount();
        const bool nodeListed = buffer->node && m_manager->findNode(buffer->node->node);
        view->setInfo(nodeListed ? line : QString("- No Info -"));
    }
    m_statistics.restart();
}

void ZerlaneViewer::onAddBuffer(BufferData* bufferData, QPoint pos, QSize size, bool maximized, float x, float y,
                                float z, float distance, float pan, float tilt)
{
    if (bufferData->subWindow)
        return;
    // The area passes a maximised state on to a view opened after it; a restored view that was not
    // maximised hands it back.
    QMdiSubWindow* maximisedBefore = ui->mdiArea->activeSubWindow();
    if (maximisedBefore && !maximisedBefore->isMaximized())
        maximisedBefore = nullptr;
    BufferSubWindow* window = ui->mdiArea->openView(bufferData);
    if (maximisedBefore && !maximized) {
        window->showNormal();
        ui->mdiArea->setActiveSubWindow(maximisedBefore);
        maximisedBefore->showMaximized();
    }
    // A size that is not one (negative, empty) keeps the view's own.
    if (size.width() > 0 && size.height() > 0)
        window->resize(size.boundedTo(QSize(16384, 16384)));
    window->move(fittedPosition(pos, ui->mdiArea->viewport()->rect()));
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
    for (BufferData* buffer : m_manager->displayedBuffers()) {
        if (BufferDisplayWidget* view = viewOf(buffer))
            view->reset();
    }
    for (NodeData* node : m_manager->nodes()) {
        node->dataReceived = false;
        if (node->node.is<Zerlane::DepthNode>())
            StandardDeviationHistory::requestReset(*static_cast<DepthNodeData*>(node));
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
    m_manager->setStreamingState(CameraManager::Frozen);
    setStatusIcon(m_frozenPixmap, "Frozen");
    updateActions();
}

void ZerlaneViewer::on_actionStopNodes_triggered()
{
    emit stopStreaming();
}

// ---- Recording ----------------------------------------------------------------------------------

std::vector<BufferData*> ZerlaneViewer::allBuffers() const
{
    std::vector<BufferData*> buffers;
    for (DeviceData* device : m_manager->devices()) {
        for (NodeData* node : device->nodes)
            buffers.insert(buffers.end(), node->buffers.begin(), node->buffers.end());
    }
    return buffers;
}

std::vector<BufferData*> ZerlaneViewer::shownBuffers() const
{
    std::vector<BufferData*> shown;
    for (BufferData* buffer : allBuffers()) {
        if (buffer->subWindow)
            shown.push_back(buffer);
    }
    return shown;
}

void ZerlaneViewer::markRecordedBuffers(const std::vector<BufferData*>& checked)
{
    // Only compared: a record of the dialog's that went meanwhile marks nothing.
    for (BufferData* buffer : allBuffers())
        buffer->recorded = std::find(checked.begin(), checked.end(), buffer) != checked.end();
}

// The action stays disabled until the recording thread confirms the change (onUpdateRecordingInfo).
void ZerlaneViewer::requestRecordingStop()
{
    recordingPending = true;
    recording = false;
    ui->actionRecordQvf->setEnabled(false);
    emit stopRecording();
}

void ZerlaneViewer::on_actionRecordQvf_triggered()
{
    if (recording) {
        requestRecordingStop();
        return;
    }
    QvfRecordingDialog dialog(shownBuffers(), this);
    if (dialog.exec() != QDialog::Accepted) {
        if (!recordingPending)
            ui->actionRecordQvf->setEnabled(true);
        return;
    }
    markRecordedBuffers(dialog.checkedBuffers());
    recordingPending = true;
    recording = true;
    emit startRecording(dialog.fileName());
    ui->actionRecordQvf->setEnabled(false);
}

void ZerlaneViewer::onForceStopRecording(QString reason)
{
    requestRecordingStop();
    ZRMessageBox::warning(QString("Recording must be stopped: %1").arg(reason));
}

void ZerlaneViewer::onUpdateRecordingInfo(bool isRecording, unsigned int recordedFrameCount, unsigned int totalFrameCount)
{
    ui->actionRecordQvf->setIcon(QIcon(isRecording ? m_stopRecordPixmap : m_recordPixmap));
    if (!ui->actionRecordQvf->isEnabled() && recording == isRecording) {
        recordingPending = false;
        if (!m_manager->displayedBuffers().empty())
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

void ZerlaneViewer::on_actionDepthPalette_triggered()
{
    // Held while the dialog compares its palettes with it; the views take the new one from the next frame.
    const std::shared_ptr<const DepthPalette> current = m_manager->palette();
    DepthPaletteSelectionDialog dialog(current.get(), this);
    connect(&dialog, &DepthPaletteSelectionDialog::paletteChosen, this,
            [this](const DepthPalette& palette) { m_manager->setPalette(palette); });
    dialog.exec();
}

void ZerlaneViewer::on_actionMirrorView_triggered()
{
    for (BufferData* buffer : m_manager->displayedBuffers()) {
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

void ZerlaneViewer::on_actionAbout_triggered()
{
    AboutDialog dialog(this);
    dialog.exec();
}

// ---- Export ---------------------------------------------------------------------------------------

namespace {

// The warning for an export that did not write its whole file; nothing for one that did.
void reportExport(FrameExport::Result result, const QString& fileName)
{
    switch (result) {
    case FrameExport::Result::Written:
        break;
    case FrameExport::Result::NotCreated:
        ZRMessageBox::warning(QString("Could not create file %1").arg(fileName));
        break;
    case FrameExport::Result::WriteFailed:
        ZRMessageBox::warning(QString("Could not write all of file %1: the disk may be full").arg(fileName));
        break;
    case FrameExport::Result::NothingToWrite:
        ZRMessageBox::warning("The paused frame holds no floating-point vertices: open a \"Vertices Floating "
                              "Point\" view, start and pause again");
        break;
    }
}

} // namespace

void ZerlaneViewer::on_actionExportCurrentFrame_triggered()
{
    NodeData* node = m_currentNode;
    if (!node)
        return;
    const QString fileName =
        QFileDialog::getSaveFileName(this, "Export current frame", FrameExport::defaultCsvName(), "CSV files (*.csv)");
    if (fileName.isEmpty())
        return;
    reportExport(FrameExport::writeCsv(fileName, node, m_manager), fileName);
}

void ZerlaneViewer::on_actionExportPointCloud_triggered()
{
    NodeData* node = m_currentNode;
    if (!node)
        return;
    const QString name = QString("cloud-%1.ply").arg(QDateTime::currentDateTime().toString("yyyyMMdd-hhmmss"));
    const QString fileName = QFileDialog::getSaveFileName(this, "Export point cloud", name, "PLY files (*.ply)");
    if (fileName.isEmpty())
        return;
    const quint32 unmapped = m_manager->displayPreferences().nonMappedUvPixelsColor;
    reportExport(FrameExport::writePly(fileName, node, m_manager, unmapped), fileName);
}

void ZerlaneViewer::on_actionExportSnapshot_triggered()
{
    QMdiSubWindow* active = ui->mdiArea->activeSubWindow();
    auto* view = active ? qobject_cast<BufferDisplayWidget*>(active->widget()) : nullptr;
    if (!view)
        return;
    const QImage picture = view->displayWidget()->snapshot();
    if (picture.isNull()) {
        ZRMessageBox::warning("The view has no picture to save yet");
        return;
    }
    const QString name = QString("view-%1.png").arg(QDateTime::currentDateTime().toString("yyyyMMdd-hhmmss"));
    const QString fileName = QFileDialog::getSaveFileName(this, "Save view snapshot", name, "PNG images (*.png)");
    if (fileName.isEmpty())
        return;
    if (!picture.save(fileName, "PNG"))
        ZRMessageBox::warning(QString("Could not create file %1").arg(fileName));
}

void ZerlaneViewer::on_actionPreferences_triggered()
{
    PreferencesDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // What the samples and paints use is taken from the store once, here; the rest is read where used.
    m_manager->setDisplayPreferences(Settings::displayPreferences());
    for (BufferData* buffer : m_manager->displayedBuffers()) {
        if (BufferDisplayWidget* view = viewOf(buffer))
            view->displayWidget()->update();
    }
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
    if (Settings::autoSaveWorkspace()) {
        saveWorkspace();
        Settings::sync();
    }
}

void ZerlaneViewer::saveWorkspace()
{
    Settings::clearWorkspace();
    const bool maximized = isMaximized();
    Settings::setWorkspacePos(maximized ? m_normalPosition : pos());
    Settings::setWorkspaceSize(maximized ? m_normalSize : QSize(frameGeometry().width(), frameGeometry().height()));
    Settings::setWorkspaceIsMaximized(maximized);
    for (DeviceData* device : m_manager->devices()) {
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
