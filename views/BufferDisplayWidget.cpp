#include "views/BufferDisplayWidget.h"

#include "ui_BufferDisplayWidget.h"

#include "Zerlane/Zerlane.h"
#include "app/shared/TextUtils.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/NodeData.h"
#include "camera/StandardDeviationHistory.h"
#include "views/DisplayWidget.h"
#include "views/PixelReadout.h"
#include "widgets/TextColor.h"
#include "worker/Settings.h"

#include <QMouseEvent>
#include <QMutexLocker>

#include <algorithm>

BufferDisplayWidget::BufferDisplayWidget(QWidget* parent)
    : BaseBufferDisplayWidget(parent)
    , ui(std::make_unique<Ui::BufferDisplayWidgetClass>())
{
    ui->setupUi(this);
    connect(ui->displayWidget, &DisplayWidget::displayed, this, &BufferDisplayWidget::setTimeOfDisplay);
    connect(ui->displayWidget, &DisplayWidget::pointerChanged, this, &BufferDisplayWidget::refresh);
    connect(ui->displayWidget, &DisplayWidget::cameraChanged, this, &BufferDisplayWidget::refresh);
    reserveReadoutRoom();
}

// The readout wraps: a 3D camera line, or a region being selected, is wider than the smallest view.
// The room its longest lines take at that width is kept from the start, so that a longer line neither
// squeezes the labels under the display nor is squeezed out of sight itself.
void BufferDisplayWidget::reserveReadoutRoom()
{
    QLabel* label = ui->interactiveInfoLabel;
    const QRect widthOfSmallestView(0, 0, ui->displayWidget->minimumWidth(), QWIDGETSIZE_MAX);
    int height = 0;
    for (const QString& longest : {PixelReadout::cameraText(-88.88f, -88.88f, -88.88f, 888.88f, -88.88f, -888.88f),
                                   PixelReadout::roiSelectionText(8888, 8888, 8888, 8888)})
        height = std::max(height, label->fontMetrics().boundingRect(widthOfSmallestView, Qt::TextWordWrap, longest).height());
    label->setMinimumHeight(height);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

BufferDisplayWidget::~BufferDisplayWidget() = default;

void BufferDisplayWidget::setViewContext(ViewContext* context)
{
    ui->displayWidget->setContext(context);
}

DisplayWidget* BufferDisplayWidget::displayWidget() const
{
    return ui->displayWidget;
}

void BufferDisplayWidget::refresh()
{
    updateReadout();
    ui->displayWidget->update();
}

void BufferDisplayWidget::repaintDisplay()
{
    ui->displayWidget->update();
}

void BufferDisplayWidget::clearRepaintCount()
{
    ui->displayWidget->clearRepaintCount();
}

void BufferDisplayWidget::reset()
{
    if (m_buffer)
        ui->displayWidget->setBuffer(m_buffer); // forgets what was uploaded of both slots
    refresh();
}

void BufferDisplayWidget::setBuffer(BufferData* buffer)
{
    m_buffer = buffer;
    ui->displayWidget->setBuffer(buffer);
    const bool depthNode = buffer && buffer->node && buffer->node->node.is<Zerlane::DepthNode>();
    if (!depthNode) {
        ui->accelerationTitleLabel->hide();
        ui->accelerationLabel->hide();
    }
}

void BufferDisplayWidget::setInteractiveInfo(const QString& text, const QColor& color)
{
    ui->interactiveInfoLabel->setText(text);
    setTextColor(ui->interactiveInfoLabel, color);
}

void BufferDisplayWidget::showRegistrationState()
{
    if (!m_buffer)
        return;
    if (m_buffer->node->registered) {
        m_buffer->notRegisteredShown = false;
        setInteractiveInfo(QString(), QColor(0, 0, 0, 255));
    } else {
        m_buffer->notRegisteredShown = true;
        setInteractiveInfo("Node not registered", QColor(255, 0, 0));
        reset();
    }
}

void BufferDisplayWidget::requestReload()
{
    ui->displayWidget->setReload(true);
}

bool BufferDisplayWidget::isThreeDimensional() const
{
    return ui->displayWidget->is3D();
}

void BufferDisplayWidget::setInfo(const QString& text)
{
    ui->labelInfo->setText(text);
}

QString BufferDisplayWidget::interactiveInfo() const
{
    return ui->interactiveInfoLabel->text();
}

QString BufferDisplayWidget::info() const
{
    return ui->labelInfo->text();
}

void BufferDisplayWidget::setTimeOfCapture(qint64 time)
{
    ui->timeOfCaptureLabel->setText(timeText(time));
}

void BufferDisplayWidget::setTimeOfArrival(qint64 time)
{
    ui->timeOfArrivalLabel->setText(timeText(time));
}

void BufferDisplayWidget::setTimeOfEvent(qint64 time)
{
    ui->timeOfEventLabel->setText(timeText(time));
}

void BufferDisplayWidget::setTimeOfDisplay(qint64 time)
{
    ui->timeOfDisplayLabel->setText(timeText(time));
}

void BufferDisplayWidget::setDroppedFrames(int count)
{
    ui->droppedFramesLabel->setText(QString("%1").arg(count));
}

void BufferDisplayWidget::setTotalDroppedFrames(int count)
{
    ui->totalDroppedFramesLabel->setText(QString("%1").arg(count));
}

QString BufferDisplayWidget::accelerationText(float x, float y, float z)
{
    auto field = [](float v) { return QString("%1").arg(double(v), -5, 'f', 3); };
    return QString("%1 %2 %3").arg(field(x), field(y), field(z));
}

void BufferDisplayWidget::setAcceleration(float x, float y, float z)
{
    ui->accelerationLabel->setText(accelerationText(x, y, z));
}

void BufferDisplayWidget::setCamera(float x, float y, float z, float distance, float pan, float tilt)
{
    ui->displayWidget->setCamera(x, y, z, distance, pan, tilt);
}

void BufferDisplayWidget::getCamera(float* x, float* y, float* z, float* distance, float* pan, float* tilt) const
{
    ui->displayWidget->camera(x, y, z, distance, pan, tilt);
}

void BufferDisplayWidget::applyPreset(int preset)
{
    if (!isThreeDimensional())
        return;
    ui->displayWidget->loadCameraPreset(preset);
    ui->displayWidget->clearRepaintCount();
    ui->displayWidget->update();
}

void BufferDisplayWidget::updateReadout()
{
    if (!m_buffer || m_buffer->notRegisteredShown)
        return;
    const QColor black(0, 0, 0, 255);
    DisplayWidget* display = ui->displayWidget;
    if (display->is3D()) {
        float x, y, z, distance, pan, tilt;
        display->camera(&x, &y, &z, &distance, &pan, &tilt);
        setInteractiveInfo(PixelReadout::cameraText(x, y, z, distance, tilt, pan), black);
        return;
    }
    if (!display->mouseInside()) {
        setInteractiveInfo(QString(), black);
        return;
    }
    if (display->selecting() && m_buffer->node) {
        const RegionOfInterest roi = m_buffer->node->roi();
        setInteractiveInfo(PixelReadout::roiSelectionText(roi.x, roi.y, roi.width, roi.height), black);
        return;
    }
    QMutexLocker lock(&m_buffer->dataMutex);
    const int slot = m_buffer->readSlot();
    const QSize image(int(m_buffer->width[slot]), int(m_buffer->height[slot]));
    if (image.isEmpty())
        return;
    const QPoint pixel = DisplayWidget::widgetToImage(display->mousePosition(), display->size(), image, display->mirror());
    setInteractiveInfo(PixelReadout::pixelText(m_buffer, slot, pixel.x(), pixel.y()), black);
}

// ---- Region of interest ----------------------------------------------------------------------------

bool BufferDisplayWidget::selectsRegions() const
{
    return m_buffer && m_buffer->node && !ui->displayWidget->is3D() && m_buffer->type != BufferData::Audio
           && m_buffer->type != BufferData::StandardDeviation;
}

QPoint BufferDisplayWidget::imagePixelAt(QPointF position, QSize* image) const
{
    {
        QMutexLocker lock(&m_buffer->dataMutex);
        const int slot = m_buffer->readSlot();
        *image = QSize(int(m_buffer->width[slot]), int(m_buffer->height[slot]));
    }
    DisplayWidget* display = ui->displayWidget;
    const QPoint inDisplay = display->mapFrom(this, position.toPoint());
    return DisplayWidget::widgetToImage(inDisplay, display->size(), *image, display->mirror());
}

void BufferDisplayWidget::markStatisticsChanged(bool emptyRing)
{
    NodeData* node = m_buffer->node;
    if (!node->node.is<Zerlane::DepthNode>())
        return;
    if (BufferData* deviation = node->buffer(BufferData::StandardDeviation)) {
        deviation->shown = true;
        deviation->displayed = true;
    }
    if (emptyRing)
        StandardDeviationHistory::requestReset(*static_cast<DepthNodeData*>(node));
}

void BufferDisplayWidget::mousePressEvent(QMouseEvent* event)
{
    if (!selectsRegions() || event->button() != Qt::LeftButton) {
        BaseBufferDisplayWidget::mousePressEvent(event);
        return;
    }
    QSize image;
    m_regionStart = imagePixelAt(event->position(), &image);
    ui->displayWidget->setSelecting(true);
    markStatisticsChanged(true);
    updateReadout();
}

void BufferDisplayWidget::mouseMoveEvent(QMouseEvent* event)
{
    DisplayWidget* display = ui->displayWidget;
    if (!display->selecting() || !selectsRegions()) {
        BaseBufferDisplayWidget::mouseMoveEvent(event);
        return;
    }
    QSize image;
    const QPoint pixel = imagePixelAt(event->position(), &image);
    if (image.isEmpty())
        return;
    // Dragged past an edge, the region ends at the last row or column.
    const int x = std::clamp(pixel.x(), 0, image.width() - 1);
    const int y = std::clamp(pixel.y(), 0, image.height() - 1);
    m_buffer->node->setRoi(RegionOfInterest::spanning(m_regionStart.x(), m_regionStart.y(), x, y));
    markStatisticsChanged(false);
    emit regionChanged(m_buffer->node);
    updateReadout();
}

void BufferDisplayWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (!ui->displayWidget->selecting()) {
        BaseBufferDisplayWidget::mouseReleaseEvent(event);
        return;
    }
    ui->displayWidget->setSelecting(false);
    updateReadout();
}

void BufferDisplayWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    // A 3D view has restored its camera already; it clears the region like a flat one.
    const bool clears = m_buffer && m_buffer->node && m_buffer->type != BufferData::Audio
                        && m_buffer->type != BufferData::StandardDeviation;
    if (!clears) {
        BaseBufferDisplayWidget::mouseDoubleClickEvent(event);
        return;
    }
    m_buffer->node->setRoi(RegionOfInterest());
    emit regionChanged(m_buffer->node);
}
