#pragma once

#include <QString>
#include <QtGlobal>

#include <cstdint>

namespace Zerlane {
class Device;
class Node;
}

// Display texts shared by the views, panels and export.

// Reason texts of special pixel values. The 16-bit variants look at the low 16 bits of `value`.
QString specialValueTextPhase(quint32 value); // codes 32769..32772
QString specialValueTextDepth(quint32 value); // codes 32001..32004
QString specialValueTextFloat(float value);   // codes -1..-4

QString powerLineFrequencyText(int value);

// "seconds.microseconds" of a time in microseconds. The six digits after the point come from the low
// 32 bits of the time read as a signed number (absolute value modulo 1,000,000), so above 2^31 us they
// no longer match the seconds; displayed times are kept that way on purpose.
QString timeText(quint64 microseconds);
// Signed variant for relative times: seconds truncated toward zero, same rule for the digits.
QString timeText(qint64 microseconds);

// "model (serial)" of a camera, or "?" when the camera cannot tell.
QString deviceText(const Zerlane::Device& device);
// "Audio Node", "Color Node", "Depth Node" or "Unsupported Node" (kinds tested in that order).
QString nodeKindText(const Zerlane::Node& node);
