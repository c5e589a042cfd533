#include "tags/SafeCopy.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <system_error>

namespace
{
/// Waits until the file is on the disk: a power cut after its renaming must not leave an empty one.
bool Flush(int file)
{
#ifdef Q_OS_MACOS
    return fcntl(file, F_FULLFSYNC) == 0 || fsync(file) == 0; // fsync() alone stops at the drive's cache there
#else
    return fsync(file) == 0;
#endif
}
} // namespace

SafeCopy::SafeCopy(const QString& path)
    : original(QFile::encodeName(QFileInfo(path).canonicalFilePath()).toStdString()), changed(LastChange()),
      copy(QFile::decodeName((original.parent_path() / ".orvanto-XXXXXX").c_str()))
{}

QByteArray SafeCopy::Name() const
{
    return QFile::encodeName(copy.fileName());
}

bool SafeCopy::Make(int textSize)
{
    constexpr std::uintmax_t margin = 4 << 20;          // bytes, for paddings and what others write meanwhile
    constexpr std::uintmax_t bytesPerCharacter = 2 * 4; // UTF-8 or UTF-16, in two tags at the most
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(original, error);
    const std::uintmax_t available = error ? 0 : std::filesystem::space(original, error).available;
    return !error && available >= size + margin + bytesPerCharacter * static_cast<std::uintmax_t>(textSize) &&
           access(original.c_str(), W_OK) == 0 && copy.open() &&
           std::filesystem::copy_file(original, Name().toStdString(), std::filesystem::copy_options::overwrite_existing,
                                      error);
}

void SafeCopy::Replace(qint64 expectedSize)
{
    struct stat status;
    [[maybe_unused]] const bool sameOwner =
        stat(original.c_str(), &status) == 0 && fchown(copy.handle(), status.st_uid, status.st_gid) == 0;
    if (copy.size() == expectedSize && LastChange() == changed && Flush(copy.handle()) &&
        std::rename(Name().constData(), original.c_str()) == 0)
        copy.setAutoRemove(false);
}

QDateTime SafeCopy::LastChange() const
{
    return QFileInfo(QFile::decodeName(original.c_str())).metadataChangeTime();
}
