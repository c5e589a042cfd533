#pragma once

#include <QString>

#include <sys/stat.h>

#include <ctime>
#include <optional>
#include <utility>

/// What the file system says of a file at one moment, links followed. It hides that systems name the fields of `stat`
/// differently.
struct SFileFacts
{
    explicit SFileFacts(const struct stat& status);

    quint64 device;
    quint64 inode;
    qint64 size;   ///< bytes
    quint64 names; ///< how many it has: one more for each hard link
    mode_t mode;
    uid_t owner;
    gid_t group;
    timespec accessed; ///< the last reading, as far as the system records it
    timespec modified; ///< the last change of its content
    timespec changed;  ///< the last change of any kind; no program sets it back

    bool IsRegular() const { return S_ISREG(mode); }
    /// The same for every path to one file, but some file systems make it up for each path.
    std::pair<quint64, quint64> Identity() const { return {device, inode}; }
};

/// Nothing when there is no file.
std::optional<SFileFacts> FactsOf(const QString& path);

/// Whether nobody has written a file between two moments. Some programs set the time of modification back, some file
/// systems keep no time of change. Inode numbers say nothing here: there are file systems that make them up and forget
/// them.
bool IsUnchanged(const SFileFacts& before, const SFileFacts& now);

/// @p path with links resolved, in one letter case and Unicode normal form: the same text for any two paths that a file
/// system which ignores these takes for one.
QString ComparablePath(const QString& path);

/// Any text in that letter case and normal form.
QString Comparable(const QString& text);

/// Whether two paths lead to one file: the file system says so, or they are comparable. Some file systems ignore letter
/// case and make up inode numbers for each path. So two files may be taken for one: call it where that does no harm.
bool IsSameFile(const QString& one, const QString& other);
