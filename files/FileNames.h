#pragma once

#include <QString>

/// A name for a hidden file in the folder of @p path: ".orvanto-", @p kind and six random characters.
QString HiddenName(const QString& path, const QString& kind = {});

/// Renames a file unless something already has the new name. @return false, with errno set, when it has kept its name.
bool RenameToFreeName(const QString& from, const QString& to);

/// Deletes the file at @p path. With @p other, it does so only when that file can be opened after this one has been
/// renamed aside, to a hidden name of the kind "original-": the two may be one file, mounted twice, although everything
/// that the system says of them differs. @return false when the file is still there.
bool RemoveFile(const QString& path, const QString& other = {});

/// Waits until the names in @p folder are on the disk. @return false when they may be lost; true for a folder that may
/// not be read.
bool FlushFolder(const QString& folder);
