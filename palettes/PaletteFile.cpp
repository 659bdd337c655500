#include "palettes/PaletteFile.h"

#include "app/shared/ViewerLog.h"

#include <Zerlane/Utils/Format.h>

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::optional<QByteArray> PaletteFile::read(const QByteArray& path)
{
    if (path.startsWith(':'))
        return readResource(path);
    return readRegularFile(path);
}

std::optional<QByteArray> PaletteFile::readResource(const QByteArray& path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

std::optional<QByteArray> PaletteFile::readRegularFile(const QByteArray& path)
{
    // Opened without blocking and checked on the descriptor itself, so that a FIFO put in the file's
    // place after a directory listing cannot block either.
    const int fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    if (status.st_size > MaxBytes) {
        ::close(fd);
        reportTooLarge(path);
        return std::nullopt;
    }
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return std::nullopt;
    }
    // The file may have grown since it was measured: what is read is measured again.
    QByteArray content = file.read(MaxBytes + 1);
    if (content.size() > MaxBytes) {
        reportTooLarge(path);
        return std::nullopt;
    }
    return content;
}

void PaletteFile::reportTooLarge(const QByteArray& path)
{
    ViewerLog::warning(Zerlane::Utils::Format("Palette file % is larger than % bytes, left out") % path.toStdString()
                       % MaxBytes);
}
