#include "tags/AudioSignature.h"

#include <aifffile.h>
#include <apefile.h>
#include <asffile.h>
#include <flacfile.h>
#include <id3v2framefactory.h>
#include <mp4file.h>
#include <mpcfile.h>
#include <mpegheader.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <speexfile.h>
#include <trueaudiofile.h>
#include <vorbisfile.h>
#include <wavfile.h>
#include <wavpackfile.h>

#include <algorithm>

namespace
{
template <class Type>
TagLib::File* Open(PieceStream& stream, bool readAudioProperties)
{
    return new Type(&stream, readAudioProperties);
}

#if TAGLIB_MAJOR_VERSION < 2
template <>
TagLib::File* Open<TagLib::FLAC::File>(PieceStream& stream, bool readAudioProperties)
{
    return new TagLib::FLAC::File(&stream, TagLib::ID3v2::FrameFactory::instance(), readAudioProperties);
}
#endif

/// Ogg holds several types of sound; TagLib tells them apart.
TagLib::File* OpenOgg(PieceStream& stream, bool readAudioProperties)
{
    if (TagLib::Ogg::Vorbis::File::isSupported(&stream))
        return Open<TagLib::Ogg::Vorbis::File>(stream, readAudioProperties);
    if (TagLib::Ogg::FLAC::File::isSupported(&stream))
        return Open<TagLib::Ogg::FLAC::File>(stream, readAudioProperties);
    if (TagLib::Ogg::Speex::File::isSupported(&stream))
        return Open<TagLib::Ogg::Speex::File>(stream, readAudioProperties);
    if (TagLib::Ogg::Opus::File::isSupported(&stream))
        return Open<TagLib::Ogg::Opus::File>(stream, readAudioProperties);
    return nullptr;
}

TagLib::File* OpenNothing(PieceStream&, bool)
{
    return nullptr;
}

const SAudioSignature signatures[] = {
    {QLatin1String("RIFF????WAVE"), Open<TagLib::RIFF::WAV::File>, RiffLayout},
    {QLatin1String("FORM????AIFF"), Open<TagLib::RIFF::AIFF::File>, RiffLayout},
    {QLatin1String("FORM????AIFC"), Open<TagLib::RIFF::AIFF::File>, RiffLayout},
    {QLatin1String("fLaC"), Open<TagLib::FLAC::File>, FlacLayout},
    {QLatin1String("OggS"), OpenOgg, OggLayout},
    {QLatin1String("????ftyp"), Open<TagLib::MP4::File>, Mp4Layout, true},
    // Old QuickTime files have no ftyp.
    {QLatin1String("????moov"), Open<TagLib::MP4::File>, Mp4Layout, true},
    {QLatin1String("????mdat"), Open<TagLib::MP4::File>, Mp4Layout, true},
    {QLatin1String("????wide"), Open<TagLib::MP4::File>, Mp4Layout, true},
    {QLatin1String("????free"), Open<TagLib::MP4::File>, Mp4Layout, true},
    {QLatin1String("????skip"), Open<TagLib::MP4::File>, Mp4Layout, true},
    {QLatin1String("wvpk"), Open<TagLib::WavPack::File>, TaggedAtEndsLayout},
    {QLatin1String("MPCK"), Open<TagLib::MPC::File>, TaggedAtEndsLayout},
    {QLatin1String("MP+"), Open<TagLib::MPC::File>, TaggedAtEndsLayout},
    {QLatin1String("MAC "), Open<TagLib::APE::File>, TaggedAtEndsLayout},
    {QLatin1String("TTA1"), Open<TagLib::TrueAudio::File>, TaggedAtEndsLayout},
    {QLatin1String("\x30\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9\0\xaa\0\x62\xce\x6c", 16), Open<TagLib::ASF::File>,
     AsfLayout},
    // None of ours. An mp3 is what nothing else claims, so that TagLib would find one in these.
    {QLatin1String("RF64"), OpenNothing, TaggedAtEndsLayout},
    {QLatin1String("riff"), OpenNothing, TaggedAtEndsLayout}, // Wave64
    {QLatin1String(".snd"), OpenNothing, TaggedAtEndsLayout},
    {QLatin1String("caff"), OpenNothing, TaggedAtEndsLayout},
    {QLatin1String("\x1A\x45\xDF\xA3"), OpenNothing, TaggedAtEndsLayout}, // Matroska and WebM
};

bool Matches(const QByteArray& head, QLatin1String bytes)
{
    return head.size() >= bytes.size() &&
           std::equal(bytes.begin(), bytes.end(), head.begin(),
                      [](char wanted, char is) { return wanted == '?' || wanted == is; });
}

/// The end of the ID3v2 tags that a file begins with (id3.org, ID3v2.4.0, 3.1).
qint64 EndOfLeadingTags(EditedFile& file)
{
    constexpr int most = 16, headerSize = 10, footerFlag = 0x10;
    qint64 position = 0;
    for (int tag = 0; tag < most; ++tag) {
        const QByteArray header = file.Read(position, headerSize);
        if (header.size() < headerSize || !header.startsWith("ID3"))
            break;
        qint64 size = 0;
        for (const char sevenBits : header.mid(6))
            size = size << 7 | (sevenBits & 0x7F);
        position += headerSize + size + (header.at(5) & footerFlag ? headerSize : 0);
    }
    return position;
}
} // namespace

SFoundSignature FindSignature(EditedFile& file)
{
    const qint64 start = EndOfLeadingTags(file);
    const QByteArray head = file.Read(start, 16);
    const auto* const found = std::find_if(std::begin(signatures), std::end(signatures),
                                           [&head](const SAudioSignature& row) { return Matches(head, row.bytes); });
    return {found == std::end(signatures) ? nullptr : found, start};
}

std::optional<SSoundLayout> SFoundSignature::Layout(EditedFile& file) const
{
    return signature ? signature->layout(file, start) : TaggedAtEndsLayout(file, qMin(start, file.Size()));
}

bool SFoundSignature::StartsWithinSound(TagLib::File& file) const
{
    // In bytes: 160 kbit/s at 8 kHz, and a byte of padding (ISO/IEC 11172-3, 2.4.3.1, as MPEG 2.5 extends it).
    constexpr qint64 longestFrame = 2881;
    if (signature)
        return false;
    const qint64 from = qMax<qint64>(start - longestFrame, 0);
    file.seek(static_cast<PieceStream::Offset>(from));
    const TagLib::ByteVector bytes = file.readBlock(static_cast<PieceStream::Length>(start - from));
    for (int at = bytes.find('\xFF'); at >= 0; at = bytes.find('\xFF', static_cast<unsigned int>(at) + 1)) {
        const TagLib::MPEG::Header header(&file, static_cast<PieceStream::Offset>(from + at));
        if (header.isValid() && from + at + header.frameLength() >= start)
            return true;
    }
    return false;
}
