#pragma once

#include <QString>

/// A name for a hidden file in the folder of @p path: ".orvanto-", @p kind and six random characters.
QString HiddenName(const QString& path, const QString& kind = {});

/// Renames a file unless there is something of the new name. @return false with errno when it has kept its name.
bool RenameToFreeName(const QString& from, const QString& to);
