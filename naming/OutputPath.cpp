#include "naming/OutputPath.h"

#include "files/FilePath.h"
#include "naming/StandIns.h"
#include "tags/TagTextRules.h"

#include <iterator>

namespace
{
template <class Table>
auto RowAt(const Table& table, int index)
{
    return index >= 0 && index < static_cast<int>(table.size()) ? &table[static_cast<std::size_t>(index)] : nullptr;
}
} // namespace

const SOrganizeChoice* OrganizeChoiceAt(int organizeBy)
{
    return RowAt(organizeChoices, organizeBy);
}

QString GenerateFileNameFromRenameScheme(const QString& scheme, const QString& artist, const QString& title,
                                         const QString& album, const QString& year, const QString& genre,
                                         const QString& track)
{
    const QString* const values[] = {&artist, &title, &album, &year, &genre, &track}; // in the order of allTags
    static_assert(std::size(values) == allTags.size());

    QString result;
    QString token; // from "[" on; empty outside
    for (const QChar character : scheme) {
        if (token.isEmpty() && character != QLatin1Char('[')) {
            result += character;
            continue;
        }
        token += character;
        if (character != QLatin1Char(']'))
            continue;
        for (std::size_t i = 0; i < allTags.size(); ++i) {
            if (token == QLatin1Char('[') + QLatin1String(allTags[i].name) + QLatin1Char(']')) {
                token = *values[i];
                break;
            }
        }
        result += token;
        token.clear();
    }
    return result + token;
}

QString BuildFileName(const SAudioFile& file, int renameIndex, const QString& customScheme)
{
    const SRenameChoice* const choice = RowAt(renameChoices, renameIndex);
    if (!choice)
        return QString();
    if (renameIndex == originalNameIndex)
        return StrippedOfReservedChars(BaseNameOf(file.Path));

    const QString scheme = renameIndex == customRenameIndex ? customScheme : QString::fromLatin1(choice->scheme);
    return StrippedOfReservedChars(GenerateFileNameFromRenameScheme(scheme, file.Artist, file.Title, file.Album,
                                                                    file.Year, file.Genre, file.Track));
}

QStringList FolderTags(const SAudioFile& file, int organizeBy)
{
    QStringList tags;
    if (const SOrganizeChoice* const choice = OrganizeChoiceAt(organizeBy)) {
        for (const TagField level : choice->levels) {
            if (level)
                tags += file.*level;
        }
    }
    return tags;
}

QString WithoutTrailingSlashes(QString folder)
{
    while (folder.endsWith(QLatin1Char('/')))
        folder.chop(1);
    return folder;
}

QString BuildFolderPath(const QString& outputFolder, const QStringList& folderTags)
{
    QString folder = outputFolder;
    for (const QString& tag : folderTags)
        folder += QLatin1Char('/') + StrippedOfReservedChars(tag);
    return folder;
}

QString BuildOutputPath(const SAudioFile& file, const SRunSettings& settings)
{
    return BuildFolderPath(settings.outputFolder, FolderTags(file, settings.organizeBy)) + QLatin1Char('/') +
           BuildFileName(file, settings.renameIndex, settings.customRenameScheme) + QLatin1Char('.') +
           ExtensionOf(file.Path);
}

QString BuildPreviewFileName(SAudioFile file, const SRunSettings& settings)
{
    PutPreviewCaptions(file);
    return BuildFileName(file, settings.renameIndex, settings.customRenameScheme);
}

QString BuildPreviewPath(const SAudioFile& file, const SRunSettings& settings, const QString& fileName)
{
    QString path = settings.outputFolder + QLatin1Char('/');
    if (settings.organizeBy != 0) {
        QString folders;
        if (const SOrganizeChoice* const choice = OrganizeChoiceAt(settings.organizeBy))
            folders = QLatin1String(choice->label);
        for (const STag& tag : allTags) {
            // A value that contains the caption of a later tag is replaced again, which does no harm in a preview.
            const QString& text = file.*tag.field;
            if (tag.index != Tag::Track && text != QLatin1String(tag.absent))
                folders.replace(QLatin1String(tag.name), StrippedOfReservedChars(text));
        }
        path += folders + QLatin1Char('/');
    }
    path += fileName;
    path.replace(QLatin1String("//"), QLatin1String("/"));
    return path + QLatin1Char('.') + ExtensionOf(file.Path);
}
