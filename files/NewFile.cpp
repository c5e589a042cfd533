#include "files/NewFile.h"

#include "files/FileNames.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#ifdef Q_OS_MACOS
#include <copyfile.h>
#include <sys/clonefile.h>
#else
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/xattr.h>
#endif

namespace
{
constexpr qint64 step = 1 << 20; // bytes; a slow USB stick takes a tenth of a second for them
#ifndef Q_OS_MACOS
constexpr unsigned int writeAndWait = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
#endif

#ifdef Q_OS_MACOS
qint64 CopyInKernel(int, qint64, int, qint64, qint64)
{
    return -1; // fcopyfile() only reads and writes itself, and takes no range
}
#else
/// Copies at most @p size bytes within the kernel. @return how many; 0 or -1 when another way has to be tried.
qint64 CopyInKernel(int from, qint64 start, int to, qint64 end, qint64 size)
{
    off_t readAt = start, writeAt = end;
    const ssize_t copied = copy_file_range(from, &readAt, to, &writeAt, static_cast<std::size_t>(size), 0);
    if (copied > 0 || lseek(to, end, SEEK_SET) != end)
        return copied;
    return sendfile(to, from, &readAt, static_cast<std::size_t>(size));
}
#endif

void CopyExtendedAttributes(int from, int to)
{
#ifdef Q_OS_MACOS
    fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR);
#else
    // The new file may have inherited a list from its folder.
    fremovexattr(to, "system.posix_acl_access");
    std::vector<char> names(static_cast<std::size_t>(qMax<ssize_t>(flistxattr(from, nullptr, 0), 0)));
    const ssize_t length = flistxattr(from, names.data(), names.size());
    const char* const end = names.data() + qBound<ssize_t>(0, length, static_cast<ssize_t>(names.size()));
    for (const char* name = names.data(); name < end; name += qstrlen(name) + 1) {
        std::vector<char> value(static_cast<std::size_t>(qMax<ssize_t>(fgetxattr(from, name, nullptr, 0), 0)));
        if (fgetxattr(from, name, value.data(), value.size()) == static_cast<ssize_t>(value.size()))
            fsetxattr(to, name, value.data(), value.size(), 0);
    }
#endif
}
} // namespace

NewFile::NewFile(const QString& path, mode_t mode) : destination(path)
{
    do {
        hiddenName = HiddenName(path);
        handle = FileHandle(hiddenName, O_RDWR | O_CREAT | O_EXCL, mode);
    } while (!handle.IsOpen() && errno == EEXIST);
    if (!handle.IsOpen())
        hiddenName.clear();
}

NewFile::~NewFile()
{
    if (hiddenName.isEmpty())
        return;
    handle.Close(); // not every file system removes an open file
    RemoveFile(hiddenName);
}

bool NewFile::Clone(const FileHandle& source)
{
#ifdef Q_OS_MACOS
    // A clone of a locked file is locked, too: it could neither be renamed nor removed.
    constexpr unsigned int locks = UF_IMMUTABLE | UF_APPEND | SF_IMMUTABLE | SF_APPEND | SF_NOUNLINK;
    struct stat from, to;
    if (fstat(source.Descriptor(), &from) != 0 || fstat(handle.Descriptor(), &to) != 0 || from.st_dev != to.st_dev ||
        (from.st_flags & locks) != 0)
        return false;
    // A clone needs a name that is free, and gets its source's permissions.
    const QString name = HiddenName(destination);
    if (fclonefileat(source.Descriptor(), AT_FDCWD, QFile::encodeName(name).constData(), 0) != 0)
        return false;
    handle = FileHandle(name, O_RDONLY);
    RemoveFile(std::exchange(hiddenName, name));
    return true;
#else
    return ioctl(handle.Descriptor(), FICLONE, source.Descriptor()) == 0;
#endif
}

NewFile::Transfer NewFile::CopyContent(const FileHandle& source, qint64 length, const std::function<bool()>& goOn)
{
    if (!Clone(source))
        return CopyRange(source, 0, length, goOn);
    size = length;
    return Transfer::Done;
}

