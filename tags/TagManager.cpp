#include "tags/TagManager.h"

#include "tags/PieceStream.h"
#include "tags/TagTextRules.h"

#include <QFile>
#include <QFileInfo>

#include <fileref.h>
#include <tag.h>

#include <algorithm>

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

/// The name of a type for a file that begins as a container; empty for others. TagLib would take MPEG sound that it
/// finds near the beginning of one for the whole file.
const char* ContainerName(PieceStream& stream)
{
    const TagLib::ByteVector head = stream.readBlock(12);
    stream.seek(0);
    if (head.startsWith("RIFF") && head.containsAt("WAVE", 8))
        return ".wav";
    return head.containsAt("ftyp", 4) ? ".mp4" : "";
}

TagLib::Tag* TagOf(const TagLib::FileRef& file)
{
    return file.isNull() ? nullptr : file.tag();
}
} // namespace

TagLib::FileRef TagManager::CreateFileRef(PieceStream& stream, bool readAudioProperties) const
{
    stream.seek(0);
    if (!stream.isOpen() || BeginsWithZerosOnly(stream))
        return TagLib::FileRef();
    stream.SetName(ContainerName(stream));
    const TagLib::FileRef byContent(&stream, readAudioProperties, TagLib::AudioProperties::Average);
    if (!byContent.isNull())
        return byContent;
    stream.seek(0);
    stream.SetName(QFile::encodeName(path));
    return TagLib::FileRef(&stream, readAudioProperties, TagLib::AudioProperties::Average);
}

QString TagManager::GetInfo(int index) const
{
    const STagAccess* const access = AccessTo(index);
    PieceStream stream(StoredPath(path));
    const TagLib::FileRef file = CreateFileRef(stream, true);
    const TagLib::Tag* const tag = TagOf(file);
    return tag && access ? Read(*tag, *access) : unknownTag;
}

bool TagManager::SetInfo(int index, const QString& text) const
{
    return AccessTo(index) && SetTags({{index, text}});
}

bool TagManager::SetTags(const TagValues& values) const
{
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        PieceStream stream(StoredPath(path), goOn);
        TagLib::FileRef file = CreateFileRef(stream, false);
        TagLib::Tag* const tag = TagOf(file);
        if (!tag)
            return false;
        bool changed = false;
        for (const auto& [index, text] : values) {
            const STagAccess& access = *AccessTo(index);
            if (Read(*tag, access) == text)
                continue;
            Write(*tag, access, text);
            changed = true;
        }
        // What TagLib itself could not read afterwards is not saved: a text too long for its format, for example.
        if (!changed || !file.save() || !TagOf(CreateFileRef(stream, false)) ||
            stream.File().Save(goOn) != EditedFile::Saved::Overtaken)
            break;
    }
    return true;
}

SAudioFile TagManager::ReadFile(const QString& filePath)
{
    path = filePath;
    PieceStream stream(StoredPath(path));
    const TagLib::FileRef file = CreateFileRef(stream, true);
    const TagLib::Tag* const tag = TagOf(file);
    SAudioFile record;
    record.Path = filePath;
    for (const STagAccess& access : tagAccess)
        record.*FieldOf(access.index) = tag ? Read(*tag, access) : unknownTag;
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
