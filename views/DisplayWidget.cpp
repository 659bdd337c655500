#include "views/DisplayWidget.h"

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"
#include "events/AudioWaveform.h"
#include "events/DisplayPreferences.h"
#include "views/ImageRenderer.h"
#include "views/SceneRenderer.h"
#include "views/ViewContext.h"
#include "worker/Settings.h"

#include <Zerlane/DepthNode.h>
#include <Zerlane/Exceptions.h>
#include <Zerlane/Utils/Clock.h>

#include <QMouseEvent>
#include <QOpenGLContext>
#include <QWheelEvent>

#include <GL/gl.h>

#include <cstring>

#ifndef GL_BGR
#define GL_BGR 0x80E0
#endif

namespace {

constexpr const char* kBorderClampExtension = "GL_ARB_texture_border_clamp";

// Locks the buffers lock and then a buffer's mutex, and unlocks them in reverse order.
class PaintLock {
public:
    PaintLock(ViewContext* context, BufferData* buffer) : m_context(context), m_buffer(buffer)
    {
        if (m_context)
            m_context->lockBuffers();
        m_buffer->dataMutex.lock();
    }
    ~PaintLock()
    {
        m_buffer->dataMutex.unlock();
        if (m_context)
            m_context->unlockBuffers();
    }
    PaintLock(const PaintLock&) = delete;
    PaintLock& operator=(const PaintLock&) = delete;

private:
    ViewContext* m_context;
    BufferData* m_buffer;
};

bool isThreePlaneDepth(BufferData* buffer)
{
    if (!buffer->node || !buffer->node->node.is<Zerlane::DepthNode>())
        return false;
    try {
        const Zerlane::DepthNode depth(buffer->node->node);
        if (buffer->type == BufferData::Depth)
            return depth.getDepthMap3Planes();
        return depth.getDepthMapFloatingPoint3Planes();
    } catch (const Zerlane::Exception&) {
        return false; // a node we cannot ask is shown flat
    }
}

} // namespace

DisplayWidget::DisplayWidget(QWidget* parent) : QOpenGLWidget(parent)
{
    setMouseTracking(true);
    // A new 3D view looks at the scene from the front preset, as a double click brings it back to.
    m_camera.place(Settings::cameraTargetX(0), Settings::cameraTargetY(0), Settings::cameraTargetZ(0),
                   Settings::cameraTargetDistance(0), Settings::cameraPan(0), Settings::cameraTilt(0));
}

DisplayWidget::~DisplayWidget()
{
    // The context outlives this part of the object: stop listening before it goes, and free now.
    QObject::disconnect(m_contextConnection);
    releaseGlResources();
}

// ---- buffer and flags ------------------------------------------------------------------------------

void DisplayWidget::setBuffer(BufferData* buffer)
{
    m_buffer = buffer;
    m_is3D = false;
    m_unitScale = 1.f;
    if (buffer) {
        switch (buffer->type) {
        case BufferData::Vertices:
        case BufferData::VerticesFloatingPoint:
        case BufferData::UV:
            m_is3D = true;
            break;
        case BufferData::Depth:
        case BufferData::DepthFloatingPoint:
            m_is3D = isThreePlaneDepth(buffer);
            break;
        default:
            break;
        }
        if (m_is3D && (buffer->type == BufferData::Depth || buffer->type == BufferData::Vertices))
            m_unitScale = 1000.f;
    }
    forgetUploads();
    if (m_is3D && m_axes.unitScale() != m_unitScale)
        m_axes.build(m_unitScale);
    update();
}

void DisplayWidget::forgetUploads()
{
    m_imageTexture.forgetContents();
    m_colourTexture.forgetContents();
}

void DisplayWidget::setMirror(bool mirror)
{
    if (m_mirror == mirror)
        return;
    m_mirror = mirror;
    update();
}

void DisplayWidget::setSelecting(bool selecting)
{
    m_selecting = selecting;
    update();
}

// ---- camera ----------------------------------------------------------------------------------------

QImage DisplayWidget::snapshot()
{
    if (!m_buffer)
        return QImage();
    if (m_is3D)
        return grabFramebuffer();
    const PaintLock lock(m_context, m_buffer);
    const DisplayImage& image = m_buffer->image[m_buffer->readSlot()];
    const bool colour = m_buffer->type == BufferData::Color;
    const QImage view(image.pixels, int(image.width), int(image.height), int(image.width) * (colour ? 3 : 4),
                      colour ? QImage::Format_BGR888 : QImage::Format_RGBA8888);
    QImage picture = view.convertToFormat(QImage::Format_RGB888); // a copy, taken under the lock
    return m_mirror ? picture.mirrored(true, false) : picture;
}

