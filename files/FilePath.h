#pragma once

#include <QString>

/// The text after the last "." of @p path in lower case; all of it when it has no ".".
QString ExtensionOf(const QString& path);

/// The file name in @p path, after its last "/" and before the last "." of that name (all of it without a dot).
QString BaseNameOf(const QString& path);

/// The folder of @p path: the text before its last "/", without a trailing separator.
QString FolderOf(const QString& path);

/// @p path as typed by a user, with "/" for every backslash.
QString WithForwardSlashes(QString path);
