#include "mainwindow/FrameExport.h"

#include "Zerlane/Interface.h"
#include "Zerlane/Property.h"
#include "app/shared/TextUtils.h"
#include "camera/BufferData.h"
#include "camera/DepthNodeData.h"
#include "camera/DeviceData.h"
#include "events/CameraManager.h"

#include <QDateTime>
#include <QFile>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

File openForWriting(const QString& fileName, const char* mode)
{
    File file(std::fopen(fileName.toLocal8Bit().constData(), mode));
    if (file)
        std::setvbuf(file.get(), nullptr, _IOFBF, 1 << 20);
    return file;
}

// Closes the file and tells whether everything written reached it.
FrameExport::Result finish(File file)
{
    const bool failed = std::ferror(file.get()) != 0;
    return std::fclose(file.release()) != 0 || failed ? FrameExport::Result::WriteFailed
                                                      : FrameExport::Result::Written;
}

bool mapEnabled(NodeData* node, uint32_t type)
{
    const QString name = BufferData::enableProperty(type);
    if (name.isEmpty())
        return false;
    try {
        return Zerlane::Property<bool>::getValue(Zerlane::Interface(node->node), name.toStdString());
    } catch (const Zerlane::Exception&) {
        return false; // a map the camera cannot tell about holds nothing to export
    }
}

// Holds a buffer's displayed copy still: the manager's buffers lock first for a depth node (its buffers
// change slots together), then the buffer's own.
class FrozenSlot {
public:
    FrozenSlot(BufferData* buffer, CameraManager* manager)
        : m_buffer(buffer)
        , m_manager(manager)
    {
        m_manager->lockBuffers();
        m_buffer->dataMutex.lock();
        slot = m_buffer->readSlot();
    }
    ~FrozenSlot()
    {
        m_buffer->dataMutex.unlock();
        m_manager->unlockBuffers();
    }
    FrozenSlot(const FrozenSlot&) = delete;
    FrozenSlot& operator=(const FrozenSlot&) = delete;

    int slot = 0;

private:
    BufferData* m_buffer;
    CameraManager* m_manager;
};

void writeHeader(FILE* file, const BufferData* buffer, int slot, NodeData* node, CameraManager* manager)
{
    auto time = [&](uint64_t t) { return timeText(manager->relativeTime(t)).toLocal8Bit(); };
    std::fprintf(file, "Time of capture;%s\n", time(buffer->timeOfCapture[slot]).constData());
    std::fprintf(file, "Time of arrival;%s\n", time(buffer->timeOfArrival[slot]).constData());
    std::fprintf(file, "Time of event;%s\n", time(buffer->timeOfEvent[slot]).constData());
    Zerlane::DepthNode::Acceleration a{};
    if (node->node.is<Zerlane::DepthNode>())
        a = static_cast<DepthNodeData*>(node)->acceleration();
    std::fprintf(file, "Acceleration;%f;%f;%f\n", a.x, a.y, a.z);
}

// Values per pixel of a kind and whether they are floats; 0 values for kinds that write only rows.
struct CsvLayout {
    int values;
    bool floats;
};

CsvLayout csvLayout(uint32_t type)
{
    switch (type) {
    case BufferData::Phase:
    case BufferData::Confidence:
    case BufferData::Depth:
        return {1, false};
    case BufferData::DepthFloatingPoint:
        return {1, true};
    case BufferData::Vertices:
        return {3, false};
    case BufferData::VerticesFloatingPoint:
        return {3, true};
    case BufferData::UV:
        return {2, true};
    default:
        return {0, false};
    }
}

void writeRows(FILE* file, const BufferData* buffer, int slot)
{
    const uint32_t width = buffer->width[slot];
    const uint32_t height = buffer->height[slot];
    const CsvLayout layout = csvLayout(buffer->type);
    const auto* shorts = reinterpret_cast<const int16_t*>(buffer->data[slot]);
    const auto* floats = reinterpret_cast<const float*>(buffer->data[slot]);
    const QByteArray name = buffer->typeName().toLocal8Bit();
    size_t index = 0;
    for (uint32_t row = 0; row < height; ++row) {
        if (row == 0)
            std::fputs(name.constData(), file);
        const size_t rowValues = size_t(width) * size_t(layout.values);
        for (size_t i = 0; i < rowValues; ++i, ++index) {
            if (layout.floats)
                std::fprintf(file, ";%f", double(floats[index]));
            else
                std::fprintf(file, ";%d", int(shorts[index]));
        }
        std::fputc('\n', file);
    }
}

} // namespace

QString FrameExport::defaultCsvName()
{
    const QDateTime now = QDateTime::currentDateTime();
    return QString("frame-%1-%2.csv").arg(now.toString("yyyyMMdd"), now.toString("hhmmss"));
}

FrameExport::Result FrameExport::writeCsv(const QString& fileName, NodeData* node, CameraManager* manager)
{
    File file = openForWriting(fileName, "w");
    if (!file)
        return Result::NotCreated;
    bool headerWritten = false;
    for (BufferData* buffer : node->buffers) {
        if (buffer->type == BufferData::Combined || !mapEnabled(node, buffer->type))
            continue;
        const FrozenSlot frozen(buffer, manager);
        if (!headerWritten) {
            writeHeader(file.get(), buffer, frozen.slot, node, manager);
            headerWritten = true;
        }
        writeRows(file.get(), buffer, frozen.slot);
    }
    return finish(std::move(file));
}

