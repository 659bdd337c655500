#pragma once

#include <QString>

class BufferData;

// Whether the view of a buffer can show the last sample, and what it says when it cannot. Read from
// the records alone (GUI thread): the UV map also needs its node's floating-point vertices and a
// colour image of the same camera that is streaming.
class BufferAvailability {
public:
    static bool isUnavailable(const BufferData* buffer);
    // The status text shown instead of the picture of an unavailable buffer.
    static QString unavailableText(const BufferData* buffer);
};
