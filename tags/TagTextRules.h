#pragma once

#include "tags/SAudioFile.h"

#include <QString>

/// Whether @p text carries a web address: spam, to be erased. A plain, case-sensitive substring test, so that users can
/// foresee what it takes; spam comes in small letters.
bool IsInvalidTag(const QString& text);

/// Empties the invalid tags of @p file. @return whether there were any.
bool ClearInvalidTags(SAudioFile& file);

/// Removes blanks (U+0020 only, no other white space) from the end of @p text.
void RemoveTrailingSpaces(QString& text);

/// Makes @p text usable as one component of a folder or file name: each reserved character, the full stop among
/// them, becomes a blank; then trailing blanks go. Never pass a name with its extension.
void StripOfReservedChars(QString& text);

/// The same on a copy.
QString StrippedOfReservedChars(QString text);

/// Turns @p text into the query of a search page's address. Trailing "+" stay.
QString PrepareForSearch(QString text);

/// Whether @p file holds nothing for @p tag: the text that an absent tag reads as, or "Unknown".
bool IsMissing(const SAudioFile& file, const STag& tag);

/// Whether any of the six tags of @p file is missing.
bool IsIncomplete(const SAudioFile& file);
