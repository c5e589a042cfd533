#include "processing/FileStatus.h"

#include "naming/OutputPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

std::optional<struct stat> StatusOf(const QString& path)
{
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return status;
}

void CopyAttributes(const struct stat& status, const QString& copy)
{
#ifdef Q_OS_MACOS
    const timespec modified = status.st_mtimespec;
#else
    const timespec modified = status.st_mtim;
#endif
    const timespec times[] = {{0, UTIME_OMIT}, modified}; // of the last access, which stays, and modification
    const QByteArray copyName = QFile::encodeName(copy);
    utimensat(AT_FDCWD, copyName.constData(), times, 0);
    chmod(copyName.constData(), status.st_mode & 0777);
}

bool LeadsOut(const QString& outputFolder, const QStringList& folderTags)
{
    const auto canonical = [](const QString& path) {
        const QString folder = QDir(path).canonicalPath();
        return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    };
    const QString root = canonical(outputFolder + QLatin1Char('/'));
    for (int levels = 1; levels <= folderTags.size(); ++levels) {
        const QString folder = BuildFolderPath(outputFolder, folderTags.mid(0, levels));
        const QFileInfo info(folder);
        if ((info.exists() || info.isSymLink()) && !canonical(folder).startsWith(root))
            return true;
    }
    return false;
}

FileIdentity IdentityOf(const struct stat& status)
{
    return FileIdentity(status.st_dev, status.st_ino);
}

std::optional<FileIdentity> IdentityOf(const QString& path)
{
    const auto status = StatusOf(path);
    return status ? std::optional(IdentityOf(*status)) : std::nullopt;
}
