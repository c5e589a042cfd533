#include "files/HiddenFile.h"

#include "files/FileHandle.h"
#include "files/FilePath.h"

#include <QFile>
#include <QRandomGenerator>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#ifdef Q_OS_LINUX
#include <linux/fs.h>
#endif

QString HiddenName(const QString& path, const QString& kind)
{
    const QString characters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
    QString name = FolderOf(path) + QStringLiteral("/.orvanto-") + kind;
    for (int i = 0; i < 6; ++i)
        name += characters.at(QRandomGenerator::global()->bounded(characters.size()));
    return name;
}

bool RenameToFreeName(const QString& oldName, const QString& newName)
{
    const QByteArray from = QFile::encodeName(oldName), to = QFile::encodeName(newName);
#ifdef Q_OS_MACOS
    if (renamex_np(from.constData(), to.constData(), RENAME_EXCL) == 0)
        return true;
#else
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
#endif
    if (!IsUnsupported())
        return false;
    if (link(from.constData(), to.constData()) == 0)
        return unlink(from.constData()) == 0;
    // A file system without hard links. This leaves a moment in which somebody else's file could be replaced.
    struct stat status;
    return errno != EEXIST && lstat(to.constData(), &status) != 0 && errno == ENOENT &&
           std::rename(from.constData(), to.constData()) == 0;
}
