#pragma once

#include <QString>

class CameraManager;
class NodeData;

// Writes the frame a depth node's buffers hold while streaming is paused: the semicolon-separated
// text of every map that is switched on, and the floating-point vertices as a point cloud. Each
// buffer is read under its own lock, one at a time, so the event thread waits at most for one.
class FrameExport {
public:
    enum class Result {
        Written,
        NotCreated,     // the file could not be opened for writing: nothing was written
        WriteFailed,    // writing stopped part way (a full disk): the file is incomplete
        NothingToWrite, // the frame holds no floating-point vertices (point cloud only)
    };

    // "frame-yyyyMMdd-hhmmss.csv" for now.
    static QString defaultCsvName();

    // One block per switched-on map, in the node's buffer order: the map's name, then a ";value" per
    // value and a line per image row, after a header of the first block's time stamps and the
    // node's acceleration.
    static Result writeCsv(const QString& fileName, NodeData* node, CameraManager* manager);

    // A binary little-endian PLY of the valid points (z > 0) of the floating-point vertices, in
    // metres; coloured through the UV map when the camera's colour image is streaming, with
    // `unmappedColor` (0xRRGGBB) for points that fall outside it.
    static Result writePly(const QString& fileName, NodeData* node, CameraManager* manager, quint32 unmappedColor);
};
