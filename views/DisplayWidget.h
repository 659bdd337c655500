#pragma once

#include "views/AxisMesh.h"
#include "views/BufferTexture.h"
#include "views/ViewCamera.h"

#include <QImage>
#include <QMetaObject>
#include <QOpenGLWidget>
#include <QPoint>
#include <QSize>

class BufferData;
class ViewContext;
struct DisplayPreferences;

// The OpenGL view of one buffer. Flat images (colour, phase, confidence, depth, standard deviation,
// combined, audio) are one textured rectangle that fills the widget, with the ROI, the audio marker
// and a cross-hair drawn over it; point data (vertices, UV, and depth maps delivered as three planes)
// is a 3D scene seen through a camera that the mouse moves.
//
// Painting reads the buffer's read slot while holding the context's buffers lock and then the buffer's
// data mutex. The widget never owns the buffer, and reaches the program only through its ViewContext
// (streaming state, reference time, buffers lock, preferences); without one it draws as if stopped.
// GL resources are freed when the context goes away (re-parenting may give the widget a new one) and
// made again on the next initializeGL or paint.
//
// What a paint shows:
//  - nothing (the disabled flag);
//  - opaque red when the read slot holds no pixel data: the writer has never filled that slot, which
//    the buffer tells by the slot's sizeChanged flag still being set (the writer clears it when it
//    first fills the slot's image). Right after the first sample the read slot is
//    the one not yet written, so a view turns from red to the picture with the second sample;
//  - mid grey while streaming is stopped, for a standard-deviation buffer whose node has no ROI (this
//    case comes first: such a buffer never receives data, and grey says "nothing selected"), or when
//    the slot's image has no pixels (width or height 0, not checked for audio);
//  - otherwise the picture, or in 3D the scene (background and axes only while the slot has no data).
//
// Mouse: in flat views presses, releases and double clicks are left unaccepted, so that the view
// around the widget may handle them (ROI selection); moves are tracked without a button held.
class DisplayWidget : public QOpenGLWidget {
    Q_OBJECT
public:
    explicit DisplayWidget(QWidget* parent = nullptr);
    ~DisplayWidget() override;

    // Not owned; set once, before the widget is shown.
    void setContext(ViewContext* context) { m_context = context; }

    // Stores the buffer (not owned), forgets what was uploaded of it, decides is3D and the unit scale.
    // May be called again with the same buffer.
    void setBuffer(BufferData* buffer);
    BufferData* buffer() const { return m_buffer; }
    bool is3D() const { return m_is3D; }
    float unitScale() const { return m_unitScale; }

    void setDisabled(bool disabled) { m_disabled = disabled; }
    bool isDisabled() const { return m_disabled; }
    void setMirror(bool mirror);
    bool mirror() const { return m_mirror; }
    // Full reload on the next paint (both slots uploaded again); the camera mouse handlers do nothing
    // until that paint.
    void setReload(bool reload) { m_reload = reload; }
    bool reload() const { return m_reload; }
    int repaintCount() const { return m_repaintCount; }
    void clearRepaintCount() { m_repaintCount = 0; }
    int uploadCount() const { return m_uploadCount; }
    bool borderClamp() const { return m_borderClamp; }

    // The camera (degrees). set* repaints.
    void setCamera(float x, float y, float z, float distance, float pan, float tilt);
    void camera(float* x, float* y, float* z, float* distance, float* pan, float* tilt) const;
    void loadCameraPreset(int preset);

    // The picture as the view draws it: a 3D view's framebuffer, or a flat view's image at its own
    // resolution (not scaled to the widget). Null when there is nothing to show.
    QImage snapshot();

    bool mouseInside() const { return m_mouseInside; }
    QPoint mousePosition() const { return m_mousePosition; }
    void setSelecting(bool selecting);
    bool selecting() const { return m_selecting; }

    static QPoint widgetToImage(QPoint p, QSize widget, QSize image, bool mirror);
    static QPoint imageToWidget(QPoint p, QSize widget, QSize image, bool mirror);
    static bool hasExtension(const char* extensions, const char* name);

signals:
    void displayed(qint64 displayTime);
    void pointerChanged();
    // The 3D camera moved: set, loaded from a preset, or moved by the mouse.
    void cameraChanged();

protected:
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    enum class SlotState { NoData, Idle, Ready };

    void releaseGlResources();
    void watchContext();
    void ensureTextures();
    void forgetUploads();
    void applyProjection();

    SlotState slotState(int slot) const;
    static bool hasPixelData(const BufferData* buffer, int slot);
    bool isStopped() const;
    static void clearTo(float r, float g, float b);

    // Flat views.
    bool paintImage(const DisplayPreferences& preferences);
    void drawOverlays(int slot, const DisplayPreferences& preferences);
    void drawRoi(int slot, quint32 colour);

    // 3D views.
    bool paintScene(const DisplayPreferences& preferences);
    void applyViewTransform();
    void drawPoints(int slot, const DisplayPreferences& preferences);
    void drawUv(int slot, const DisplayPreferences& preferences);
    bool bindColourImage(quint32 borderColour);
    void drawAxes();
    BufferData* colourBuffer() const;
    void pickTarget(QPoint position);

    void storePointer(QPoint position);

    ViewContext* m_context = nullptr;
    BufferData* m_buffer = nullptr;
    bool m_is3D = false;
    float m_unitScale = 1.f;
    bool m_disabled = false;
    bool m_mirror = false;
    bool m_reload = false;
    bool m_borderClamp = false;
    int m_repaintCount = 0;
    int m_uploadCount = 0;
    int m_width = 0;  // widget size in pixels, from resizeGL
    int m_height = 0;

    BufferTexture m_imageTexture;
    BufferTexture m_colourTexture; // UV views: the colour camera's image
    QMetaObject::Connection m_contextConnection;
    AxisMesh m_axes;

    ViewCamera m_camera;
    bool m_mouseInside = false;
    bool m_selecting = false;
    QPoint m_mousePosition;
    QPoint m_lastDragPosition;
};
