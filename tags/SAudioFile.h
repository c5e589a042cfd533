#pragma once

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

/// The numbers by which single tags are addressed everywhere. They differ on purpose from the record's field order.
namespace Tag
{
enum Index { Artist = 1, Title, Album, Year, Genre, Track };
}

/// What the program knows of one tag.
struct STag
{
    int index;          ///< its Tag::Index
    const char* name;   ///< its caption; also the placeholder that stands for it in a preview
    TagField field;     ///< where a record keeps it
    const char* absent; ///< the text that a file without this tag reads as
};

/// The six tags in the order of their index, which is also the order in which they are shown.
constexpr std::array<STag, 6> allTags{{
    {Tag::Artist, "Artist", &SAudioFile::Artist, ""},
    {Tag::Title, "Title", &SAudioFile::Title, ""},
    {Tag::Album, "Album", &SAudioFile::Album, ""},
    {Tag::Year, "Year", &SAudioFile::Year, "0"},
    {Tag::Genre, "Genre", &SAudioFile::Genre, ""},
    {Tag::Track, "Track", &SAudioFile::Track, "0"},
}};