NewFile::Transfer NewFile::CopyRange(const FileHandle& source, qint64 from, qint64 length,
                                     const std::function<bool()>& goOn)
{
    const qint64 end = from + length;
    while (from < end) {
        if (!goOn())
            return Transfer::Stopped;
        const qint64 wanted = qMin(step, end - from);
        const qint64 copied = CopyInKernel(source.Descriptor(), from, handle.Descriptor(), size, wanted);
        if (copied > 0) {
            from += copied;
            size += copied;
            if (!StartWriting())
                return Transfer::Failed;
            continue;
        }
        // Some file systems lack these calls, and on some they end a file early. Here, an early end is final.
        QByteArray bytes(static_cast<int>(wanted), Qt::Uninitialized);
        if (source.Read(from, bytes.data(), wanted) != wanted || !Append(bytes))
            return Transfer::Failed;
        from += wanted;
    }
    return Transfer::Done;
}

bool NewFile::Append(const QByteArray& bytes)
{
    if (!handle.Write(size, bytes))
        return false;
    size += bytes.size();
    return StartWriting();
}

/// Keeps the disk busy and little of the file in memory: a flush of gigabytes at the end could not be interrupted.
bool NewFile::StartWriting()
{
#ifdef Q_OS_MACOS
    if (size - written < 8 * step) // each flush is a barrier there
        return true;
    written = size;
    return handle.Flush();
#else
    if (size - onItsWay < step)
        return true;
    const int file = handle.Descriptor();
    // A length of 0 would mean all of the file.
    const bool ok = (sync_file_range(file, onItsWay, size - onItsWay, SYNC_FILE_RANGE_WRITE) == 0 &&
                     (onItsWay == written || sync_file_range(file, written, onItsWay - written, writeAndWait) == 0)) ||
                    IsUnsupported();
    written = onItsWay;
    onItsWay = size;
    return ok;
#endif
}

void NewFile::StartFlush()
{
#ifndef Q_OS_MACOS
    sync_file_range(handle.Descriptor(), onItsWay, 0, SYNC_FILE_RANGE_WRITE); // 0: to the end
#endif
}

void NewFile::AwaitFlush()
{
#ifndef Q_OS_MACOS
    sync_file_range(handle.Descriptor(), written, 0, writeAndWait);
#endif
}

bool NewFile::CopyOwner(const SFileFacts& facts)
{
    const auto own = handle.Facts();
    if (own && own->owner == facts.owner && own->group == facts.group)
        return true;
    const auto nobody = static_cast<uid_t>(-1);
    // On some systems a new file gets its folder's group. Unless the old group can be set, that one must not be allowed
    // more than everybody is.
    const mode_t forGroup = facts.mode >> 3 & 07, forOthers = facts.mode & 07;
    return fchown(handle.Descriptor(), facts.owner, facts.group) == 0 ||
           fchown(handle.Descriptor(), nobody, facts.group) == 0 || (forGroup & ~forOthers) == 0;
}

void NewFile::CopyAttributes(const FileHandle& source, const SFileFacts& facts)
{
    CopyExtendedAttributes(source.Descriptor(), handle.Descriptor());
    // A program that runs as its owner or group must not become one that runs as somebody else.
    const auto own = handle.Facts();
    const bool isSameOwner = own && own->owner == facts.owner && own->group == facts.group;
    fchmod(handle.Descriptor(), facts.mode & (isSameOwner ? 07777 : 01777));
}

void NewFile::CopyTimes(const SFileFacts& facts)
{
    const timespec times[] = {facts.accessed, facts.modified}; // both: some file systems ignore a call that omits one
    futimens(handle.Descriptor(), times);
}

bool NewFile::Finish()
{
    const auto facts = handle.Facts();
    const bool flushed = facts && facts->size == size && handle.Flush();
    return handle.Close() && flushed;
}

bool NewFile::Appear(Existing existing)
{
    const bool appeared = existing == Existing::Replace ? std::rename(QFile::encodeName(hiddenName).constData(),
                                                                      QFile::encodeName(destination).constData()) == 0
                                                        : RenameToFreeName(hiddenName, destination);
    if (appeared)
        hiddenName.clear();
    return appeared;
}
