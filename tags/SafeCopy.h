#pragma once

#include <QString>
#include <QTemporaryFile>

#include <sys/stat.h>

#include <filesystem>

/// A hidden copy beside an audio file, to write tags into. TagLib rewrites in place, where a crash or a full volume
/// cuts the audio off; so the copy is written, and replaces the file in one step when it is whole. A copy that has not
/// replaced its file goes with this object.
class SafeCopy
{
public:
    /// Makes nothing yet, but notes when the file at @p path was last changed: read it after that.
    explicit SafeCopy(const QString& path);

    /// Makes the copy. @return false when the file is not to be written, or its volume has no room for one as large
    /// with @p textSize more characters: even then TagLib would report success.
    bool Make(int textSize);

    /// The copy's encoded path.
    QByteArray Name() const;

    /// Puts the copy in the file's place, with the same owner where we may give files away, unless it is not
    /// @p expectedSize bytes long. @return false when somebody else has changed the file meanwhile: read it again then.
    bool Replace(qint64 expectedSize);

private:
    const std::filesystem::path original;
    struct stat before = {}; ///< the file's status when this was made
    QTemporaryFile copy;
};