void DisplayWidget::setCamera(float x, float y, float z, float distance, float pan, float tilt)
{
    // Presets and saved views come from the settings file, which may hold anything.
    m_camera.place(x, y, z, distance, pan, tilt);
    emit cameraChanged();
    update();
}

void DisplayWidget::camera(float* x, float* y, float* z, float* distance, float* pan, float* tilt) const
{
    *x = m_camera.x;
    *y = m_camera.y;
    *z = m_camera.z;
    *distance = m_camera.distance;
    *pan = m_camera.pan;
    *tilt = m_camera.tilt;
}

void DisplayWidget::loadCameraPreset(int preset)
{
    setCamera(Settings::cameraTargetX(preset), Settings::cameraTargetY(preset), Settings::cameraTargetZ(preset),
              Settings::cameraTargetDistance(preset), Settings::cameraPan(preset), Settings::cameraTilt(preset));
}

// ---- pure arithmetic -------------------------------------------------------------------------------

QPoint DisplayWidget::widgetToImage(QPoint p, QSize widget, QSize image, bool mirror)
{
    if (widget.width() <= 0 || widget.height() <= 0)
        return {};
    int px = (p.x() * image.width()) / widget.width();
    const int py = (p.y() * image.height()) / widget.height();
    if (mirror)
        px = image.width() - 1 - px;
    return {px, py};
}

QPoint DisplayWidget::imageToWidget(QPoint p, QSize widget, QSize image, bool mirror)
{
    if (image.width() <= 0 || image.height() <= 0)
        return {};
    const int x = mirror ? image.width() - 1 - p.x() : p.x();
    return {(widget.width() * x) / image.width(), (widget.height() * p.y()) / image.height()};
}

bool DisplayWidget::hasExtension(const char* extensions, const char* name)
{
    if (!extensions || !name || !*name)
        return false;
    const size_t length = std::strlen(name);
    for (const char* at = std::strstr(extensions, name); at; at = std::strstr(at + 1, name)) {
        const bool startsToken = at == extensions || at[-1] == ' ';
        const bool endsToken = at[length] == ' ' || at[length] == '\0';
        if (startsToken && endsToken)
            return true;
    }
    return false;
}

// ---- GL set-up -------------------------------------------------------------------------------------

void DisplayWidget::watchContext()
{
    QObject::disconnect(m_contextConnection);
    m_contextConnection = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this,
                                  &DisplayWidget::releaseGlResources, Qt::DirectConnection);
}

void DisplayWidget::releaseGlResources()
{
    if (!m_imageTexture.isCreated() && !m_colourTexture.isCreated())
        return;
    if (context() && context()->isValid()) {
        makeCurrent();
        m_imageTexture.destroy();
        m_colourTexture.destroy();
        doneCurrent();
    } else {
        m_imageTexture.abandon();
        m_colourTexture.abandon();
    }
}

void DisplayWidget::ensureTextures()
{
    const bool uv = m_buffer && m_buffer->type == BufferData::UV;
    if (uv && !m_colourTexture.isCreated()) {
        m_colourTexture.create(true, m_borderClamp);
    }
    if (!m_imageTexture.isCreated())
        m_imageTexture.create(false, false);
}

void DisplayWidget::initializeGL()
{
    watchContext();
    m_borderClamp = hasExtension(reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS)), kBorderClampExtension);
    if (m_disabled)
        return;
    glClearColor(0.f, 0.f, 0.f, 1.f);
    if (m_is3D)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glEnable(GL_TEXTURE_2D);
    // A context made for this widget starts without our textures, whatever we held before.
    m_imageTexture.abandon();
    m_colourTexture.abandon();
    ensureTextures();
    m_imageTexture.bind();
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glEnable(GL_LIGHT0);
}

void DisplayWidget::resizeGL(int w, int h)
{
    if (m_disabled)
        return;
    m_width = w;
    m_height = h;
    applyProjection();
}

