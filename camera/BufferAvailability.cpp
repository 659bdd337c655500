#include "camera/BufferAvailability.h"

#include "camera/BufferData.h"
#include "camera/DeviceData.h"
#include "camera/NodeData.h"

namespace {

// What the UV view draws with besides its own map.
struct UvSources {
    explicit UvSources(const BufferData* uv)
        : vertices(uv->node->buffer(BufferData::VerticesFloatingPoint))
        , colorMap(uv->node->device ? uv->node->device->colorBuffer() : nullptr)
    {
    }

    bool verticesStreaming() const { return vertices && !vertices->noData; }
    bool colorStreaming() const { return colorMap && colorMap->node->dataReceived && !colorMap->noData; }

    const BufferData* vertices;
    const BufferData* colorMap; // the colour node's image: without one there is no colour node
};

} // namespace

bool BufferAvailability::isUnavailable(const BufferData* buffer)
{
    if (buffer->type != BufferData::UV)
        return buffer->noData;
    const UvSources sources(buffer);
    return buffer->noData || !sources.verticesStreaming() || !sources.colorStreaming();
}

QString BufferAvailability::unavailableText(const BufferData* buffer)
{
    if (buffer->type == BufferData::UV) {
        const UvSources sources(buffer);
        if (!sources.colorMap)
            return "Color node not present";
        if (!sources.verticesStreaming())
            return "Vertices Floating Point not streaming";
        return sources.colorStreaming() ? "Not streaming" : "Color not streaming";
    }
    if (buffer->type == BufferData::StandardDeviation)
        return buffer->node->roi().isSet() ? "Not streaming" : "No ROI selected";
    return "Not streaming";
}
