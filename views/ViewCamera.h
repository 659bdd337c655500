#pragma once

#include <QMatrix4x4>
#include <QRect>
#include <QVector3D>

// The camera of a 3D view: a target point, the distance of the eye from it and two angles in degrees
// (pan about the vertical axis, tilt about the horizontal one). Pure arithmetic, no OpenGL.
class ViewCamera {
public:
    static constexpr float DegreesToRadians = 0.017453292f;
    static constexpr float RadiansToDegrees = 57.29578f;
    static constexpr float MinimumDistance = 0.05f;
    // Farther than any camera sees, in metres or millimetres alike.
    static constexpr float MaximumDistance = 100000.f;

    // Half-height of the frustum at the near plane per unit of near distance, and the fixed 4:3 aspect.
    static constexpr float TopPerNear = 0.5117255f;
    static constexpr float Aspect = 1.3333334f;

    float x = 0.f, y = 0.f, z = 0.f;
    float distance = 0.f;
    float pan = 0.f;
    float tilt = 0.f;

    static void eyeFromCamera(float tx, float ty, float tz, float distance, float pan, float tilt, float* ex,
                              float* ey, float* ez);
    static void cameraFromEye(float tx, float ty, float tz, float ex, float ey, float ez, float* distance,
                              float* pan, float* tilt);

    // Takes a camera from outside (presets, a saved workspace) and brings every value into its range:
    // a value that is not a finite number becomes the front preset's, angles wrap or clamp, the
    // distance and the target stay within MaximumDistance.
    void place(float tx, float ty, float tz, float eyeDistance, float panDegrees, float tiltDegrees);

    QVector3D eye() const;
    // Moves the target and keeps the eye where it is: distance and angles follow.
    void retarget(const QVector3D& target);

    // Left drag: dx, dy in widget pixels, h the widget's height (for both directions).
    void rotate(int dx, int dy, int h);
    // Right drag.
    void dolly(int dy, int h);
    // Wheel, in eighths of a degree as the wheel reports them.
    void wheel(int delta);

    // Near plane distance for a unit scale (1 for metres, 1000 for millimetres), and the far one.
    static float nearPlane(float unitScale);
    static float farPlane(float unitScale);
    // The projection and model-view matrices of a 3D paint, as the paint builds them with GL calls;
    // used to unproject a picked pixel.
    static QMatrix4x4 projection(float unitScale, bool mirror);
    QMatrix4x4 modelView(float unitScale) const;
    // The scene point (in scene units, before the unit scale is divided out) at window pixel (wx, wy)
    // (origin at the bottom left) with depth buffer value depth.
    QVector3D unproject(float wx, float wy, float depth, const QRect& viewport, float unitScale, bool mirror) const;

private:
    static float wrapAngle(float degrees);
};