namespace {

// The colour image a UV map points into, when the camera streams one: its B, G, R pixels copied out
// under the colour buffer's lock.
struct ColourImage {
    std::vector<uint8_t> bgr;
    uint32_t width = 0;
    uint32_t height = 0;
};

ColourImage streamingColourImage(NodeData* node, CameraManager* manager)
{
    ColourImage colour;
    BufferData* buffer = node->device ? node->device->colorBuffer() : nullptr;
    if (!buffer || !buffer->node->dataReceived)
        return colour;
    const FrozenSlot frozen(buffer, manager);
    const DisplayImage& image = buffer->image[frozen.slot];
    if (buffer->width[frozen.slot] == 0)
        return colour;
    colour.width = image.width;
    colour.height = image.height;
    colour.bgr.assign(image.pixels, image.pixels + size_t(image.width) * image.height * 3);
    return colour;
}

QByteArray plyHeader(size_t points, bool coloured)
{
    QByteArray header = "ply\nformat binary_little_endian 1.0\ncomment written by Zerlane Viewer\n";
    header += QByteArray("element vertex ") + QByteArray::number(qulonglong(points)) + "\n";
    header += "property float x\nproperty float y\nproperty float z\n";
    if (coloured)
        header += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    return header + "end_header\n";
}

// The colour a UV pair picks from the colour image, as red, green, blue; `unmapped` outside it.
void writeColour(uint8_t* rgb, float u, float v, const ColourImage& colour, const uint8_t unmapped[3])
{
    if (!(u >= 0.f && u < 1.f && v >= 0.f && v < 1.f)) {
        std::memcpy(rgb, unmapped, 3);
        return;
    }
    const size_t pixel = size_t(v * float(colour.height)) * colour.width + size_t(u * float(colour.width));
    rgb[0] = colour.bgr[3 * pixel + 2];
    rgb[1] = colour.bgr[3 * pixel + 1];
    rgb[2] = colour.bgr[3 * pixel];
}

} // namespace

FrameExport::Result FrameExport::writePly(const QString& fileName, NodeData* node, CameraManager* manager,
                                          quint32 unmappedColor)
{
    BufferData* vertices = node->buffer(BufferData::VerticesFloatingPoint);
    BufferData* uvMap = node->buffer(BufferData::UV);
    if (!vertices || !mapEnabled(node, BufferData::VerticesFloatingPoint))
        return Result::NothingToWrite;
    const ColourImage colour = streamingColourImage(node, manager);
    const bool coloured = colour.width > 0 && uvMap && mapEnabled(node, BufferData::UV);

    File file = openForWriting(fileName, "wb");
    if (!file)
        return Result::NotCreated;
    const FrozenSlot frozen(vertices, manager);
    const size_t count = size_t(vertices->width[frozen.slot]) * vertices->height[frozen.slot];
    if (count == 0) {
        file.reset();
        QFile::remove(fileName);
        return Result::NothingToWrite;
    }
    // The depth node's buffers change slots together: the UV map of the same sample is at the same
    // slot, and the buffers lock held here keeps it there.
    const float* uv = nullptr;
    if (coloured && size_t(uvMap->width[frozen.slot]) * uvMap->height[frozen.slot] == count)
        uv = reinterpret_cast<const float*>(uvMap->data[frozen.slot]);
    const auto* xyz = reinterpret_cast<const float*>(vertices->data[frozen.slot]);

    // Invalid points (z <= 0) carry status codes, not positions, and are left out.
    size_t valid = 0;
    for (size_t i = 0; i < count; ++i)
        valid += xyz[3 * i + 2] > 0.f ? 1 : 0;
    const QByteArray header = plyHeader(valid, uv != nullptr);
    std::fwrite(header.constData(), 1, size_t(header.size()), file.get());

    // Packed little-endian records, as the header declares them, written a block at a time.
    const size_t recordSize = uv ? 15 : 12;
    constexpr size_t BlockRecords = 4096;
    std::vector<uint8_t> block(BlockRecords * recordSize);
    const uint8_t unmapped[3] = {uint8_t(unmappedColor >> 16), uint8_t(unmappedColor >> 8), uint8_t(unmappedColor)};
    uint8_t* out = block.data();
    for (size_t i = 0; i < count; ++i) {
        if (!(xyz[3 * i + 2] > 0.f))
            continue;
        std::memcpy(out, xyz + 3 * i, 12);
        if (uv)
            writeColour(out + 12, uv[2 * i], uv[2 * i + 1], colour, unmapped);
        out += recordSize;
        if (out == block.data() + block.size()) {
            std::fwrite(block.data(), 1, block.size(), file.get());
            out = block.data();
        }
    }
    std::fwrite(block.data(), 1, size_t(out - block.data()), file.get());
    return finish(std::move(file));
}
