#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

// The bytes of a palette file, read so that nothing in the directory the palette dialog scans can
// hang or flood the loader: only regular files are read (a FIFO would block the open, a device
// would never end), and none larger than MaxBytes.
class PaletteFile {
public:
    // One MiB: the built-in palettes take under one KiB, and a file with one `color` element for
    // every table entry about two.
    static constexpr qint64 MaxBytes = 1024 * 1024;

    // The content, or nothing: silently when the file cannot be opened or is not a regular file, with
    // a log line when it is larger than MaxBytes. Paths starting with ':' are Qt resources.
    static std::optional<QByteArray> read(const QByteArray& path);

private:
    static std::optional<QByteArray> readResource(const QByteArray& path);
    static std::optional<QByteArray> readRegularFile(const QByteArray& path);
    static void reportTooLarge(const QByteArray& path);
};
