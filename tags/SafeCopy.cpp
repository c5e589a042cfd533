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

bool operator==(const timespec& left, const timespec& right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

/// Some programs set the time of modification back, some file systems keep no time of change. Inode numbers say
/// nothing here: there are file systems that make them up and forget them.
bool IsUnchanged(const struct stat& before, const struct stat& now)
{
#ifdef Q_OS_MACOS
    const bool sameTimes = before.st_mtimespec == now.st_mtimespec && before.st_ctimespec == now.st_ctimespec;
#else
    const bool sameTimes = before.st_mtim == now.st_mtim && before.st_ctim == now.st_ctim;
#endif
    return sameTimes && before.st_size == now.st_size;
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

bool SafeCopy::Replace(qint64 expectedSize)
{
    struct stat now = {};
    if (stat(original.c_str(), &now) != 0 || !IsUnchanged(before, now))
        return false;
    [[maybe_unused]] const bool sameOwner = fchown(copy.handle(), now.st_uid, now.st_gid) == 0;
    if (copy.size() == expectedSize && Flush(copy.handle()) && std::rename(Name().constData(), original.c_str()) == 0)
        copy.setAutoRemove(false);
    return true;
}
