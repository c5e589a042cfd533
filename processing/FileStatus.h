#pragma once

#include <QString>
#include <QStringList>

#include <sys/stat.h>

#include <optional>
#include <utility>

/// What the worker asks the file system, and tells it, beyond what Qt does.

/// What the file system says of a file, behind links; nothing when there is none.
std::optional<struct stat> StatusOf(const QString& path);

using FileIdentity = std::pair<quint64, quint64>;

/// Device and inode: the same for every spelling of a path to the same file.
FileIdentity IdentityOf(const struct stat& status);
std::optional<FileIdentity> IdentityOf(const QString& path);

/// Gives @p copy the permissions and the modification time of its source, exactly: QFile::copy() forgets the time and,
/// for a user who may write to everything, adds the right to write. A copy without them is no failure.
void CopyAttributes(const struct stat& status, const QString& copy);

/// Whether a folder named by these tags is, or lies behind, a link that leads out of @p outputFolder, or nowhere yet.
bool LeadsOut(const QString& outputFolder, const QStringList& folderTags);
