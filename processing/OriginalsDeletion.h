#pragma once

#include "files/FileFacts.h"
#include "naming/SRunSettings.h"
#include "tags/SAudioFile.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <map>
#include <optional>
#include <utility>

/// What became of one row of the list when files were copied.
struct SRowResult
{
    enum class Outcome {
        Kept,     ///< it is its own destination, or the run ended before it
        WasThere, ///< there was another file at its destination
        Copied,
        Failed, ///< it was not copied, which the report says
    };
    Outcome outcome = Outcome::Kept;
    std::optional<SFileFacts> source = std::nullopt; ///< its facts when it was copied, or when the other file was found
};

/// Deletes the originals of one run, each by what became of its row. A source that is its own destination stays,
/// however its path is spelled, and so does one that has changed since it was copied.
class OriginalsDeletion
{
public:
    /// @p pathsToKeep are the run's destinations and the sources that were not copied.
    OriginalsDeletion(SRunSettings runSettings, QList<QString> pathsToKeep);

    /// Deletes the source of one row, if it may. @return false when it was to go and had to stay.
    bool Delete(const SAudioFile& file, const SRowResult& row);

private:
    bool IsKept(const QString& path, const SFileFacts& facts, SRowResult::Outcome outcome);
    bool FlushNames(const QString& folder);

    using Identity = std::pair<quint64, quint64>;
    struct SUnlinked
    {
        SFileFacts before, after;
    };

    const SRunSettings settings;
    const QList<QString> paths; ///< none of them is deleted
    const QSet<QString> keptPaths;
    QSet<QString> keptSpellings;
    QSet<Identity> keptFiles;
    std::map<Identity, SUnlinked> unlinked; ///< files that have lost a name here, which changes their facts
    QHash<QString, bool> flushedFolders;    ///< whether their names are on the disk
};
