#include "files/FolderWalk.h"

#include "files/FilePath.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace
{
/// The paths of the entries of @p folder, which ends in "/", in the order of QDir::Size | QDir::Reversed: the smallest
/// first, of equal ones the last name. QDir itself would block while it reads. Nothing once @p goOn returns false.
QStringList EntriesBySize(const QString& folder, QDir::Filters filters, const std::function<bool()>& goOn)
{
    constexpr std::size_t entriesPerTurn = 1000;
    std::vector<std::pair<qint64, QString>> entries;
    QDirIterator iterator(folder, filters);
    while (iterator.hasNext()) {
        iterator.next();
        entries.emplace_back(iterator.fileInfo().size(), iterator.fileName());
        if (entries.size() % entriesPerTurn == 0 && !goOn())
            return {};
    }
    if (!goOn())
        return {};
    std::sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
        return std::tie(left.first, right.second) < std::tie(right.first, left.second);
    });

    QStringList paths;
    for (const auto& [size, name] : entries)
        paths += folder + name;
    return paths;
}
} // namespace

void WalkFolder(const QString& folder, bool recursive, const std::function<void(const QStringList&)>& found,
                const std::function<bool()>& goOn)
{
    if (folder.isEmpty() || !goOn())
        return;
    QString path = WithForwardSlashes(folder);
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');

    found(EntriesBySize(path, QDir::Files | QDir::Hidden | QDir::NoSymLinks, goOn));
    if (!recursive)
        return;
    for (const QString& subfolder : EntriesBySize(path, QDir::Dirs | QDir::NoDotAndDotDot, goOn))
        WalkFolder(subfolder, true, found, goOn);
}
