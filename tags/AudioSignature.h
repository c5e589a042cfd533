#pragma once

#include "tags/PieceStream.h"
#include "tags/SoundLayout.h"

namespace TagLib
{
class File;
}

/// A type of audio file that its first bytes identify, whatever its name says.
struct SAudioSignature
{
    QLatin1String bytes; ///< "?" stands for any byte
    TagLib::File* (*open)(PieceStream& stream, bool readAudioProperties);
    std::optional<SSoundLayout> (*layout)(EditedFile& file, qint64 start);
    bool needsLayout = false; ///< by TagLib, which hangs, or worse, on files of this type that have no layout
};

/// What a file is by its own bytes.
struct SFoundSignature
{
    const SAudioSignature* signature; ///< null when it has none
    qint64 start;                     ///< behind leading ID3v2 tags

    /// The layout by this signature; without one, that of MPEG sound, which has none.
    std::optional<SSoundLayout> Layout(EditedFile& file) const;

    /// Whether a wrong size makes the tags before MPEG sound reach into it.
    bool StartsWithinSound(TagLib::File& file) const;
};

SFoundSignature FindSignature(EditedFile& file);
