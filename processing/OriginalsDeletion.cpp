#include "processing/OriginalsDeletion.h"

#include "files/FailureLog.h"
#include "files/FileHandle.h"
#include "files/FileNames.h"
#include "files/FilePath.h"
#include "naming/OutputPath.h"

#include <QFileInfo>

using Outcome = SRowResult::Outcome;

OriginalsDeletion::OriginalsDeletion(SRunSettings runSettings, QList<QString> pathsToKeep)
    : settings(std::move(runSettings)), paths(std::move(pathsToKeep)), keptPaths(paths.begin(), paths.end())
{
    for (const QString& path : paths) {
        if (const auto facts = FactsOf(path))
            keptFiles.insert(facts->Identity());
    }
}

/// Whether a source is a file that the run keeps, by this path or another.
bool OriginalsDeletion::IsKept(const QString& path, const SFileFacts& facts, Outcome outcome)
{
    if (keptPaths.contains(path) || keptFiles.contains(facts.Identity()))
        return true;
    if (outcome != Outcome::WasThere)
        return false;
    // It was not copied, and may itself be the file that was found at another source's destination.
    if (keptSpellings.isEmpty()) {
        for (const QString& kept : paths)
            keptSpellings.insert(ComparablePath(kept));
    }
    return keptSpellings.contains(ComparablePath(path));
}

bool OriginalsDeletion::Delete(const SAudioFile& file, const SRowResult& row)
{
    const QString destination = BuildOutputPath(file, settings);
    // Files without a name were all meant for one destination; that is no reason to delete any.
    if (row.outcome == Outcome::Kept || row.outcome == Outcome::Failed || BaseNameOf(destination).isEmpty())
        return true;
    const bool staysThere = FlushNames(FolderOf(destination)); // which takes time: all facts are read after it
    const auto now = FactsOf(file.Path), there = FactsOf(destination);
    if (!now || IsKept(file.Path, *now, row.outcome))
        return true;

    const auto lostName = unlinked.find(now->Identity());
    const bool isOurChange = lostName != unlinked.end() && IsUnchanged(lostName->second.after, *now);
    const SFileFacts& source = isOurChange ? lostName->second.before : *now;
    const bool isProven =
        staysThere && there && there->IsRegular() &&
        (row.outcome == Outcome::WasThere || (IsUnchanged(*row.source, source) && there->size == source.size));
    // A file that was there already may be the source itself, mounted twice.
    const bool mayBeItself = row.outcome == Outcome::WasThere && there && there->device != now->device;
    FileHandle underOtherNames;
    if (now->names > 1)
        underOtherNames = FileHandle(file.Path, O_RDONLY);
    const bool isRemoved = isProven && RemoveFile(file.Path, mayBeItself ? destination : QString());
    if (!isRemoved) {
        LogFailure("Could not delete", file.Path,
                   !isProven     ? QStringLiteral("It or its copy has changed, or may be lost")
                   : mayBeItself ? QStringLiteral("It may be its own copy")
                                 : SystemReason());
    }
    if (!isProven || (mayBeItself && !isRemoved)) {
        keptFiles.insert(now->Identity()); // under its other names, too
        return false;
    }
    if (const auto after = underOtherNames.Facts())
        unlinked.insert_or_assign(now->Identity(), SUnlinked{source, *after});
    return true;
}

/// Waits until the names in @p folder, and its own up to the root, are on the disk. @return false when they may be
/// lost.
bool OriginalsDeletion::FlushNames(const QString& folder)
{
    const auto known = flushedFolders.constFind(folder);
    if (known != flushedFolders.constEnd())
        return *known;
    const QString canonical = QFileInfo(folder + QLatin1Char('/')).canonicalFilePath();
    const bool flushed = FlushFolder(canonical) && (canonical == QLatin1String("/") || FlushNames(FolderOf(canonical)));
    flushedFolders.insert(folder, flushed);
    return flushed;
}
