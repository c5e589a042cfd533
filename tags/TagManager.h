#pragma once

#include "tags/SAudioFile.h"

#include <functional>
#include <utility>
#include <vector>

class PieceStream;
namespace TagLib
{
class FileRef;
}

/// Tags by their Tag::Index, and the texts to write into them.
using TagValues = std::vector<std::pair<int, QString>>;

/// Reads and writes the six tags of one audio file through TagLib. No file stays open between calls, and no exception
/// leaves it. One object serves one thread.
class TagManager
{
public:
    /// The file to work on; assign another path to go on with another file.
    QString path;

    /// Asked again and again while a file is saved; once it says no, the file stays as it was.
    std::function<bool()> goOn = [] { return true; };

    /// Opens the file of @p stream, which has to outlive the result. Its signature decides the type, because downloads
    /// often have the wrong extension. A file without one is MPEG sound when its name says so, else what TagLib finds
    /// in it. The result is null where sizes in the file contradict each other and TagLib would believe them, or where
    /// the first 4 MiB are zeros that a program has yet to fill.
    TagLib::FileRef CreateFileRef(PieceStream& stream, bool readAudioProperties) const;

    /// The tag with this Tag::Index as text. "Unknown" for a file that cannot be read or has no tags, and for any
    /// other index; an absent tag is empty, or "0" for Year and Track.
    QString GetInfo(int index) const;

    /// Writes one tag and saves the file, as SetTags() does. @return false for any other index, too.
    bool SetInfo(int index, const QString& text) const;

    /// Writes tags in this order and saves the file once. Year and Track store the number that a text begins with, else
    /// 0. A tag that already reads as its text is left alone, so that what plain text cannot express survives: a full
    /// date where the year is, "3/12" where the track is, several artists.
    /// @return false when the file cannot be opened or has no tags. Whether the save succeeded is not reported by
    /// design. A file that cannot be saved whole is left as it was, and so is one whose edit is not proven to keep the
    /// sound, and all that says where it is, and to read as it should.
    bool SetTags(const TagValues& values) const;

    /// The whole record of the file at @p filePath, from one opening; the same texts as six calls of GetInfo().
    SAudioFile ReadFile(const QString& filePath);

    /// Writes all six tags of @p file into the file at its path, as by SetInfo() for each, but saves it once.
    void WriteFile(const SAudioFile& file);

private:
    bool Edit(PieceStream& stream, TagLib::FileRef file, const TagValues& values) const;
    SAudioFile ReadTags() const;
};
