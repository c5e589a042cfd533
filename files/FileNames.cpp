#include "files/FileNames.h"

#include "files/FileHandle.h"
#include "files/FilePath.h"

#include <QFile>
#include <QFileInfo>
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
    if (link(from.constData(), to.constData()) == 0) {
        if (unlink(from.constData()) == 0)
            return true;
        unlink(to.constData());
        return false;
    }
    // A file system without hard links. This leaves a moment in which somebody else's file could be replaced.
    struct stat status;
    return errno != EEXIST && lstat(to.constData(), &status) != 0 && errno == ENOENT &&
           std::rename(from.constData(), to.constData()) == 0;
}

bool RemoveFile(const QString& path, const QString& other)
{
    if (other.isEmpty())
        return unlink(QFile::encodeName(path).constData()) == 0;
    QString aside;
    bool renamed = false;
    do {
        aside = HiddenName(path, QStringLiteral("original-")) + QLatin1Char('.') + QFileInfo(path).suffix();
        renamed = RenameToFreeName(path, aside);
    } while (!renamed && errno == EEXIST);
    if (!renamed)
        return false;
    // It is opened because the system's memory of it may be stale. Some servers open a renamed file all the same, so
    // the two are compared, too.
    const auto there = FileHandle(other, O_RDONLY).Facts(), own = FactsOf(aside);
    const bool isOther =
        there && own && there->IsRegular() && !(there->inode == own->inode && IsUnchanged(*there, *own));
    if (isOther && unlink(QFile::encodeName(aside).constData()) == 0)
        return true;
    RenameToFreeName(aside, path);
    return false;
}

bool FlushFolder(const QString& folder)
{
    FileHandle handle(folder, O_RDONLY);
    return handle.IsOpen() ? handle.Flush(FileHandle::Depth::Drive) : errno == EACCES || errno == EPERM;
}
