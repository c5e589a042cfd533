#include "files/FilePath.h"
#include "naming/OutputPath.h"
#include "naming/ProfileText.h"
#include "tags/TagTextRules.h"

#include <QBuffer>

#include <cstdlib>

/// Feeds arbitrary bytes to everything that takes text from a file or from the user.

namespace
{
void Demand(bool holds)
{
    if (!holds)
        std::abort(); // what the fuzzer sees as a find
}

bool IsSameRun(const SRunSettings& left, const SRunSettings& right)
{
    return ProfileText(left) == ProfileText(right) && left.customRenameScheme == right.customRenameScheme &&
           left.outputFolder == right.outputFolder;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    const SRunSettings settings = ReadProfile(file);
    QByteArray written = ProfileText(settings);
    Demand(written.count('\n') == 8);
    QBuffer again(&written);
    again.open(QIODevice::ReadOnly);
    Demand(IsSameRun(ReadProfile(again), settings));

    const QStringList words = QString::fromUtf8(bytes).split('\n');
    const SAudioFile tags{words.value(1), words.value(2), words.value(3),      words.value(4),
                          words.value(5), words.value(6), '/' + words.value(7)};
    for (int rename = 0; rename <= customRenameIndex; ++rename) {
        const QString name = BuildFileName(tags, rename, words.value(0));
        for (const char reserved : {'/', '\\', '?', '%', '*', ':', '|', '"', '<', '>', '.'})
            Demand(!name.contains(QLatin1Char(reserved)));
        Demand(!name.endsWith(' ') && StrippedOfReservedChars(name) == name);
    }
    for (int layout = 0; layout < 16; ++layout) {
        const QStringList levels = FolderTags(tags, layout);
        Demand(BuildFolderPath("o", levels).count('/') == levels.size() && !BuildFolderPath("o", levels).contains('.'));
    }
    const QString unchanged = GenerateFileNameFromRenameScheme(words.value(0), "[Artist]", "[Title]", "[Album]",
                                                               "[Year]", "[Genre]", "[Track]");
    Demand(unchanged == words.value(0));
    const QString searched = PrepareForSearch(words.value(0));
    for (const char removed : {'-', '.', '_', '[', ']', ' ', '0', '5', '9'})
        Demand(!searched.contains(QLatin1Char(removed)));
    for (const char* address : {"www.", "http://", ".com", ".org", ".net", ".fm"})
        Demand(IsInvalidTag(words.value(0) + address + words.value(1)));
    return 0;
}
