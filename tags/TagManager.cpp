#include "tags/TagManager.h"

#include "tags/TagTextRules.h"

#include <QFile>
#include <QFileInfo>

#include <fileref.h>
#include <tag.h>

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace
{
constexpr std::array<Tag::Index, 6> writeOrder{Tag::Album, Tag::Artist, Tag::Title, Tag::Genre, Tag::Year, Tag::Track};

QString FromTagLib(const TagLib::String& text)
{
    return QString::fromUtf8(text.toCString(true));
}

/// By way of UTF-8: TagLib's wide strings lose characters above U+FFFF where wchar_t has four bytes.
TagLib::String ToTagLib(const QString& text)
{
    return TagLib::String(text.toStdString(), TagLib::String::UTF8);
}

/// The text of one tag; @p tag may be null.
QString TagText(const TagLib::Tag* tag, int index)
{
    if (!tag)
        return unknownTag;
    switch (index) {
    case Tag::Artist:
        return FromTagLib(tag->artist());
    case Tag::Title:
        return FromTagLib(tag->title());
    case Tag::Album:
        return FromTagLib(tag->album());
    case Tag::Year:
        return QString::number(tag->year());
    case Tag::Genre:
        return FromTagLib(tag->genre());
    case Tag::Track:
        return QString::number(tag->track());
    default:
        return unknownTag;
    }
}

/// The file systems of macOS take a name in either normalisation form, those of Linux only the stored one.
QString StoredPath(const QString& path)
{
    return QFileInfo::exists(path) ? path : path.normalized(QString::NormalizationForm_D);
}

/// Whether the volume of @p path has room for rewriting that file with @p text in it. TagLib rewrites in place: on a
/// full volume it has been seen to cut the audio off while it reports success.
bool HasRoomToSave(const QString& path, const QString& text)
{
    constexpr std::uintmax_t margin = 4 << 20;          // bytes, for paddings and what other programs write meanwhile
    constexpr std::uintmax_t bytesPerCharacter = 2 * 4; // UTF-8 or UTF-16, in two tags at the most
    const std::filesystem::path file(QFile::encodeName(path).toStdString());
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error)
        return false;
    const std::filesystem::space_info volume = std::filesystem::space(file, error);
    return !error && volume.available >= size + margin + bytesPerCharacter * static_cast<std::uintmax_t>(text.size());
}

const TagLib::Tag* TagOf(const TagLib::FileRef& file)
{
    return file.isNull() ? nullptr : file.tag();
}
} // namespace

TagLib::FileRef TagManager::CreateFileRef() const
{
    const QString stored = StoredPath(path);
    // TagLib would take a folder for an untagged file and wait for ever at a pipe.
    if (!QFileInfo(stored).isFile())
        return TagLib::FileRef();
    return TagLib::FileRef(stored.toUtf8().constData(), true, TagLib::AudioProperties::Average);
}

QString TagManager::GetInfo(int index) const
{
    const TagLib::FileRef file = CreateFileRef();
    return TagText(TagOf(file), index);
}

bool TagManager::SetInfo(int index, const QString& text) const
{
    TagLib::FileRef file = CreateFileRef();
    TagLib::Tag* const tag = file.isNull() ? nullptr : file.tag();
    if (!tag || index < Tag::Artist || index > Tag::Track)
        return false;
    if (TagText(tag, index) == text)
        return true;

    const TagLib::String value = ToTagLib(text);
    switch (index) {
    case Tag::Artist:
        tag->setArtist(value);
        break;
    case Tag::Title:
        tag->setTitle(value);
        break;
    case Tag::Album:
        tag->setAlbum(value);
        break;
    case Tag::Year:
        tag->setYear(static_cast<unsigned int>(value.toInt()));
        break;
    case Tag::Genre:
        tag->setGenre(value);
        break;
    case Tag::Track:
        tag->setTrack(static_cast<unsigned int>(value.toInt()));
        break;
    }
    if (HasRoomToSave(StoredPath(path), text))
        file.save();
    return true;
}

SAudioFile TagManager::ReadFile(const QString& filePath)
{
    path = filePath;
    const TagLib::FileRef file = CreateFileRef();
    SAudioFile record;
    record.Path = filePath;
    for (const STag& tag : allTags)
        record.*tag.field = TagText(TagOf(file), tag.index);
    return record;
}

void TagManager::WriteFile(const SAudioFile& file)
{
    path = file.Path;
    for (const int index : writeOrder)
        SetInfo(index, file.*allTags[static_cast<std::size_t>(index - 1)].field);
}
