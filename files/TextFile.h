#pragma once

#include <QByteArray>
#include <QString>

/// Writes a whole text file: the old content stays until the new one is on the disk. Where the user may not make a file
/// beside it, it is written directly; so is what is no regular file.
/// @return false when the file at @p path cannot be opened for writing. Whether all of it was written is not reported.
bool WriteWholeFile(const QString& path, const QByteArray& content);

/// Appends to a file, which is created if missing. @return false when it cannot be opened for writing.
bool AppendToFile(const QString& path, const QByteArray& bytes);
