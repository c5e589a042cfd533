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

/// The time of the last change of any kind: when a file was modified, some programs set back.
timespec ChangeTime(const struct stat& status)
{
#ifdef Q_OS_MACOS
    return status.st_ctimespec;
#else
    return status.st_ctim;
#endif
}
} // namespace

SafeCopy::SafeCopy(const QString& path)
    : original(QFile::encodeName(QFileInfo(path).canonicalFilePath()).toStdString()),
      copy(QFile::decodeName((original.parent_path() / ".orvanto-XXXXXX").c_str()))
{
    stat(original.c_str(), &before);
}

QByteArray SafeCopy::Name() const
{
    return QFile::encodeName(copy.fileName());
}

bool SafeCopy::Make(int textSize)
{
    constexpr std::uintmax_t margin = 4 << 20;          // bytes, for paddings and what others write meanwhile
    constexpr std::uintmax_t bytesPerCharacter = 2 * 4; // UTF-8 or UTF-16, in two tags at the most
    std::error_code error;
    const std::uintmax_t available = std::filesystem::space(original, error).available;
    const std::uintmax_t needed = static_cast<std::uintmax_t>(before.st_size) + margin +
                                  bytesPerCharacter * static_cast<std::uintmax_t>(textSize);
    return !error && available >= needed && access(original.c_str(), W_OK) == 0 && copy.open() &&
           std::filesystem::copy_file(original, Name().toStdString(), std::filesystem::copy_options::overwrite_existing,
                                      error);
}

void SafeCopy::Replace(qint64 expectedSize)
{
    struct stat now = {};
    if (stat(original.c_str(), &now) != 0)
        return;
    const timespec then = ChangeTime(before), changed = ChangeTime(now);
    const bool isUnchanged = then.tv_sec == changed.tv_sec && then.tv_nsec == changed.tv_nsec;
    [[maybe_unused]] const bool sameOwner = fchown(copy.handle(), now.st_uid, now.st_gid) == 0;
    if (isUnchanged && copy.size() == expectedSize && Flush(copy.handle()) &&
        std::rename(Name().constData(), original.c_str()) == 0)
        copy.setAutoRemove(false);
}
