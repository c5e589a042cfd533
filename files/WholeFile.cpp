#include "files/WholeFile.h"

#include "files/EditedFile.h"
#include "files/NewFile.h"

#include <QFileInfo>

bool WriteWholeFile(const QString& givenPath, const QByteArray& content)
{
    const QString canonical = QFileInfo(givenPath).canonicalFilePath();
    const QString& path = canonical.isEmpty() ? givenPath : canonical; // a link stays one
    FileHandle old(path, O_WRONLY);
    const auto facts = old.Facts();
    if (!old.IsOpen() && QFileInfo::exists(path))
        return false;
    if (facts && !facts->IsRegular()) {
        old.Append(content);
        return true;
    }
    if (QFileInfo(path).isSymLink()) // to nothing yet
        return AppendToFile(path, content);

    NewFile file(path, 0666);
    if (!file.IsOpen() || (facts && !file.TakeOwner(*facts))) {
        EditedFile direct(path);
        direct.Replace(0, direct.Size(), content);
        direct.Save();
        return facts.has_value();
    }
    if (facts)
        file.TakeAttributes(old, *facts);
    if (file.Append(content) && file.Finish())
        file.Appear(NewFile::Existing::Replace);
    return true;
}

bool AppendToFile(const QString& path, const QByteArray& bytes)
{
    FileHandle file(path, O_WRONLY | O_CREAT | O_APPEND);
    file.Append(bytes);
    return file.IsOpen();
}