// The projection of the view. Set again on every paint: the widget composites through its own
// framebuffer, and matrices are not guaranteed to survive between resizeGL and paintGL.
void DisplayWidget::applyProjection()
{
    const qreal ratio = devicePixelRatio();
    glViewport(0, 0, GLsizei(m_width * ratio), GLsizei(m_height * ratio));
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    if (m_is3D) {
        const float nearDistance = ViewCamera::nearPlane(m_unitScale);
        const float top = nearDistance * ViewCamera::TopPerNear;
        const float right = top * ViewCamera::Aspect;
        glFrustum(-right, right, -top, top, nearDistance, ViewCamera::farPlane(m_unitScale));
        glRotatef(180.f, 1.f, 0.f, 0.f);
    } else {
        glOrtho(0, m_width, m_height, 0, 0, 1);
    }
    glMatrixMode(GL_MODELVIEW);
}

// ---- paint -----------------------------------------------------------------------------------------

bool DisplayWidget::hasPixelData(const BufferData* buffer, int slot)
{
    // frameCount is no help here: the statistics reset it every second.
    return !buffer->sizeChanged[slot];
}

DisplayWidget::SlotState DisplayWidget::slotState(int slot) const
{
    if (m_buffer->type == BufferData::StandardDeviation && m_buffer->node && !m_buffer->node->roi().isSet())
        return SlotState::Idle;
    if (!hasPixelData(m_buffer, slot))
        return SlotState::NoData;
    const DisplayImage& image = m_buffer->image[slot];
    if (isStopped() || (m_buffer->type != BufferData::Audio && (image.width < 1 || image.height < 1)))
        return SlotState::Idle;
    return SlotState::Ready;
}

bool DisplayWidget::isStopped() const
{
    return !m_context || m_context->streamingStopped();
}

