#include "tags/TagManager.h"

#include "files/FailureLog.h"
#include "files/FilePath.h"
#include "tags/AudioSignature.h"
#include "tags/PieceStream.h"
#include "tags/TagTextRules.h"

#include <QFileInfo>

#include <fileref.h>
#include <tag.h>

#include <algorithm>
#include <exception>

namespace
{
/// How TagLib reads and writes one tag: as text or as a number.
struct STagAccess
{
    Tag::Index index;
    TagLib::String (TagLib::Tag::*text)() const;
    void (TagLib::Tag::*setText)(const TagLib::String&);
    unsigned int (TagLib::Tag::*number)() const;
    void (TagLib::Tag::*setNumber)(unsigned int);
};

/// In the order in which all of them are written.
constexpr std::array<STagAccess, allTags.size()> tagAccess{{
    {Tag::Album, &TagLib::Tag::album, &TagLib::Tag::setAlbum, nullptr, nullptr},
    {Tag::Artist, &TagLib::Tag::artist, &TagLib::Tag::setArtist, nullptr, nullptr},
    {Tag::Title, &TagLib::Tag::title, &TagLib::Tag::setTitle, nullptr, nullptr},
    {Tag::Genre, &TagLib::Tag::genre, &TagLib::Tag::setGenre, nullptr, nullptr},
    {Tag::Year, nullptr, nullptr, &TagLib::Tag::year, &TagLib::Tag::setYear},
    {Tag::Track, nullptr, nullptr, &TagLib::Tag::track, &TagLib::Tag::setTrack},
}};

static_assert(tagAccess.back().index != 0, "a tag lacks its row");

/// Null when @p index names no tag.
const STagAccess* AccessTo(int index)
{
    const auto* const access =
        std::find_if(tagAccess.begin(), tagAccess.end(), [index](const STagAccess& row) { return row.index == index; });
    return access == tagAccess.end() ? nullptr : access;
}

QString Read(const TagLib::Tag& tag, const STagAccess& access)
{
    return access.text ? QString::fromUtf8((tag.*access.text)().toCString(true))
                       : QString::number((tag.*access.number)());
}

void Write(TagLib::Tag& tag, const STagAccess& access, const QString& text)
{
    // Through UTF-8: TagLib's wide strings lose characters above U+FFFF where wchar_t has four bytes.
    const TagLib::String value(text.toStdString(), TagLib::String::UTF8);
    if (access.text)
        (tag.*access.setText)(value);
    else
        (tag.*access.setNumber)(static_cast<unsigned int>(value.toInt()));
}

/// The file systems of macOS take a name in either normalisation form, those of Linux only the stored one.
QString StoredPath(const QString& path)
{
    return QFileInfo::exists(path) ? path : path.normalized(QString::NormalizationForm_D);
}

bool BeginsWithZerosOnly(PieceStream& stream)
{
    constexpr unsigned int blockSize = 1 << 12, blocks = 1 << 10;
    const TagLib::ByteVector zeros(blockSize, '\0');
    unsigned int block = 0;
    while (block < blocks && stream.readBlock(blockSize) == zeros)
        ++block;
    stream.seek(0); // some types are read from where the stream stands
    return block == blocks;
}

TagLib::Tag* TagOf(const TagLib::FileRef& file)
{
    return file.isNull() ? nullptr : file.tag();
}

/// All six tags as they read; without @p tag, "Unknown" for each.
SAudioFile Record(const TagLib::Tag* tag)
{
    SAudioFile record;
    for (const STagAccess& access : tagAccess)
        record.*FieldOf(access.index) = tag ? Read(*tag, access) : unknownTag;
    return record;
}

bool HaveSameTags(const SAudioFile& one, const SAudioFile& other)
{
    return std::all_of(allTags.begin(), allTags.end(),
                       [&](const STag& tag) { return one.*tag.field == other.*tag.field; });
}
} // namespace

