#include "views/ViewCamera.h"

#include <algorithm>
#include <cmath>

void ViewCamera::eyeFromCamera(float tx, float ty, float tz, float distance, float pan, float tilt, float* ex,
                               float* ey, float* ez)
{
    const float t = tilt * DegreesToRadians;
    const float p = pan * DegreesToRadians;
    *ex = std::cos(t) * distance * std::sin(p) + tx;
    *ey = ty - std::sin(t) * distance;
    *ez = tz - std::cos(t) * distance * std::cos(p);
}

void ViewCamera::cameraFromEye(float tx, float ty, float tz, float ex, float ey, float ez, float* distance,
                               float* pan, float* tilt)
{
    const float dx = tx - ex;
    const float dy = ty - ey;
    const float dz = tz - ez;
    const float d = std::sqrt(dx * dx + dy * dy + dz * dz);
    *distance = d;
    if (d <= 0.f) { // eye on the target: no direction to take the angles from
        *tilt = 0.f;
        *pan = 0.f;
        return;
    }
    // Rounding may take the ratios a hair beyond 1; clamp so the inverse functions stay defined.
    const float t = std::asin(std::clamp(dy / d, -1.f, 1.f));
    *tilt = t * RadiansToDegrees;
    const float c = std::cos(t);
    float p = 0.f;
    if (c >= 0.001f)
        p = std::acos(std::clamp(dz / (c * d), -1.f, 1.f)) * RadiansToDegrees;
    if (dx > 0.f)
        p = 360.f - p;
    *pan = p;
}

QVector3D ViewCamera::eye() const
{
    float ex, ey, ez;
    eyeFromCamera(x, y, z, distance, pan, tilt, &ex, &ey, &ez);
    return {ex, ey, ez};
}

void ViewCamera::retarget(const QVector3D& target)
{
    const QVector3D e = eye();
    x = target.x();
    y = target.y();
    z = target.z();
    cameraFromEye(x, y, z, e.x(), e.y(), e.z(), &distance, &pan, &tilt);
}

float ViewCamera::wrapAngle(float degrees)
{
    if (!std::isfinite(degrees))
        return 0.f;
    degrees = std::fmod(degrees, 360.f);
    if (degrees < 0.f)
        degrees += 360.f;
    return degrees >= 360.f ? 0.f : degrees; // -tiny + 360 rounds to 360
}

namespace {

float finiteOr(float value, float fallback)
{
    return std::isfinite(value) ? value : fallback;
}

} // namespace

void ViewCamera::place(float tx, float ty, float tz, float eyeDistance, float panDegrees, float tiltDegrees)
{
    x = std::clamp(finiteOr(tx, 0.f), -MaximumDistance, MaximumDistance);
    y = std::clamp(finiteOr(ty, 0.f), -MaximumDistance, MaximumDistance);
    z = std::clamp(finiteOr(tz, 0.5f), -MaximumDistance, MaximumDistance);
    distance = std::clamp(finiteOr(eyeDistance, 0.5f), MinimumDistance, MaximumDistance);
    pan = wrapAngle(panDegrees);
    tilt = std::clamp(finiteOr(tiltDegrees, 0.f), -90.f, 90.f);
}

void ViewCamera::rotate(int dx, int dy, int h)
{
    if (h <= 0)
        return;
    pan = wrapAngle(pan - float(dx) * 90.f / float(h));
    tilt = std::clamp(tilt - float(dy) * 90.f / float(h), -90.f, 90.f);
}

void ViewCamera::dolly(int dy, int h)
{
    if (h <= 0)
        return;
    distance = std::max(MinimumDistance, distance + float(dy) * 3.f / float(h));
}

void ViewCamera::wheel(int delta)
{
    distance = std::max(MinimumDistance, distance - float(delta) / 2880.f);
}

float ViewCamera::nearPlane(float unitScale)
{
    return unitScale > 1.f ? 10.f : 0.01f;
}

float ViewCamera::farPlane(float unitScale)
{
    return unitScale > 1.f ? 32000.f : 32.f;
}

QMatrix4x4 ViewCamera::projection(float unitScale, bool mirror)
{
    const float nearDistance = nearPlane(unitScale);
    const float top = nearDistance * TopPerNear;
    const float right = top * Aspect;
    QMatrix4x4 m;
    m.frustum(-right, right, -top, top, nearDistance, farPlane(unitScale));
    m.rotate(180.f, 1.f, 0.f, 0.f);
    if (mirror)
        m.scale(-1.f, 1.f, 1.f);
    return m;
}

QMatrix4x4 ViewCamera::modelView(float unitScale) const
{
    QMatrix4x4 m;
    m.rotate(tilt, 1.f, 0.f, 0.f);
    m.rotate(pan, 0.f, 1.f, 0.f);
    m.translate(-eye() * unitScale);
    return m;
}

QVector3D ViewCamera::unproject(float wx, float wy, float depth, const QRect& viewport, float unitScale,
                                bool mirror) const
{
    return QVector3D(wx, wy, depth).unproject(modelView(unitScale), projection(unitScale, mirror), viewport);
}
