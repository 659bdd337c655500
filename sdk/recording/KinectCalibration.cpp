#include "KinectCalibration.h"

#include "Zerlane/Exceptions.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace Zerlane::recording {

namespace {

// The numbers of the array that follows `key` at or after `from`, before `end`.
std::vector<double> numberArray(const std::string& text, const std::string& key, size_t from, size_t end)
{
    const size_t at = text.find("\"" + key + "\"", from);
    if (at == std::string::npos || at >= end)
        throw Exception("calibration has no " + key);
    const size_t open = text.find('[', at);
    const size_t close = text.find(']', at);
    if (open == std::string::npos || close == std::string::npos || close < open || close > end)
        throw Exception("calibration has a malformed " + key);
    std::vector<double> values;
    const char* p = text.c_str() + open + 1;
    const char* stop = text.c_str() + close;
    while (p < stop) {
        char* next = nullptr;
        const double value = std::strtod(p, &next);
        if (next == p || next > stop)
            break;
        if (!std::isfinite(value))
            throw Exception("calibration has a non-finite number in " + key);
        values.push_back(value);
        p = next;
        while (p < stop && (*p == ',' || *p == ' '))
            ++p;
    }
    return values;
}

double numberAfter(const std::string& text, const std::string& key, size_t from, size_t end)
{
    const size_t at = text.find("\"" + key + "\"", from);
    if (at == std::string::npos || at >= end)
        throw Exception("calibration has no " + key);
    const size_t colon = text.find(':', at);
    if (colon == std::string::npos || colon >= end)
        throw Exception("calibration has a malformed " + key);
    const double value = std::strtod(text.c_str() + colon + 1, nullptr);
    if (!std::isfinite(value) || value <= 0)
        throw Exception("calibration has an invalid " + key);
    return value;
}

// The camera entry of a location: from its "Intrinsics" key (entries are written with their keys in
// alphabetical order, so the intrinsics come first) to the next camera's.
void cameraEntry(const std::string& text, const std::string& location, size_t* begin, size_t* end)
{
    const size_t at = text.find("\"" + location + "\"");
    if (at == std::string::npos)
        throw Exception("calibration has no camera " + location);
    *begin = text.rfind("\"Intrinsics\"", at);
    if (*begin == std::string::npos)
        throw Exception("calibration has no intrinsics for " + location);
    *end = text.find("\"Intrinsics\"", at);
    if (*end == std::string::npos)
        *end = text.size();
}

} // namespace

KinectCalibration KinectCalibration::parse(const std::string& json)
{
    KinectCalibration calibration;
    size_t begin = 0, end = 0;
    cameraEntry(json, "CALIBRATION_CameraLocationD0", &begin, &end);
    std::vector<double> model = numberArray(json, "ModelParameters", begin, end);
    if (model.size() < 4)
        throw Exception("calibration of the depth camera has fewer than 4 parameters");
    for (int i = 0; i < 4; ++i)
        calibration.m_depth[i] = model[size_t(i)];
    calibration.m_depthSensor[0] = numberAfter(json, "SensorWidth", begin, end);
    calibration.m_depthSensor[1] = numberAfter(json, "SensorHeight", begin, end);

    cameraEntry(json, "CALIBRATION_CameraLocationPV0", &begin, &end);
    model = numberArray(json, "ModelParameters", begin, end);
    if (model.size() < 4)
        throw Exception("calibration of the colour camera has fewer than 4 parameters");
    for (int i = 0; i < 4; ++i)
        calibration.m_color[i] = model[size_t(i)];
    const std::vector<double> rotation = numberArray(json, "Rotation", begin, end);
    const std::vector<double> translation = numberArray(json, "Translation", begin, end);
    if (rotation.size() != 9 || translation.size() != 3)
        throw Exception("calibration of the colour camera has a malformed pose");
    for (int i = 0; i < 9; ++i)
        calibration.m_rotation[i] = rotation[size_t(i)];
    for (int i = 0; i < 3; ++i)
        calibration.m_translation[i] = translation[size_t(i)];
    calibration.m_colorSensor[0] = numberAfter(json, "SensorWidth", begin, end);
    calibration.m_colorSensor[1] = numberAfter(json, "SensorHeight", begin, end);
    for (double value : calibration.m_depth)
        if (value <= 0)
            throw Exception("calibration of the depth camera has a parameter that is not positive");
    return calibration;
}

KinectCalibration::Pinhole KinectCalibration::depthIntrinsics(int imageWidth, int imageHeight) const
{
    const double bin = imageWidth <= 512 && imageHeight <= 512 ? 2.0 : 1.0;
    const double offsetX = (m_depthSensor[0] - imageWidth * bin) / 2.0;
    const double offsetY = (m_depthSensor[1] - imageHeight * bin) / 2.0;
    Pinhole p;
    p.cx = (m_depth[0] * m_depthSensor[0] - offsetX) / bin;
    p.cy = (m_depth[1] * m_depthSensor[1] - offsetY) / bin;
    p.fx = m_depth[2] * m_depthSensor[0] / bin;
    p.fy = m_depth[3] * m_depthSensor[1] / bin;
    return p;
}

void KinectCalibration::computeMaps(const uint16_t* depthMm, int width, int height, int column0, int row0,
                                    int fullWidth, int fullHeight, Vertex* vertices, FPVertex* floatingVertices,
                                    UV* uv) const
{
    const Pinhole depth = depthIntrinsics(fullWidth, fullHeight);
    // Colour pixels of the 16:9 region (3840 x 2160 of the 4096 x 3072 sensor, centred), 0..1 across it.
    const double bandWidth = m_colorSensor[0] * 15.0 / 16.0;
    const double bandHeight = bandWidth * 9.0 / 16.0;
    const double bandLeft = (m_colorSensor[0] - bandWidth) / 2.0;
    const double bandTop = (m_colorSensor[1] - bandHeight) / 2.0;
    const double cfx = m_color[2] * m_colorSensor[0], cfy = m_color[3] * m_colorSensor[1];
    const double ccx = m_color[0] * m_colorSensor[0] - bandLeft, ccy = m_color[1] * m_colorSensor[1] - bandTop;
    const double* R = m_rotation;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const size_t i = size_t(y) * size_t(width) + size_t(x);
            const double z = depthMm[i] / 1000.0;
            double X = 0, Y = 0;
            if (z > 0) {
                X = (x + column0 - depth.cx) / depth.fx * z;
                Y = (y + row0 - depth.cy) / depth.fy * z;
            }
            if (vertices)
                vertices[i] = z > 0 ? Vertex {int16_t(std::lround(X * 1000)), int16_t(std::lround(Y * 1000)),
                                              int16_t(depthMm[i] > 32767 ? 32767 : depthMm[i])}
                                    : Vertex {};
            if (floatingVertices)
                floatingVertices[i] = FPVertex {float(X), float(Y), float(z)};
            if (uv) {
                UV out;
                if (z > 0) {
                    const double cx = R[0] * X + R[1] * Y + R[2] * z + m_translation[0];
                    const double cy = R[3] * X + R[4] * Y + R[5] * z + m_translation[1];
                    const double cz = R[6] * X + R[7] * Y + R[8] * z + m_translation[2];
                    if (cz > 0) {
                        out.u = float((cfx * cx / cz + ccx) / bandWidth);
                        out.v = float((cfy * cy / cz + ccy) / bandHeight);
                    }
                }
                uv[i] = out;
            }
        }
    }
}

} // namespace Zerlane::recording