void DisplayWidget::clearTo(float r, float g, float b)
{
    glClearColor(r, g, b, 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
}

void DisplayWidget::paintGL()
{
    if (m_disabled)
        return;
    ++m_repaintCount;
    if (m_reload) {
        forgetUploads();
        m_reload = false;
    }
    ensureTextures();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    applyProjection();
    if (!m_buffer) {
        clearTo(1.f, 0.f, 0.f);
        return;
    }
    const DisplayPreferences preferences = m_context ? m_context->preferences() : DisplayPreferences();
    bool drew = false;
    {
        PaintLock lock(m_context, m_buffer);
        drew = m_is3D ? paintScene(preferences) : paintImage(preferences);
    }
    if (drew && m_context)
        emit displayed(m_context->relativeTime(Zerlane::Utils::Clock::now()));
}

bool DisplayWidget::paintImage(const DisplayPreferences& preferences)
{
    const int slot = m_buffer->readSlot();
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    switch (slotState(slot)) {
    case SlotState::NoData:
        clearTo(1.f, 0.f, 0.f);
        return false;
    case SlotState::Idle:
        clearTo(0.5f, 0.5f, 0.5f);
        return false;
    case SlotState::Ready:
        break;
    }
    // The picture, uploaded only when the slot holds a sample this view has not uploaded yet.
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    m_imageTexture.bind();
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    const DisplayImage& image = m_buffer->image[slot];
    if (m_imageTexture.show(image, m_buffer->type == BufferData::Color ? GL_BGR : GL_RGBA))
        ++m_uploadCount;
    ImageRenderer::drawImage(image, m_width, m_height, m_mirror);
    drawOverlays(slot, preferences);
    return true;
}

// Overlays are drawn untextured, so each shows its own colour whatever the image holds.
void DisplayWidget::drawOverlays(int slot, const DisplayPreferences& preferences)
{
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    if (m_buffer->type == BufferData::Audio)
        ImageRenderer::drawMarker(int((qint64(m_buffer->audioMarker[slot]) * m_width) / AudioWaveform::ImageWidth),
                                  m_height);
    else if (m_buffer->type != BufferData::StandardDeviation && m_buffer->node && m_buffer->node->roi().isSet())
        drawRoi(slot, preferences.roiColor);
    if (m_mouseInside && !m_selecting)
        ImageRenderer::drawCrossHair(m_mousePosition, m_width, m_height);
    glDisable(GL_BLEND);
}

void DisplayWidget::drawRoi(int slot, quint32 colour)
{
    const RegionOfInterest roi = m_buffer->node->roi();
    const QSize widget(m_width, m_height);
    const QSize image(int(m_buffer->image[slot].width), int(m_buffer->image[slot].height));
    const QPoint a = imageToWidget(QPoint(roi.x, roi.y), widget, image, m_mirror);
    const QPoint b = imageToWidget(QPoint(roi.x + roi.width, roi.y + roi.height), widget, image, m_mirror);
    ImageRenderer::drawRoi(a, b, colour);
}

// ---- 3D --------------------------------------------------------------------------------------------

bool DisplayWidget::paintScene(const DisplayPreferences& preferences)
{
    if (isStopped()) {
        glDisable(GL_DEPTH_TEST);
        clearTo(0.5f, 0.5f, 0.5f);
        return false;
    }
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_LIGHTING);
    applyViewTransform();
    const quint32 background = preferences.backgroundColor;
    glClearColor(float((background >> 16) & 0xFF) / 255.f, float((background >> 8) & 0xFF) / 255.f,
                 float(background & 0xFF) / 255.f, 1.f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    const int slot = m_buffer->readSlot();
    const bool hasData = hasPixelData(m_buffer, slot);
    if (hasData) {
        if (m_buffer->type == BufferData::UV)
            drawUv(slot, preferences);
        else
            drawPoints(slot, preferences);
    }
    if (preferences.displayAxis)
        drawAxes();
    return hasData;
}

void DisplayWidget::applyViewTransform()
{
    if (m_mirror) {
        glMatrixMode(GL_PROJECTION);
        glScalef(-1.f, 1.f, 1.f);
    }
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    const float s = m_unitScale;
    const GLfloat lightPosition[4] = {-0.5f * s, 0.5f * s, -0.5f * s, 1.f};
    glLightfv(GL_LIGHT0, GL_POSITION, lightPosition);
    glEnable(GL_LIGHT0);
    glRotatef(m_camera.tilt, 1.f, 0.f, 0.f);
    glRotatef(m_camera.pan, 0.f, 1.f, 0.f);
    const QVector3D eye = m_camera.eye();
    glTranslatef(-eye.x() * s, -eye.y() * s, -eye.z() * s);
}

void DisplayWidget::drawPoints(int slot, const DisplayPreferences& preferences)
{
    glPointSize(float(preferences.dotSize));
    glColor4f(0.9f, 0.9f, 0.9f, 1.f);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const int count = int(m_buffer->width[slot] * m_buffer->height[slot]);
    const void* data = m_buffer->data[slot];
    switch (m_buffer->type) {
    case BufferData::DepthFloatingPoint:
        SceneRenderer::drawPlanePoints(static_cast<const float*>(data), count);
        break;
    case BufferData::Depth:
        SceneRenderer::drawPlanePoints(static_cast<const int16_t*>(data), count);
        break;
    default:
        SceneRenderer::drawVertexArray(data, m_buffer->type == BufferData::Vertices, count);
        break;
    }
}

BufferData* DisplayWidget::colourBuffer() const
{
    const DeviceData* device = m_buffer->node ? m_buffer->node->device : nullptr;
    return device ? device->colorBuffer() : nullptr;
}

// Binds the colour texture with the colour camera's latest image (uploaded when it changed) and the
// texture matrix that maps 0..1 onto the image part. Returns false when there is no colour image; the
// texture then keeps whatever it held.
bool DisplayWidget::bindColourImage(quint32 border)
{
    m_colourTexture.bind();
    const GLfloat borderColour[4] = {float((border >> 16) & 0xFF) / 255.f, float((border >> 8) & 0xFF) / 255.f,
                                     float(border & 0xFF) / 255.f, 1.f};
    glTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, borderColour);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    BufferData* colour = colourBuffer();
    if (!colour) {
        glMatrixMode(GL_MODELVIEW);
        return false;
    }
    colour->dataMutex.lock();
    const int slot = colour->readSlot();
    const bool hasImage = hasPixelData(colour, slot);
    if (hasImage) {
        const DisplayImage& image = colour->image[slot];
        glScalef(float(image.width) / float(image.textureWidth), float(image.height) / float(image.textureHeight),
                 1.f);
        m_colourTexture.show(image, GL_BGR);
    }
    colour->dataMutex.unlock();
    glMatrixMode(GL_MODELVIEW);
    return hasImage;
}

