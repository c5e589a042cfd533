#include "tags/TagTextRules.h"

#include <algorithm>

bool IsInvalidTag(const QString& text)
{
    constexpr const char* addressParts[] = {"www.", "http://", ".com", ".org", ".net", ".fm"};
    return std::any_of(std::begin(addressParts), std::end(addressParts),
                       [&text](const char* part) { return text.contains(QLatin1String(part)); });
}

bool ClearInvalidTags(SAudioFile& file)
{
    bool erased = false;
    for (const STag& tag : allTags) {
        if (IsInvalidTag(file.*tag.field)) {
            (file.*tag.field).clear();
            erased = true;
        }
    }
    return erased;
}

void RemoveTrailingSpaces(QString& text)
{
    auto length = text.size();
    while (length > 0 && text.at(length - 1) == QLatin1Char(' '))
        --length;
    text.truncate(length);
}

void StripOfReservedChars(QString& text)
{
    for (const char reserved : {'/', '\\', '?', '%', '*', ':', '|', '"', '<', '>', '.'})
        text.replace(QLatin1Char(reserved), QLatin1Char(' '));
    RemoveTrailingSpaces(text);
}

QString StrippedOfReservedChars(QString text)
{
    StripOfReservedChars(text);
    return text;
}

QString PrepareForSearch(QString text)
{
    for (char digit = '0'; digit <= '9'; ++digit)
        text.remove(QLatin1Char(digit));
    for (const char separator : {'-', '.', '_', '[', ']'})
        text.replace(QLatin1Char(separator), QLatin1Char(' '));
    text.replace(QLatin1Char(' '), QLatin1Char('+'));
    // Nothing is left to remove here: the blanks have become "+" before the end is trimmed. We keep it so.
    RemoveTrailingSpaces(text);
    return text;
}

bool IsMissing(const SAudioFile& file, const STag& tag)
{
    const QString& text = file.*tag.field;
    return text == QLatin1String(tag.absent) || text == unknownTag;
}

bool IsIncomplete(const SAudioFile& file)
{
    return std::any_of(allTags.begin(), allTags.end(), [&file](const STag& tag) { return IsMissing(file, tag); });
}
