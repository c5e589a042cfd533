#pragma once

#include "files/EditedFile.h"

#include <QByteArray>
#include <QString>

#include <taglib.h>
#include <tiostream.h>

#include <functional>

/// The types that TagLib has for places in a stream.
namespace StreamNumbers
{
#if TAGLIB_MAJOR_VERSION >= 2
using Start = TagLib::offset_t;
using Length = size_t;
using Offset = TagLib::offset_t;
#else
using Start = unsigned long; // of a block; other positions have a sign
using Length = unsigned long;
using Offset = long;
#endif
} // namespace StreamNumbers

/// What TagLib reads an audio file through and edits it in: every edit stays in memory until File() is saved. An edit
/// throws when it is told not to go on, or when the edits exceed 256 MiB, as only a damaged file makes TagLib ask for.
class PieceStream : public TagLib::IOStream
{
public:
    using Start = StreamNumbers::Start;
    using Length = StreamNumbers::Length;
    using Offset = StreamNumbers::Offset;
    using GoOn = std::function<bool()>;
    explicit PieceStream(
        const QString& path, const GoOn& mayGoOn = [] { return true; })
        : file(path), goOn(mayGoOn)
    {}

    EditedFile& File() { return file; }

    /// The name by which TagLib chooses a type. Without one, it looks at the content.
    void SetName(const QByteArray& newName) { typeName = newName; }

    TagLib::FileName name() const override { return typeName.constData(); }
    TagLib::ByteVector readBlock(Length length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, Start start, Length replace) override;
    void removeBlock(Start start, Length length) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return file.IsOpen(); }
    void seek(Offset offset, Position from = Beginning) override;
    Offset tell() const override { return static_cast<Offset>(position); }
    Offset length() override { return static_cast<Offset>(file.Size()); }
    void truncate(Offset length) override { file.Truncate(length); }

private:
    void Replace(qint64 start, qint64 count, const TagLib::ByteVector& data);

    EditedFile file;
    const GoOn goOn;
    QByteArray typeName;
    qint64 position = 0;
    qint64 newBytes = 0; ///< how many were written so far
};