TagLib::FileRef TagManager::CreateFileRef(PieceStream& stream, bool readAudioProperties) const
{
    stream.seek(0);
    if (!stream.isOpen() || BeginsWithZerosOnly(stream))
        return TagLib::FileRef();
    const SFoundSignature found = FindSignature(stream.File());
    if (!found.signature) {
        stream.SetName(ExtensionOf(path) == QLatin1String("mp3") ? ".mp3" : "");
        return TagLib::FileRef(&stream, readAudioProperties);
    }
    if (found.signature->needsLayout && !found.Layout(stream.File()))
        return TagLib::FileRef();
    return TagLib::FileRef(found.signature->open(stream, readAudioProperties));
}

QString TagManager::GetInfo(int index) const
{
    return AccessTo(index) ? ReadTags().*FieldOf(index) : unknownTag;
}

bool TagManager::SetInfo(int index, const QString& text) const
{
    return AccessTo(index) && SetTags({{index, text}});
}

bool TagManager::SetTags(const TagValues& values) const
{
    constexpr int attempts = 3;
    bool hasTags = false;
    try {
        for (int attempt = 0; attempt < attempts; ++attempt) {
            PieceStream stream(StoredPath(path), goOn);
            const TagLib::FileRef file = CreateFileRef(stream, false);
            hasTags = TagOf(file);
            if (!hasTags || !Edit(stream, file, values) || stream.File().Save(goOn) != EditedFile::Saved::Overtaken)
                break;
        }
    } catch (const std::exception& error) {
        // Damaged files make TagLib ask for more than there is.
        if (goOn())
            LogFailure(notSaved, path, QString::fromUtf8(error.what()));
    }
    return hasTags;
}

/// Edits @p file, still in memory. @return whether that changes anything and is proven to do no harm.
bool TagManager::Edit(PieceStream& stream, TagLib::FileRef file, const TagValues& values) const
{
    TagLib::Tag& tag = *file.tag();
    bool changed = false;
    for (const auto& [index, text] : values) {
        const STagAccess& access = *AccessTo(index);
        if (Read(tag, access) == text)
            continue;
        Write(tag, access, text);
        changed = true;
    }
    if (!changed)
        return false;
    const auto layoutOf = [](EditedFile& content) { return FindSignature(content).Layout(content); };
    const SFoundSignature found = FindSignature(stream.File());
    const auto before = found.Layout(stream.File());
    const auto refuse = [this](const char* reason) {
        LogFailure(notSaved, path, QLatin1String(reason));
        return false;
    };
    if (!before || found.StartsWithinSound(*file.file()))
        return refuse("Sizes in it contradict what is there");
    if (!file.save())
        return refuse("TagLib could not edit it");
    if (const auto edited = layoutOf(stream.File()))
        CorrectOffsets(*before, *edited, stream.File());
    const auto now = layoutOf(stream.File());
    if (!now || !HasMovedWhole(*before, *now, stream.File()))
        return refuse("The edit would not leave the sound where players look for it");
    if (!HaveSameTags(Record(&tag), Record(TagOf(CreateFileRef(stream, false)))))
        return refuse("The tags would not read back as written");
    return true;
}

SAudioFile TagManager::ReadTags() const
{
    try {
        PieceStream stream(StoredPath(path));
        const TagLib::FileRef file = CreateFileRef(stream, true);
        return Record(TagOf(file));
    } catch (const std::exception&) {
        return Record(nullptr);
    }
}

SAudioFile TagManager::ReadFile(const QString& filePath)
{
    path = filePath;
    SAudioFile record = ReadTags();
    record.Path = filePath;
    return record;
}

void TagManager::WriteFile(const SAudioFile& file)
{
    path = file.Path;
    TagValues values;
    for (const STagAccess& access : tagAccess)
        values.emplace_back(access.index, file.*FieldOf(access.index));
    SetTags(values);
}
