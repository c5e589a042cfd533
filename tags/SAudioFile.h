#pragma once

#include <QLatin1String>
#include <QString>

#include <array>

/// One listed file: its six tags as plain text and its path exactly as it was added.
/// Year and Track hold decimal text, "0" when the file has none.
struct SAudioFile
{
    QString Title;
    QString Artist;
    QString Album;
    QString Year;
    QString Genre;
    QString Track;
    QString Path;
};

using TagField = QString SAudioFile::*;

/// The numbers by which single tags are addressed everywhere: the order in which they are shown, not that of the
/// record's fields.
namespace Tag
{
enum Index { Artist = 1, Title, Album, Year, Genre, Track };
}

/// What every tag reads as when a file cannot be read or carries no tags. A name with this text in it is refused. The
/// length is given because Qt 5 would count it by strlen(), which Clang does not evaluate in a constant.
inline constexpr QLatin1String unknownTag("Unknown", 7);

/// What the program knows of one tag.
struct STag
{
    int index;           ///< its Tag::Index
    const char* name;    ///< its caption; in a preview, it also stands for the tag where that is missing
    TagField field;      ///< where a record keeps it
    const char* absent;  ///< the text that a file without this tag reads as
    const char* standIn; ///< what folders and files are named after once the user has left the tag missing
};

/// The six tags in the order of their index, which is also the order in which they are shown.
constexpr std::array<STag, 6> allTags{{
    {Tag::Artist, "Artist", &SAudioFile::Artist, "", unknownTag.data()},
    {Tag::Title, "Title", &SAudioFile::Title, "", unknownTag.data()},
    {Tag::Album, "Album", &SAudioFile::Album, "", "Album"},
    {Tag::Year, "Year", &SAudioFile::Year, "0", "Year"},
    {Tag::Genre, "Genre", &SAudioFile::Genre, "", "Genre"},
    {Tag::Track, "Track", &SAudioFile::Track, "0", "Track"},
}};

/// Where a record keeps the tag with this Tag::Index.
constexpr TagField FieldOf(int index)
{
    return allTags[static_cast<std::size_t>(index - 1)].field;
}
