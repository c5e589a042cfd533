#pragma once

#include "files/FileHandle.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <list>
#include <vector>

/// A file that is edited in memory, as a list of pieces: ranges of the file on disk, and new bytes. Nothing is written
/// before Save().
class EditedFile
{
public:
    enum class Saved {
        Whole,
        NotAtAll,  ///< the disk or the rights did not allow it; the file is as it was
        Overtaken, ///< somebody else has changed the file since it was opened: open it again
    };

    /// Opens the file at @p path for reading.
    explicit EditedFile(const QString& path);

    /// False for what is no regular file or may not be read.
    bool IsOpen() const { return facts && facts->IsRegular(); }
    qint64 Size() const { return size; }
    /// At most @p count bytes from @p position on, fewer at the end.
    QByteArray Read(qint64 position, qint64 count);
    /// Puts @p bytes in the place of @p count bytes from @p position on. Only a damaged file makes a parser edit more
    /// than there is: after that, Save() writes nothing.
    void Replace(qint64 position, qint64 count, const QByteArray& bytes);
    /// Cuts the file off.
    void Truncate(qint64 newSize) { Replace(newSize, size - newSize, {}); }

    /// A range of the file on disk that the edits keep.
    struct SKept
    {
        qint64 start; ///< in the file on disk
        qint64 size;
        qint64 now; ///< where it starts after the edits
    };
    /// All of them, in order.
    std::vector<SKept> KeptRanges() const;

    /// Writes the edits. Where every range of the file keeps its place, only the bytes that differ are written, into
    /// the file itself, and put back when that fails. Otherwise a new file, whole and with the owner, permissions and
    /// attributes of the old one, takes its place; the edited file is closed then. @p goOn is asked before the former
    /// and for every megabyte of the latter, and may end it, with Saved::NotAtAll.
    Saved Save(const std::function<bool()>& goOn);

private:
    struct SPiece
    {
        qint64 start; ///< in the file on disk; -1 for new bytes
        qint64 size;
        QByteArray bytes;
        bool IsNew() const { return start < 0; }
    };
    struct SPatch
    {
        qint64 position;
        QByteArray before, after;
    };

    using Pieces = std::list<SPiece>; // an edit of 100,000 pages makes twice as many pieces

    bool ReadOriginal(qint64 position, char* bytes, qint64 count);
    Pieces::iterator Find(qint64 position);
    Pieces::iterator SplitAt(qint64 position);
    bool KeepsPlaces() const;
    std::vector<SPatch> Patches();
    Saved Patch(FileHandle& target, const std::function<bool()>& goOn);
    Saved Rewrite(const std::function<bool()>& goOn);
    bool IsUntouched() const;

    const QString path;
    FileHandle original;
    const std::optional<SFileFacts> facts; ///< when it was opened
    Pieces pieces;
    Pieces::iterator found = pieces.end(); ///< the piece that was asked for last: the next one is near
    qint64 foundStart = 0;                 ///< its position
    qint64 size = 0;
    bool valid = true; ///< every read succeeded, and every edit was within the file
    QByteArray window; ///< a part of the file on disk that was read last
    qint64 windowStart = 0;
};
