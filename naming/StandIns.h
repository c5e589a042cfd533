#pragma once

#include "tags/SAudioFile.h"

// What names show for the tags that a file lacks. The preview says which tag is missing; the worker needs a text that
// it can refuse.

/// The worker's rule, once the user has left tags missing: each absent tag becomes its stand-in. The worker refuses a
/// name with the stand-in for artist or title.
void PutStandIns(SAudioFile& file);
/// Undoes this in a file that is refused: a tag that reads as its stand-in becomes absent.
void RemoveStandIns(SAudioFile& file);

/// The preview's rule: a missing tag shows as its caption, but a missing track stays "0".
void PutPreviewCaptions(SAudioFile& file);
