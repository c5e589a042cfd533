#include "files/FileHandle.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace
{
/// Makes a call that returns -1 for an error until no signal interrupts it.
template <class Call>
auto Retried(const Call& call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Repeats a call that may do less than it was asked to. @p call gets how much is done and how much is left.
/// @return how much was done when a call did nothing more, or -1 when it failed.
template <class Call>
qint64 Repeated(qint64 size, const Call& call)
{
    qint64 done = 0;
    while (done < size) {
        const auto step = Retried([&] { return call(done, static_cast<std::size_t>(size - done)); });
        if (step < 0)
            return -1;
        if (step == 0)
            break;
        done += step;
    }
    return done;
}
} // namespace

FileHandle::FileHandle(const QString& path, int flags, mode_t mode)
{
    const auto opened = [&](int waiting) {
        return Retried(
            [&] { return open(QFile::encodeName(path).constData(), flags | waiting | O_CLOEXEC | O_NOCTTY, mode); });
    };
    descriptor = opened(O_NONBLOCK);
    if (descriptor >= 0 || errno != EWOULDBLOCK)
        return;
    // Another program, such as a file server, holds a lease on it, which it gives up for those who wait.
    const auto facts = FactsOf(path);
    if (facts && facts->IsRegular())
        descriptor = opened(0);
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    std::swap(descriptor, other.descriptor);
    return *this;
}

FileHandle::~FileHandle()
{
    Close();
}

std::optional<SFileFacts> FileHandle::Facts() const
{
    struct stat status;
    if (!IsOpen() || fstat(descriptor, &status) != 0)
        return std::nullopt;
    return SFileFacts(status);
}

qint64 FileHandle::Read(qint64 position, char* bytes, qint64 size) const
{
    return Repeated(size, [&](qint64 done, std::size_t left) {
        return pread(descriptor, bytes + done, left, static_cast<off_t>(position + done));
    });
}

bool FileHandle::Write(qint64 position, const QByteArray& bytes)
{
    return bytes.size() == Repeated(bytes.size(), [&](qint64 done, std::size_t left) {
               return pwrite(descriptor, bytes.constData() + done, left, static_cast<off_t>(position + done));
           });
}

bool FileHandle::Append(const QByteArray& bytes)
{
    return bytes.size() == Repeated(bytes.size(), [&](qint64 done, std::size_t left) {
               return write(descriptor, bytes.constData() + done, left);
           });
}

bool FileHandle::Resize(qint64 size)
{
    return Retried([&] { return ftruncate(descriptor, static_cast<off_t>(size)); }) == 0;
}

bool FileHandle::Flush([[maybe_unused]] Depth depth)
{
#ifdef Q_OS_MACOS
    const int command = depth == Depth::Drive ? F_FULLFSYNC : F_BARRIERFSYNC;
    const bool flushed = Retried([&] { return fcntl(descriptor, command); }) == 0;
    if (flushed || !IsUnsupported()) // an error is reported only once: fsync() could succeed after it
        return flushed;
#endif
    return Retried([&] { return fsync(descriptor); }) == 0 || IsUnsupported();
}

bool FileHandle::Close()
{
    // Never twice: another thread may have been given the same descriptor meanwhile.
    const int closed = std::exchange(descriptor, -1);
    return closed < 0 || close(closed) == 0 || errno == EINTR;
}

bool IsUnsupported()
{
    return errno == EINVAL || errno == ENOSYS || errno == ENOTTY || errno == ENOTSUP || errno == EOPNOTSUPP;
}
