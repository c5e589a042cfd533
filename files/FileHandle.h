#pragma once

#include "files/FileFacts.h"

#include <QByteArray>
#include <QString>

#include <fcntl.h>

/// An open file; it is closed with this object. A call interrupted by a signal is repeated, and each call says whether
/// it was done completely.
class FileHandle
{
public:
    FileHandle() = default;
    /// Opens the file at @p path, following links, with flags of open(2). It never waits for the other end of a pipe,
    /// but it does wait until another program gives up its lease on a regular file. A file that it creates gets the
    /// permissions @p mode, subject to the umask.
    FileHandle(const QString& path, int flags, mode_t mode = 0666);
    Q_DISABLE_COPY(FileHandle)
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle();

    bool IsOpen() const { return descriptor >= 0; }
    int Descriptor() const { return descriptor; }
    /// Empty when it is not open.
    std::optional<SFileFacts> Facts() const;

    /// Reads @p size bytes from @p position on. @return how many there were; -1 on a read error.
    qint64 Read(qint64 position, char* bytes, qint64 size) const;
    bool Write(qint64 position, const QByteArray& bytes);
    /// Writes at the current position, or at the end of a file opened with O_APPEND; works for pipes, too.
    bool Append(const QByteArray& bytes);
    bool Resize(qint64 size);
    /// How deep a flush goes: through the system's cache, or through the drive's, too. Only macOS distinguishes them;
    /// there, the former keeps writes in order.
    enum class Depth { System, Drive };
    /// Waits until the file is on the disk. A file system without such a call is no failure.
    bool Flush(Depth depth = Depth::System);
    /// @return false when what was written may be lost.
    bool Close();

private:
    int descriptor = -1;
};

/// Whether errno says that the file system lacks the call, rather than that the call failed.
bool IsUnsupported();
