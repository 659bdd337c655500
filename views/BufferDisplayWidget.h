#pragma once

#include "views/BaseBufferDisplayWidget.h"

#include <memory>

class DisplayWidget;
class NodeData;
class QMouseEvent;
class ViewContext;
namespace Ui {
class BufferDisplayWidgetClass;
}

// The view of every buffer but the standard deviation one: the OpenGL display and, under it, the
// frame's times, dropped frames and acceleration, refreshed by the main window.
class BufferDisplayWidget : public BaseBufferDisplayWidget {
    Q_OBJECT

public:
    explicit BufferDisplayWidget(QWidget* parent = nullptr);
    ~BufferDisplayWidget() override;

    // What the display draws with (not owned); set before the view is shown.
    void setViewContext(ViewContext* context);

    void refresh() override;
    void repaintDisplay() override;
    void clearRepaintCount() override;
    void reset() override;
    void setBuffer(BufferData* buffer) override;
    void setInteractiveInfo(const QString& text, const QColor& color) override;
    void showRegistrationState() override;
    void requestReload() override;
    bool isThreeDimensional() const override;
    void setInfo(const QString& text) override;

    // Times relative to the reference time, in microseconds.
    void setTimeOfCapture(qint64 time);
    void setTimeOfArrival(qint64 time);
    void setTimeOfEvent(qint64 time);
    void setTimeOfDisplay(qint64 time);
    void setDroppedFrames(int count);
    void setTotalDroppedFrames(int count);
    void setAcceleration(float x, float y, float z);

    void setCamera(float x, float y, float z, float distance, float pan, float tilt);
    void getCamera(float* x, float* y, float* z, float* distance, float* pan, float* tilt) const;
    void applyPreset(int preset);

    DisplayWidget* displayWidget() const;
    QString interactiveInfo() const;
    QString info() const;

    static QString accelerationText(float x, float y, float z);

signals:
    // The user changed the region of interest of the view's node: its other views show it too.
    void regionChanged(NodeData* node);

protected:
    // Region selection in flat views: drag out a rectangle of image pixels, double-click to clear it.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void reserveReadoutRoom();
    void updateReadout();
    // Flat views of images (not audio, not the statistics) choose regions.
    bool selectsRegions() const;
    // The image pixel under a point of this widget (mirror followed), not clamped to the image.
    QPoint imagePixelAt(QPointF position, QSize* image) const;
    // The statistics start over for a region being drawn, and their view redraws from scratch.
    void markStatisticsChanged(bool emptyRing);

    std::unique_ptr<Ui::BufferDisplayWidgetClass> ui;
    BufferData* m_buffer = nullptr;
    QPoint m_regionStart; // image pixel where the region drag began
};
