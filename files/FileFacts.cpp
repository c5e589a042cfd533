#include "files/FileFacts.h"

#include <QFile>
#include <QFileInfo>

namespace
{
bool operator==(const timespec& left, const timespec& right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}
} // namespace

SFileFacts::SFileFacts(const struct stat& status)
    : device(static_cast<quint64>(status.st_dev)), inode(status.st_ino), size(status.st_size), names(status.st_nlink),
      mode(status.st_mode), owner(status.st_uid), group(status.st_gid),
#ifdef Q_OS_MACOS
      accessed(status.st_atimespec), modified(status.st_mtimespec), changed(status.st_ctimespec)
#else
      accessed(status.st_atim), modified(status.st_mtim), changed(status.st_ctim)
#endif
{}

std::optional<SFileFacts> FactsOf(const QString& path)
{
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return SFileFacts(status);
}

bool IsUnchanged(const SFileFacts& before, const SFileFacts& now)
{
    return before.size == now.size && before.modified == now.modified && before.changed == now.changed;
}

QString Comparable(const QString& text)
{
    return text.normalized(QString::NormalizationForm_D).toCaseFolded().normalized(QString::NormalizationForm_D);
}

QString ComparablePath(const QString& path)
{
    return Comparable(QFileInfo(path).canonicalFilePath());
}

bool IsSameFile(const QString& one, const QString& other)
{
    const auto first = FactsOf(one), second = FactsOf(other);
    return first && second && (first->Identity() == second->Identity() || ComparablePath(one) == ComparablePath(other));
}
