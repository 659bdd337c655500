#pragma once

#include "views/BaseBufferDisplayWidget.h"

#include <memory>

class DisplayWidget;
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

private:
    void updateReadout();

    std::unique_ptr<Ui::BufferDisplayWidgetClass> ui;
    BufferData* m_buffer = nullptr;
};
