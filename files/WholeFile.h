#pragma once

#include <QByteArray>
#include <QString>

/// Writes a whole text file: the old content stays until the new one is on the disk. Where no file can be made beside
/// it, it is written directly, and the old content put back if that fails.
/// @return false when the file at @p path cannot be opened for writing. Whether all of it was written is not reported.
bool WriteWholeFile(const QString& path, const QByteArray& content);

/// Appends to a file, which is made when it is missing. @return false when it cannot be opened for writing.
bool AppendToFile(const QString& path, const QByteArray& bytes);
