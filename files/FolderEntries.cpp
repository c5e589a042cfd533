#include "files/FolderEntries.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

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
