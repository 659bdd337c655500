#pragma once

#include "Zerlane/Types.h"

#include <cstdint>
#include <string>

namespace Zerlane::recording {

// The calibration attachment of a capture in the other cameras' layout (calibration.json): the depth
// camera's and the colour camera's intrinsics, normalised by their sensor size, and the colour camera's
// pose relative to the depth camera. Used to make the vertex maps and the UV map the capture lacks.
//
// Assumptions, not verified against the camera maker's own code: the first four model parameters are
// cx, cy, fx, fy (normalised by sensor width and height); the depth image is the centre of the
// 1024 x 1024 sensor (binned 2 x 2 for images of at most 512 x 512); a 16:9 colour image is the centred
// 3840 x 2160 region of the 4096 x 3072 colour sensor (on the real capture the mug's left edge then lands
// within a few colour pixels of where the picture shows it; the full-width 16:9 band put it 25 pixels off);
// colour = R * depth + t, t in metres. The lens distortion parameters are ignored (a pinhole model).
class KinectCalibration {
public:
    // Throws Exception when the text lacks the depth or colour camera entries.
    static KinectCalibration parse(const std::string& json);

    // Pinhole intrinsics of the depth image of the given size, in its pixels.
    struct Pinhole {
        double cx = 0, cy = 0, fx = 0, fy = 0;
    };
    Pinhole depthIntrinsics(int imageWidth, int imageHeight) const;

    // Fills the maps for `width` x `height` depth pixels in millimetres whose top-left pixel is
    // (column0, row0) of the full depth image of fullWidth x fullHeight; 0 depth gives zero vertices and
    // UV (0, 0). Any output may be null.
    void computeMaps(const uint16_t* depthMm, int width, int height, int column0, int row0, int fullWidth,
                     int fullHeight, Vertex* vertices, FPVertex* floatingVertices, UV* uv) const;

private:
    double m_depth[4] = {};    // cx, cy, fx, fy normalised
    double m_depthSensor[2] = {};
    double m_color[4] = {};
    double m_colorSensor[2] = {};
    double m_rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double m_translation[3] = {};
};

} // namespace Zerlane::recording
