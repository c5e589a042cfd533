#include "tags/PieceStream.h"

#include <limits>
#include <stdexcept>

namespace
{
/// A damaged file may make TagLib name sizes and places that no file has.
template <class Number>
qint64 Bounded(Number number)
{
    constexpr auto most = static_cast<quint64>(std::numeric_limits<qint64>::max());
    return static_cast<qint64>(qMin(static_cast<quint64>(number), most));
}
} // namespace

TagLib::ByteVector PieceStream::readBlock(Length length)
{
    const QByteArray bytes = file.Read(position, Bounded(length));
    position += bytes.size();
    return TagLib::ByteVector(bytes.constData(), static_cast<unsigned int>(bytes.size()));
}

void PieceStream::writeBlock(const TagLib::ByteVector& data)
{
    Replace(position, qMin<qint64>(data.size(), file.Size() - position), data);
    position += data.size();
}

void PieceStream::insert(const TagLib::ByteVector& data, Start start, Length replace)
{
    Replace(Bounded(start), Bounded(replace), data);
    position = Bounded(start) + data.size();
}

void PieceStream::removeBlock(Start start, Length length)
{
    Replace(Bounded(start), Bounded(length), {});
}

void PieceStream::Replace(qint64 start, qint64 count, const TagLib::ByteVector& data)
{
    constexpr qint64 most = 1 << 28; // bytes
    newBytes += data.size();
    if (newBytes > most)
        throw std::length_error("an edit of more than 256 MiB");
    if (!goOn())
        throw std::runtime_error("the edit was stopped");
    file.Replace(start, count, QByteArray(data.data(), static_cast<int>(data.size())));
}

void PieceStream::seek(Offset offset, Position from)
{
    const qint64 base = from == Beginning ? 0 : from == Current ? position : file.Size();
    // Like a real file, it never goes before its beginning.
    if (offset >= -base && offset <= std::numeric_limits<qint64>::max() - base)
        position = base + offset;
}
