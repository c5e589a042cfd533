#pragma once

#include "files/FileFacts.h"

#include <QElapsedTimer>
#include <QHash>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

enum class CopyResult { Copied, Failed, Stopped };

struct SCopy
{
    CopyResult result;
    std::optional<SFileFacts> source; ///< of the file that was copied, when it was opened
};

/// Copies regular files, each with its permissions, its times, its extended attributes and its access control lists. A
/// copy appears whole or not at all, flushed, and replaces nothing. A source that somebody writes meanwhile is not
/// copied.
///
/// Copies wait under their hidden names until a few of them are flushed together, which takes a disk hardly longer
/// than to flush one: at most 32 copies and 64 MB, for a second at most. A larger file waits for no other.
class CopyGroup
{
public:
    using Report = std::function<void(int row, const SCopy& copy)>;

    /// Asks @p goOnWhile before each step; once it returns false, all copies that have not appeared are given up.
    /// @p reportTo hears once for each row what became of its copy. Copies that still wait when the group is destroyed
    /// are given up without a report.
    CopyGroup(std::function<bool()> goOnWhile, Report reportTo);
    ~CopyGroup();
    Q_DISABLE_COPY(CopyGroup)

    /// Finishes the group when one of its copies is to become @p destination, or a path that a file system may take for
    /// the same, or when the group is full or its first copy has waited long enough.
    void FinishBefore(const QString& destination);
    /// Copies a file to a destination for which none is waiting.
    void Add(int row, const QString& source, const QString& destination);
    /// Lets everything that is waiting appear, in order.
    void Finish();

private:
    struct SWaiting;
    bool IsDue() const;
    QString PlaceOf(const QString& destination);

    const std::function<bool()> goOn;
    const Report report;
    std::vector<std::unique_ptr<SWaiting>> waiting;
    qint64 waitingBytes = 0;
    QElapsedTimer sinceFirst;
    QHash<QString, QString> folders; ///< of destinations, with their comparable paths
};
