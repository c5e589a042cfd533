#pragma once

#include <QString>

/// A name for a hidden file in the folder of @p path: ".orvanto-", @p kind and six random characters.
QString HiddenName(const QString& path, const QString& kind = {});

/// Renames a file unless there is something of the new name. @return false with errno when it has kept its name.
bool RenameToFreeName(const QString& from, const QString& to);

/// Deletes the file at @p path. With @p other, it does so only when that file can be opened after this one has been
/// renamed aside, to a hidden name of the kind "original-": the two may be one file, mounted twice, although everything
/// that the system says of them differs. @return false when the file is still there.
bool RemoveFile(const QString& path, const QString& other = {});

/// Waits until the names in @p folder are on the disk, as far as it may be read. @return false when they may be lost.
bool FlushFolder(const QString& folder);
