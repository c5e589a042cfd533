#include "files/TextFile.h"

#include "files/FailureLog.h"
#include "files/FileHandle.h"

#include <QFileInfo>
#include <QSaveFile>

bool WriteWholeFile(const QString& path, const QByteArray& content)
{
    const QFileInfo old(path);
    if (old.exists() && !old.isFile()) // a pipe or a device
        return AppendToFile(path, content);
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    const bool isOpen = file.open(QIODevice::WriteOnly);
    if (!isOpen || file.write(content) != content.size() || !file.commit())
        LogFailure("Could not write", path, file.errorString());
    return isOpen;
}

bool AppendToFile(const QString& path, const QByteArray& bytes)
{
    FileHandle file(path, O_WRONLY | O_CREAT | O_APPEND);
    file.Append(bytes);
    return file.IsOpen();
}
