#include "tags/TagManager.h"

#include "tags/SafeCopy.h"
#include "tags/TagTextRules.h"

#include <QFile>
#include <QFileInfo>

#include <fileref.h>
#include <tag.h>
#include <taglib.h>
#include <tfilestream.h>
#include <tiostream.h>

#include <algorithm>
#include <memory>

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

/// The name of the file at @p path for the file system; empty when there is no file.
QByteArray StoredName(const QString& path)
{
    QFileInfo file(path);
    // The file systems of macOS take a name in either normalisation form, those of Linux only the stored one.
    if (!file.exists())
        file.setFile(path.normalized(QString::NormalizationForm_D));
    // TagLib would take a folder for an untagged file and wait for ever at a pipe.
    return file.isFile() ? file.filePath().toUtf8() : QByteArray();
}

#if TAGLIB_MAJOR_VERSION >= 2
using Start = TagLib::offset_t;
using Length = size_t;
using Offset = TagLib::offset_t;
#else
using Start = unsigned long; // of a block; other positions have a sign
using Length = unsigned long;
using Offset = long;
#endif

/// What TagLib reads an audio file through and, once it is switched to a copy with the same bytes, writes that copy
/// through: one parsing serves both. It keeps account of how long the copy ought to be: TagLib looks at no write's
/// result.
class SwitchableStream : public TagLib::IOStream
{
public:
    explicit SwitchableStream(const QByteArray& path)
        : stream(std::make_unique<TagLib::FileStream>(path.constData(), true)), expected(stream->length())
    {}

    /// @return false when the copy cannot be opened or is not as long; what is read stays the file then.
    bool SwitchTo(const QByteArray& copy)
    {
        auto next = std::make_unique<TagLib::FileStream>(copy.constData());
        if (next->readOnly() || next->length() != expected)
            return false;
        next->seek(stream->tell());
        stream = std::move(next);
        return true;
    }
    /// Writes everything out. @return how many bytes there should be now.
    qint64 Close()
    {
        stream.reset();
        return expected;
    }

    void writeBlock(const TagLib::ByteVector& data) override
    {
        const auto end = static_cast<qint64>(tell()) + data.size();
        stream->writeBlock(data);
        expected = std::max<qint64>(expected, end);
    }
    void insert(const TagLib::ByteVector& data, Start start, Length replace) override
    {
        stream->insert(data, start, replace);
        expected = LengthWith(data.size(), start, replace);
    }
    void removeBlock(Start start, Length length) override
    {
        stream->removeBlock(start, length);
        expected = LengthWith(0, start, length);
    }
    void truncate(Offset newLength) override
    {
        stream->truncate(newLength);
        expected = newLength;
    }

    TagLib::FileName name() const override { return stream->name(); }
    TagLib::ByteVector readBlock(Length length) override { return stream->readBlock(length); }
    bool readOnly() const override { return stream->readOnly(); }
    bool isOpen() const override { return stream->isOpen(); }
    void seek(Offset offset, Position from) override { stream->seek(offset, from); }
    void clear() override { stream->clear(); }
    Offset tell() const override { return stream->tell(); }
    Offset length() override { return stream->length(); }

private:
    /// The length with @p size bytes in place of the @p replaced ones from @p start on, of which a damaged file may
    /// make TagLib name more than there are.
    qint64 LengthWith(quint64 size, Start start, Length replaced) const
    {
        const auto before = static_cast<quint64>(expected), from = static_cast<quint64>(start);
        const quint64 behind = before > from && before - from > replaced ? before - from - replaced : 0;
        return static_cast<qint64>(from + size + behind);
    }

    std::unique_ptr<TagLib::FileStream> stream;
    qint64 expected;
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
    const QByteArray name = StoredName(path);
    return name.isEmpty() ? TagLib::FileRef()
                          : TagLib::FileRef(name.constData(), true, TagLib::AudioProperties::Average);
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
    constexpr int attempts = 3;
    std::optional<bool> result;
    for (int attempt = 0; attempt < attempts && !result; ++attempt)
        result = TryToWrite(values);
    return result.value_or(true);
}

/// @return nothing when somebody else has changed the file meanwhile.
std::optional<bool> TagManager::TryToWrite(const std::vector<std::pair<int, QString>>& values) const
{
    const QByteArray name = StoredName(path);
    if (name.isEmpty())
        return false;
    SafeCopy copy(QFile::decodeName(name));
    SwitchableStream stream(name);
    {
        TagLib::FileRef file(&stream, false);
        if (!TagOf(file))
            return false;
        int textSize = 0;
        std::vector<std::pair<int, QString>> changes;
        for (const auto& [index, text] : values) {
            if (TagText(file.tag(), index) == text)
                continue;
            changes.emplace_back(index, text);
            textSize += text.size();
        }
        if (changes.empty() || !copy.Make(textSize) || !stream.SwitchTo(copy.Name()))
            return true;
        for (const auto& [index, text] : changes)
            SetTag(*file.tag(), index, text);
        if (!file.save())
            return true;
    }
    return copy.Replace(stream.Close()) ? std::optional(true) : std::nullopt;
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
