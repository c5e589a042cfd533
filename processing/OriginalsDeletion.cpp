#include "processing/OriginalsDeletion.h"

#include "files/CopyFile.h"
#include "files/FilePath.h"
#include "naming/OutputPath.h"

#include <QFile>

using Outcome = SRowResult::Outcome;

OriginalsDeletion::OriginalsDeletion(SRunSettings runSettings, QList<QString> keptPathList)
    : settings(std::move(runSettings)), paths(std::move(keptPathList)), keptPaths(paths.begin(), paths.end())
{
    for (const QString& path : paths) {
        if (const auto facts = FactsOf(path))
            keptFiles.insert(facts->Identity());
    }
}

/// Whether a source is a file that the run keeps, by this path or another.
bool OriginalsDeletion::IsKept(const QString& path, const SFileFacts& facts, Outcome outcome)
{
    if (outcome == Outcome::Kept || keptPaths.contains(path) || keptFiles.contains(facts.Identity()))
        return true;
    if (outcome != Outcome::WasThere)
        return false;
    // It was not copied, and may be the very file that another source goes for.
    if (keptSpellings.isEmpty()) {
        for (const QString& kept : paths)
            keptSpellings.insert(ComparablePath(kept));
    }
    return keptSpellings.contains(ComparablePath(path));
}

bool OriginalsDeletion::Delete(const SAudioFile& file, SRowResult& row)
{
    const auto now = FactsOf(file.Path);
    if (!now || IsKept(file.Path, *now, row.outcome))
        return true;
    if (unlinked.contains(now->Identity()))
        row.source->changed = now->changed; // by us: another name of this file has gone
    if (!IsProven(row, BuildOutputPath(file, settings), *now)) {
        keptFiles.insert(now->Identity()); // under its other names, too
        return false;
    }
    unlinked.insert(now->Identity());
    QFile::remove(file.Path);
    return true;
}

/// Whether the file that a source may be deleted for is there, and if that is its copy, whether it will stay and the
/// source, of which these are the facts, has not changed since.
bool OriginalsDeletion::IsProven(const SRowResult& row, const QString& destination, const SFileFacts& now)
{
    const auto file = FactsOf(destination);
    if (!file || !file->IsRegular())
        return false;
    return row.outcome == Outcome::WasThere ||
           (IsUnchanged(*row.source, now) && file->size == now.size && FlushNames(FolderOf(destination)));
}

/// Waits until the names from @p folder up to the output folder's own are on the disk. @return false when they may be
/// lost.
bool OriginalsDeletion::FlushNames(QString folder)
{
    const int shortest = FolderOf(settings.outputFolder).size();
    for (;;) {
        if (!flushedFolders.contains(folder))
            flushedFolders.insert(folder, FlushFolder(folder.isEmpty() ? QStringLiteral("/") : folder));
        const QString parent = FolderOf(folder);
        if (!flushedFolders.value(folder) || folder.size() <= shortest || parent == folder)
            return flushedFolders.value(folder);
        folder = parent;
    }
}
