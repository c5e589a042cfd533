#include "tags/TagManager.h"

#include "tags/TagTextRules.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fileref.h>
#include <tag.h>
#include <taglib.h>
#include <tfilestream.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
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
QFileInfo StoredFile(const QString& path)
{
    QFileInfo file(path);
    if (!file.exists())
        file.setFile(path.normalized(QString::NormalizationForm_D));
    return file;
}

#if TAGLIB_MAJOR_VERSION >= 2
using Offset = TagLib::offset_t;
using Length = size_t;
using NewLength = TagLib::offset_t;
#else
using Offset = unsigned long;
using Length = unsigned long;
using NewLength = long;
#endif

/// A file stream that keeps account of how long the file ought to be: TagLib looks at no write's result.
class CountingStream : public TagLib::FileStream
{
public:
    explicit CountingStream(const char* name) : TagLib::FileStream(name), expected(length()) {}

    void writeBlock(const TagLib::ByteVector& data) override
    {
        const auto end = static_cast<qint64>(tell()) + data.size();
        TagLib::FileStream::writeBlock(data);
        expected = std::max<qint64>(expected, end);
    }
    void insert(const TagLib::ByteVector& data, Offset start, Length replace) override
    {
        // A damaged file may make TagLib replace more than there is.
        const auto before = static_cast<quint64>(expected);
        const auto from = static_cast<quint64>(start);
        const quint64 replaced = std::min<quint64>(replace, before > from ? before - from : 0);
        TagLib::FileStream::insert(data, start, replace);
        expected = static_cast<qint64>(before + data.size() - replaced);
    }
    void truncate(NewLength newLength) override // removing a block ends with this, too
    {
        TagLib::FileStream::truncate(newLength);
        expected = newLength;
    }

    qint64 Expected() const { return expected; } // bytes

private:
    qint64 expected;
};

/// A copy of an audio file to write tags into, in a hidden folder beside it (hidden folders never join the list).
/// TagLib rewrites in place, where a crash or a full volume cuts the audio off; so the copy is written, and replaces
/// the file in one step when it is whole.
class SafeCopy
{
public:
    explicit SafeCopy(const QString& path)
        : original(QFileInfo(path).canonicalFilePath()),
          folder(QFileInfo(original).path() + QStringLiteral("/.orvanto-XXXXXX")),
          copy(folder.filePath(QFileInfo(original).fileName()))
    {}

    QByteArray Name() const { return QFile::encodeName(copy); }

    /// Makes the copy. @return false when the file is not to be written, or its volume has no room for one as large
    /// with @p textSize more characters: even then TagLib would report success.
    bool Make(int textSize) const
    {
        constexpr std::uintmax_t margin = 4 << 20;          // bytes, for paddings and what others write meanwhile
        constexpr std::uintmax_t bytesPerCharacter = 2 * 4; // UTF-8 or UTF-16, in two tags at the most
        const std::filesystem::path from(QFile::encodeName(original).toStdString());
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(from, error);
        const std::uintmax_t available = error ? 0 : std::filesystem::space(from, error).available;
        return !error && available >= size + margin + bytesPerCharacter * static_cast<std::uintmax_t>(textSize) &&
               QFileInfo(original).isWritable() && folder.isValid() &&
               std::filesystem::copy_file(from, Name().toStdString(), error);
    }

    /// Puts the copy in the file's place, with the same owner where we may give files away, unless it is not
    /// @p expectedSize bytes long. It is on the disk before: a power cut must not leave an empty file.
    void Replace(qint64 expectedSize) const
    {
        const QByteArray name = QFile::encodeName(original);
        struct stat status;
        [[maybe_unused]] const bool sameOwner =
            stat(name.constData(), &status) == 0 && chown(Name().constData(), status.st_uid, status.st_gid) == 0;
        QFile file(copy);
        if (file.open(QIODevice::ReadOnly) && file.size() == expectedSize && fsync(file.handle()) == 0)
            std::rename(Name().constData(), name.constData());
    }

private:
    const QString original;
    const QTemporaryDir folder;
    const QString copy;
};

void SetTag(TagLib::Tag& tag, int index, const QString& text)
{
    const TagLib::String value = ToTagLib(text);
    switch (index) {
    case Tag::Artist:
        tag.setArtist(value);
        break;
    case Tag::Title:
        tag.setTitle(value);
        break;
    case Tag::Album:
        tag.setAlbum(value);
        break;
    case Tag::Year:
        tag.setYear(static_cast<unsigned int>(value.toInt()));
        break;
    case Tag::Genre:
        tag.setGenre(value);
        break;
    case Tag::Track:
        tag.setTrack(static_cast<unsigned int>(value.toInt()));
        break;
    }
}

const TagLib::Tag* TagOf(const TagLib::FileRef& file)
{
    return file.isNull() ? nullptr : file.tag();
}
} // namespace

TagLib::FileRef TagManager::CreateFileRef() const
{
    const QFileInfo stored = StoredFile(path);
    // TagLib would take a folder for an untagged file and wait for ever at a pipe.
    if (!stored.isFile())
        return TagLib::FileRef();
    return TagLib::FileRef(stored.filePath().toUtf8().constData(), true, TagLib::AudioProperties::Average);
}

QString TagManager::GetInfo(int index) const
{
    const TagLib::FileRef file = CreateFileRef();
    return TagText(TagOf(file), index);
}

bool TagManager::SetInfo(int index, const QString& text) const
{
    return index >= Tag::Artist && index <= Tag::Track && Write({{index, text}});
}

/// Sets tags in this order and saves the file, both only if any of them reads differently now.
/// @return false when the file cannot be opened or has no tags.
bool TagManager::Write(const std::vector<std::pair<int, QString>>& values) const
{
    std::vector<std::pair<int, QString>> changes;
    {
        const TagLib::FileRef file = CreateFileRef();
        const TagLib::Tag* const tag = TagOf(file);
        if (!tag)
            return false;
        std::copy_if(values.begin(), values.end(), std::back_inserter(changes),
                     [tag](const auto& value) { return TagText(tag, value.first) != value.second; });
    }
    if (changes.empty())
        return true;
    int textSize = 0;
    for (const auto& [index, text] : changes)
        textSize += text.size();
    const SafeCopy copy(StoredFile(path).filePath());
    if (!copy.Make(textSize))
        return true;

    bool saved = false;
    qint64 expected = 0;
    {
        CountingStream stream(copy.Name().constData());
        TagLib::FileRef file(&stream, false);
        if (!file.isNull() && file.tag()) {
            for (const auto& [index, text] : changes)
                SetTag(*file.tag(), index, text);
            saved = file.save();
        }
        expected = stream.Expected();
    }
    if (saved)
        copy.Replace(expected);
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
    std::vector<std::pair<int, QString>> values;
    values.reserve(writeOrder.size());
    for (const int index : writeOrder)
        values.emplace_back(index, file.*allTags[static_cast<std::size_t>(index - 1)].field);
    Write(values);
}
