#pragma once

#include "naming/SRunSettings.h"
#include "tags/SAudioFile.h"

#include <QStringList>

#include <array>

/// One "Organize by" choice: its label, which is also the folder pattern of the preview, and the tag of each folder
/// level from the top down (null beyond the last).
struct SOrganizeChoice
{
    const char* label;
    std::array<TagField, 3> levels;
};

/// Append rows only: profiles store the index.
constexpr std::array<SOrganizeChoice, 16> organizeChoices{{
    {"Don't organize", {}},
    {"Artist", {&SAudioFile::Artist}},
    {"Artist/Album", {&SAudioFile::Artist, &SAudioFile::Album}},
    {"Artist/Year", {&SAudioFile::Artist, &SAudioFile::Year}},
    {"Year", {&SAudioFile::Year}},
    {"Year/Artist", {&SAudioFile::Year, &SAudioFile::Artist}},
    {"Year/Genre", {&SAudioFile::Year, &SAudioFile::Genre}},
    {"Year/Genre/Artist", {&SAudioFile::Year, &SAudioFile::Genre, &SAudioFile::Artist}},
    {"Genre", {&SAudioFile::Genre}},
    {"Genre/Artist", {&SAudioFile::Genre, &SAudioFile::Artist}},
    {"Genre/Artist/Album", {&SAudioFile::Genre, &SAudioFile::Artist, &SAudioFile::Album}},
    {"Genre/Artist/Year", {&SAudioFile::Genre, &SAudioFile::Artist, &SAudioFile::Year}},
    {"Genre/Year", {&SAudioFile::Genre, &SAudioFile::Year}},
    {"Genre/Year/Artist", {&SAudioFile::Genre, &SAudioFile::Year, &SAudioFile::Artist}},
    {"Album", {&SAudioFile::Album}},
    {"Album/Artist", {&SAudioFile::Album, &SAudioFile::Artist}},
}};

/// One "Rename" choice: its label and the rename scheme that it stands for. The first and the last have none of their
/// own: the file keeps its name, or the user's custom scheme applies.
struct SRenameChoice
{
    const char* label;
    const char* scheme;
};

constexpr int originalNameIndex = 0;
constexpr int customRenameIndex = 6;
/// Append rows only: profiles store the index.
constexpr std::array<SRenameChoice, 7> renameChoices{{
    {"Original name", nullptr},
    {"Title", "[Title]"},
    {"Artist-Title", "[Artist]-[Title]"},
    {"Artist-Title (Year)", "[Artist]-[Title] ([Year])"},
    {"Artist-Title (Album)", "[Artist]-[Title] ([Album])"},
    {"Artist-Title (Album - Year)", "[Artist]-[Title] ([Album] - [Year])"},
    {"Custom", nullptr},
}};

/// The row of the table at this index, which may be any number; null when there is none.
const SOrganizeChoice* OrganizeChoiceAt(int organizeBy);

/// Expands the placeholders "[Artist]" to "[Track]" of @p scheme in one scan. Other bracketed words, an unclosed "["
/// and everything else stay as they are; values are inserted as passed in.
QString GenerateFileNameFromRenameScheme(const QString& scheme, const QString& artist, const QString& title,
                                         const QString& album, const QString& year, const QString& genre,
                                         const QString& track);

/// The new name of @p file without extension, free of reserved characters; empty for an index outside the table.
QString BuildFileName(const SAudioFile& file, int renameIndex, const QString& customScheme);

/// The tags that name the folders of @p file, top down and as they are; none for an index outside the table.
QStringList FolderTags(const SAudioFile& file, int organizeBy);

/// @p folder without the slashes at its end, as a run takes the output folder. The root becomes empty.
QString WithoutTrailingSlashes(QString folder);

/// The folder of the output tree for these tags: @p outputFolder, then "/" and the tag without reserved characters
/// for each level. Since "/" and "." are reserved, no tag can lead out of @p outputFolder.
QString BuildFolderPath(const QString& outputFolder, const QStringList& folderTags);

/// Where a run puts @p file, once its tags are fixed and stand-ins are put. settings.outputFolder has no trailing "/".
QString BuildOutputPath(const SAudioFile& file, const SRunSettings& settings);

/// The name without extension that the preview shows for @p file: like the real one, but with the captions of missing
/// tags in their place.
QString BuildPreviewFileName(SAudioFile file, const SRunSettings& settings);

/// What the preview shows as the output path of @p file, with @p fileName as its name. It ignores both "Unknown" and
/// settings.skipOrganize.
QString BuildPreviewPath(const SAudioFile& file, const SRunSettings& settings, const QString& fileName);
