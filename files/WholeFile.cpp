#include "files/WholeFile.h"

#include "files/NewFile.h"

#include <QFileInfo>

bool WriteWholeFile(const QString& givenPath, const QByteArray& content)
{
    const QString canonical = QFileInfo(givenPath).canonicalFilePath();
    const QString& path = canonical.isEmpty() ? givenPath : canonical; // a link stays one
    const FileHandle old(path, O_WRONLY);
    const auto facts = old.Facts();
    if (!old.IsOpen() && QFileInfo::exists(path))
        return false;
    NewFile file(path, 0666);
    if (!file.IsOpen() || (facts && !file.TakeOwner(*facts))) {
        FileHandle direct(path, O_WRONLY | O_CREAT | O_TRUNC);
        direct.Write(0, content);
        return direct.IsOpen();
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
