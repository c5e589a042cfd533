#pragma once

#include "tags/SAudioFile.h"

#include <optional>
#include <utility>
#include <vector>

namespace TagLib
{
class FileRef;
}

/// Reads and writes the six tags of one audio file through TagLib; nothing else in the program touches TagLib.
/// No file stays open between calls. One object serves one thread.
class TagManager
{
public:
    /// The file to work on; assign another path to go on with another file.
    QString path;

    TagLib::FileRef CreateFileRef() const;

    /// The tag with this Tag::Index as text. "Unknown" for a file that cannot be read or has no tags, and for any
    /// other index; an absent tag is empty, or "0" for Year and Track.
    QString GetInfo(int index) const;

    /// Writes one tag and saves the file. Year and Track store the number that @p text begins with, else 0.
    /// A tag that already reads as @p text is left alone, so that what plain text cannot express survives: a full
    /// date behind the year, "3/12" behind the track, several artists.
    /// @return false when the file cannot be opened, has no tags, or @p index names none. Whether the save succeeded
    /// is not told by design; a file that cannot be saved whole is left as it was.
    bool SetInfo(int index, const QString& text) const;

    /// The whole record of the file at @p filePath, from one opening; the same texts as six calls of GetInfo().
    SAudioFile ReadFile(const QString& filePath);

    /// Writes all six tags of @p file into the file at its path, as by SetInfo() for each, but saves it once.
    void WriteFile(const SAudioFile& file);

private:
    bool Write(const std::vector<std::pair<int, QString>>& values) const;
    std::optional<bool> TryToWrite(const std::vector<std::pair<int, QString>>& values) const;
};
