#include "views/PixelReadout.h"

#include "app/shared/TextUtils.h"
#include "camera/BufferData.h"

#include <cstring>

QString PixelReadout::pixelText(const BufferData* buffer, int slot, int px, int py)
{
    const int width = int(buffer->width[slot]);
    const int height = int(buffer->height[slot]);
    QString text = QString("(%1,%2) ").arg(px).arg(py);
    if (px < 0 || py < 0 || px >= width || py >= height)
        return text;
    return text + valueText(buffer, slot, py * width + px);
}

QString PixelReadout::valueText(const BufferData* buffer, int slot, int index)
{
    const uint8_t* data = buffer->data[slot];
    switch (buffer->type) {
    case BufferData::Color: {
        // Held as B, G, R; shown as #RRGGBB with blanks, not zeros, in front.
        const uint8_t* bgr = buffer->image[slot].pixels + size_t(index) * 3;
        const int value = bgr[2] * 65536 + bgr[1] * 256 + bgr[0];
        return QString("#%1").arg(value, 6, 16, QChar(' '));
    }
    case BufferData::Phase:
    case BufferData::Confidence: {
        int16_t value;
        std::memcpy(&value, data + size_t(index) * 2, 2);
        return value < 0 ? specialValueTextPhase(quint16(value)) : QString::number(value);
    }
    case BufferData::Depth: {
        uint16_t value;
        std::memcpy(&value, data + size_t(index) * 2, 2);
        return value > 32000 ? specialValueTextDepth(value) : QString("%1mm").arg(value);
    }
    case BufferData::DepthFloatingPoint: {
        float value;
        std::memcpy(&value, data + size_t(index) * 4, 4);
        return value < 0 ? specialValueTextFloat(value) : QString("%1m").arg(double(value));
    }
    case BufferData::StandardDeviation: {
        float value;
        std::memcpy(&value, data + size_t(index) * 4, 4);
        return QString("%1m").arg(double(value));
    }
    default:
        return QString();
    }
}

QString PixelReadout::roiSelectionText(int x, int y, int width, int height)
{
    return QString("ROI selection : X,Y = (%1,%2)     W,H = (%3,%4)").arg(x).arg(y).arg(width).arg(height);
}

QString PixelReadout::cameraText(float x, float y, float z, float distance, float tilt, float pan)
{
    auto field = [](float v) { return QString("%1").arg(double(v), -5, 'f', 2); };
    return QString("X: %1  Y: %2  Z: %3  D: %4  T: %5  P: %6")
        .arg(field(x), field(y), field(z), field(distance), field(tilt), field(pan));
}
