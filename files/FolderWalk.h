#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Calls @p found with the paths of the files in @p folder, hidden ones included and links left out, the smallest file
/// first; when @p recursive, then those of its subfolders in the same order, folder by folder. Subfolders behind links
/// are walked, too, since links are how a library spreads over several disks; hidden ones are not, since they hold
/// trash and caches. Backslashes in @p folder count as slashes. It asks @p goOn now and then, also while it reads a
/// folder of many thousands, and ends when that returns false. A folder that cannot be read has no files.
void WalkFolder(const QString& folder, bool recursive, const std::function<void(const QStringList&)>& found,
                const std::function<bool()>& goOn);
