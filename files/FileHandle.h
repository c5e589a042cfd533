#pragma once

#include "files/FileFacts.h"

#include <QByteArray>
#include <QString>

#include <fcntl.h>

/// An open file; it is closed with this object. A call that a signal interrupts is made again, and each says whether
/// all of it was done.
class FileHandle
{
public:
    FileHandle() = default;
    /// Opens the file at @p path, links followed, with flags of open(2). It never waits for the other end of a pipe. A
    /// file that is made gets @p mode less the user's mask.
    FileHandle(const QString& path, int flags, mode_t mode = 0666);
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle();

    bool IsOpen() const { return descriptor >= 0; }
    int Descriptor() const { return descriptor; }
    /// Nothing when it is not open.
    std::optional<SFileFacts> Facts() const;

    /// Reads @p size bytes from @p position on. @return how many there were; -1 when the disk does not give them.
    qint64 Read(qint64 position, char* bytes, qint64 size) const;
    bool Write(qint64 position, const QByteArray& bytes);
    /// Writes where the file stands, or at its end when it was opened with O_APPEND; serves pipes, too.
    bool Append(const QByteArray& bytes);
    bool Resize(qint64 size);
    /// How far what was written is followed: past the system's cache, or also past that of the drive. Only macOS makes
    /// a difference; there, the former keeps the order of writes.
    enum class Depth { System, Drive };
    /// Waits until the file is on the disk. A disk that has no such call is no failure.
    bool Flush(Depth depth = Depth::System);
    /// @return false when what was written may be lost.
    bool Close();

private:
    int descriptor = -1;
};

/// Whether errno says that the file system has no such call, rather than that the call failed.
bool IsUnsupported();
