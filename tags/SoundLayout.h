#pragma once

#include "files/EditedFile.h"

#include <optional>
#include <vector>

/// Where a file keeps its sound and what tells players where that is: all that an edit of its tags has to leave whole.
struct SSoundLayout
{
    struct SRange
    {
        qint64 start, size;
    };
    /// A position in the file that the file itself names; it has to move with what it points to.
    struct SOffset
    {
        qint64 target;
        qint64 at = 0;    ///< where the number is
        int size = 0;     ///< of the number, which is big-endian, in bytes; 0 when it is not one that can be corrected
        int distance = 0; ///< from the number to the position from which it counts; 0 for the beginning of the file
    };
    std::vector<SRange> ranges; ///< bytes that stay together as they are, in the order of the file
    std::vector<SOffset> offsets;
    bool mayMove = true; ///< false when it names positions that we do not know how to follow
};

/// Each takes the layout of a file of one type, which begins at @p start: a leading ID3v2 tag is before that.
/// @return nothing when sizes in the file contradict what is there.
std::optional<SSoundLayout> Mp4Layout(EditedFile& file, qint64 start);
std::optional<SSoundLayout> RiffLayout(EditedFile& file, qint64 start); ///< of AIFF's FORM, too
std::optional<SSoundLayout> FlacLayout(EditedFile& file, qint64 start);
std::optional<SSoundLayout> OggLayout(EditedFile& file, qint64 start);
std::optional<SSoundLayout> AsfLayout(EditedFile& file, qint64 start);
/// For all types whose tags are before the sound (ID3v2) and behind it (APE, ID3v1).
std::optional<SSoundLayout> TaggedAtEndsLayout(EditedFile& file, qint64 start);

/// Corrects the offsets in @p edited that no longer point to their targets: in a fragmented mp4 file, TagLib corrects
/// only those of the first fragment. @p before and @p now are its layouts without the edits and with them.
void CorrectOffsets(const SSoundLayout& before, const SSoundLayout& now, EditedFile& edited);

/// Whether @p now is @p before with everything where its bytes have gone.
bool HasMovedWhole(const SSoundLayout& before, const SSoundLayout& now, const EditedFile& edited);
