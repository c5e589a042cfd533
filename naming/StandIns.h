#pragma once

#include "tags/SAudioFile.h"

/// What names show for the tags that a file lacks. The worker and the preview do it differently on purpose.

/// The worker's rule, once the user has left tags missing: each absent tag becomes its stand-in. That of the artist and
/// of the title makes the name one that is refused.
void PutStandIns(SAudioFile& file);
/// Undoes it in a file that is refused: a tag that reads as its stand-in becomes absent.
void TakeStandInsBack(SAudioFile& file);

/// The preview's rule: a missing tag shows as its caption, but a missing track stays "0".
void PutPreviewCaptions(SAudioFile& file);