void DisplayWidget::drawUv(int slot, const DisplayPreferences& preferences)
{
    BufferData* vertices = m_buffer->node ? m_buffer->node->buffer(BufferData::VerticesFloatingPoint) : nullptr;
    glEnable(GL_TEXTURE_2D);
    bindColourImage(preferences.nonMappedUvPixelsColor);
    glColor4f(1.f, 1.f, 1.f, 1.f);
    if (vertices) {
        QMutexLocker lock(&vertices->dataMutex);
        const int vertexSlot = vertices->readSlot();
        const uint32_t w = m_buffer->width[slot], h = m_buffer->height[slot];
        // Positions and texture coordinates must describe the same grid.
        if (hasPixelData(vertices, vertexSlot) && vertices->width[vertexSlot] == w && vertices->height[vertexSlot] == h) {
            const auto* positions = reinterpret_cast<const float*>(vertices->data[vertexSlot]);
            const auto* uv = reinterpret_cast<const float*>(m_buffer->data[slot]);
            if (preferences.displayTriangles) {
                SceneRenderer::drawUvTriangles(positions, uv, int(w), int(h));
            } else {
                glPointSize(float(preferences.dotSize));
                SceneRenderer::drawUvPoints(positions, uv, int(w * h));
            }
        }
    }
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
}

void DisplayWidget::drawAxes()
{
    static const GLfloat red[4] = {1.f, 0.f, 0.f, 1.f};
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glEnable(GL_LIGHTING);
    glMaterialfv(GL_FRONT, GL_AMBIENT, red);
    glMaterialfv(GL_FRONT, GL_DIFFUSE, red);
    m_axes.draw();
    glDisable(GL_LIGHTING);
}

// ---- mouse -----------------------------------------------------------------------------------------

void DisplayWidget::storePointer(QPoint position)
{
    m_mousePosition = position;
    m_mouseInside = rect().contains(position);
    emit pointerChanged();
    update();
}

void DisplayWidget::mousePressEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    m_lastDragPosition = position;
    if (!m_is3D) {
        event->ignore();
        return;
    }
    if (!m_reload && (event->modifiers() & Qt::ShiftModifier))
        pickTarget(position);
    event->accept();
}

void DisplayWidget::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    if (m_is3D && !m_reload) {
        const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        const QPoint delta = position - m_lastDragPosition;
        if (plain && event->buttons() == Qt::LeftButton) {
            m_camera.rotate(delta.x(), delta.y(), height());
            emit cameraChanged();
        } else if (plain && event->buttons() == Qt::RightButton) {
            m_camera.dolly(delta.y(), height());
            emit cameraChanged();
        }
    }
    m_lastDragPosition = position;
    storePointer(position);
    if (!m_is3D)
        event->ignore();
}

void DisplayWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_is3D)
        event->ignore();
}

void DisplayWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!m_is3D) {
        event->ignore();
        return;
    }
    if (!m_reload)
        loadCameraPreset(Settings::Front);
    event->ignore(); // the view around also clears the node's region
}

void DisplayWidget::wheelEvent(QWheelEvent* event)
{
    if (!m_is3D) {
        event->ignore();
        return;
    }
    if (!m_reload) {
        m_camera.wheel(event->angleDelta().y());
        emit cameraChanged();
        update();
    }
}

void DisplayWidget::enterEvent(QEnterEvent* event)
{
    storePointer(event->position().toPoint());
}

void DisplayWidget::leaveEvent(QEvent*)
{
    m_mouseInside = false;
    emit pointerChanged();
    update();
}

// The depth under the pointer, read from the last paint, unprojected with the matrices of that paint.
// A pixel where nothing was drawn (depth 1, the far plane) picks nothing.
void DisplayWidget::pickTarget(QPoint position)
{
    if (!isValid() || m_width <= 0 || m_height <= 0)
        return;
    const qreal ratio = devicePixelRatio();
    const int px = int(position.x() * ratio);
    const int py = int((m_height - 1 - position.y()) * ratio);
    GLfloat depth = 1.f;
    makeCurrent();
    glReadPixels(px, py, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    doneCurrent();
    if (depth >= 1.f)
        return;
    const QRect viewport(0, 0, m_width, m_height);
    const QVector3D point = m_camera.unproject(float(position.x()) + 0.5f, float(m_height - position.y()) - 0.5f,
                                               depth, viewport, m_unitScale, m_mirror);
    m_camera.retarget(point / m_unitScale);
    emit cameraChanged();
    update();
}
