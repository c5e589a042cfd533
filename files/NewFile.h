#pragma once

#include "files/FileHandle.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// A file that appears whole or not at all: it is written under a hidden name, `.orvanto-` and six characters, in the
/// folder where it will appear, and gets its name last. Until it has appeared, it is removed with this object; only a
/// killed program leaves it there.
class NewFile
{
public:
    /// How it appears when there is something at its destination by then.
    enum class Existing { Keep, Replace };
    enum class Transfer { Done, Failed, Stopped };

    /// Makes it for @p destination, which is not looked at. A new file's permissions are @p mode less the user's mask.
    explicit NewFile(const QString& destination, mode_t mode = 0600);
    ~NewFile();
    Q_DISABLE_COPY(NewFile)

    /// False when the folder does not take it.
    bool IsOpen() const { return handle.IsOpen(); }

    /// Makes it share the content of @p source, where the file system can do that, or copies it. It asks
    /// @p goOn before each step and gives up on a no.
    Transfer CopyContent(const FileHandle& source, qint64 size, const std::function<bool()>& goOn);
    /// Appends a range of @p source.
    Transfer CopyRange(const FileHandle& source, qint64 from, qint64 size, const std::function<bool()>& goOn);
    bool Append(const QByteArray& bytes);

    /// Gives it the owner and the group of a file, or the group alone. @return false when neither can be given.
    bool TakeOwner(const SFileFacts& facts);
    /// Gives it the extended attributes, among them access control lists, and then the permissions of a file; what the
    /// disk refuses is left out.
    void TakeAttributes(const FileHandle& source, const SFileFacts& facts);
    /// Gives it the time of modification of a file; no failure where the disk refuses.
    void TakeTime(const SFileFacts& facts);

    /// Flushes and closes it. @return false when something of the content may be missing; it must not appear then.
    bool Finish();
    /// Gives it its name. @return false when it could not, or something that must stay is already there.
    bool Appear(Existing existing);

private:
    bool Clone(const FileHandle& source);
    bool StartWriting();

    const QByteArray destination;
    QByteArray hiddenName; ///< empty once there is no file of that name
    FileHandle handle;
    qint64 size = 0;                      ///< bytes so far
    [[maybe_unused]] qint64 onItsWay = 0; ///< bytes that were handed to the disk
    qint64 written = 0;                   ///< bytes that the disk has
};
