#pragma once

#include "files/FileHandle.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// A file that appears whole or not at all: it is written under a hidden name, `.orvanto-` and six characters, in the
/// folder where it will appear, and gets its name last. Unless it has appeared, it is removed with this object; only a
/// killed program leaves it there.
class NewFile
{
public:
    /// What happens to something that is at its destination by the time it appears.
    enum class Existing { Keep, Replace };
    enum class Transfer { Done, Failed, Stopped };

    /// Creates it for @p destination, which is not looked at, with the permissions @p mode, subject to the umask.
    explicit NewFile(const QString& destination, mode_t mode = 0600);
    ~NewFile();
    Q_DISABLE_COPY(NewFile)

    /// False when it could not be created in that folder.
    bool IsOpen() const { return handle.IsOpen(); }

    /// Makes it share the content of @p source where the file system supports that, else copies it. It asks
    /// @p goOn before each step and stops when that returns false.
    Transfer CopyContent(const FileHandle& source, qint64 size, const std::function<bool()>& goOn);
    /// Appends a range of @p source.
    Transfer CopyRange(const FileHandle& source, qint64 from, qint64 size, const std::function<bool()>& goOn);
    bool Append(const QByteArray& bytes);

    /// Gives it the owner and the group of a file, or the group alone, or neither where the group may do no more than
    /// everybody else. @return false when it must not take that file's place.
    bool CopyOwner(const SFileFacts& facts);
    /// Gives it the extended attributes of a file, access control lists included, and then its permissions; what the
    /// file system refuses is left out, and so are the set-id bits unless owner and group are the same.
    void CopyAttributes(const FileHandle& source, const SFileFacts& facts);
    /// Gives it the access and modification times of a file; a refusal by the file system is no failure.
    void CopyTimes(const SFileFacts& facts);

    /// Makes the disk begin to write what it has not, without waiting, so that a flush finds less to do.
    void StartFlush();
    /// Waits for what StartFlush() began, a few megabytes at most. Only Finish() says whether it succeeded.
    void AwaitFlush();
    /// Flushes and closes it. @return false when some of the content may be missing; then it must not appear.
    bool Finish();
    /// Gives it its name. @return false when it could not, or something that must stay is already there.
    bool Appear(Existing existing);

private:
    bool Clone(const FileHandle& source);
    bool StartWriting();

    const QString destination;
    QString hiddenName; ///< empty once there is no file of that name
    FileHandle handle;
    qint64 size = 0;                      ///< bytes so far
    [[maybe_unused]] qint64 onItsWay = 0; ///< bytes handed to the disk so far
    qint64 written = 0;                   ///< bytes that are on the disk
};
