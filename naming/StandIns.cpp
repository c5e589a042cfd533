#include "naming/StandIns.h"

void PutStandIns(SAudioFile& file)
{
    for (const STag& tag : allTags) {
        if (file.*tag.field == QLatin1String(tag.absent))
            file.*tag.field = QLatin1String(tag.standIn);
    }
}

void RemoveStandIns(SAudioFile& file)
{
    for (const STag& tag : allTags) {
        if (file.*tag.field == QLatin1String(tag.standIn))
            file.*tag.field = QLatin1String(tag.absent);
    }
}

void PutPreviewCaptions(SAudioFile& file)
{
    for (const STag& tag : allTags) {
        const QLatin1String missing(tag.index == Tag::Track ? "" : tag.absent);
        if (file.*tag.field == missing)
            file.*tag.field = QLatin1String(tag.name);
    }
}
