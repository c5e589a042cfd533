#pragma once

#include "tags/SAudioFile.h"

#include <QHash>
#include <QList>

/// The listed files in list order, each path once (compared exactly), with a hash from path to row beside them so
/// that finding a path costs the same in a list of any size.
class AudioFileList
{
public:
    const QList<SAudioFile>& Records() const { return records; }
    int Count() const { return static_cast<int>(records.size()); }
    bool IsEmpty() const { return records.isEmpty(); }
    bool IsRow(int row) const { return row >= 0 && row < records.size(); }
    const SAudioFile& At(int row) const { return records.at(row); }
    bool Contains(const QString& path) const { return rowOfPath.contains(path); }
    /// The row of the record with this path; -1 when there is none.
    int RowOf(const QString& path) const { return rowOfPath.value(path, -1); }

    /// Appends a record whose path is not in the list yet.
    void Append(const SAudioFile& file);
    /// Replaces the tags of the record in @p row; its path stays.
    void Replace(int row, const SAudioFile& file) { records[row] = file; }
    /// Removes the record in @p row; nothing when there is no such row.
    void Remove(int row);
    void Clear();

private:
    QList<SAudioFile> records;
    QHash<QString, int> rowOfPath;
};
