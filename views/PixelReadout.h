#pragma once

#include <QString>

class BufferData;

// The texts of the line under a view: the pixel under the pointer with its value (special values by
// name), the region being selected, or the 3D camera.
class PixelReadout {
public:
    // "(px,py) " followed by the value of the read slot's pixel, by the buffer's kind.
    static QString pixelText(const BufferData* buffer, int slot, int px, int py);
    static QString valueText(const BufferData* buffer, int slot, int index);
    static QString roiSelectionText(int x, int y, int width, int height);
    static QString cameraText(float x, float y, float z, float distance, float tilt, float pan);
};
