#include "files/EditedFile.h"

#include "files/NewFile.h"

#include <QFileInfo>

#include <algorithm>

EditedFile::EditedFile(const QString& filePath) : path(filePath), original(path, O_RDONLY), facts(original.Facts())
{
    if (IsOpen() && facts->size > 0) {
        size = facts->size;
        pieces.push_back({0, size, {}});
    }
}

/// Reads from the file on disk, small pieces by way of a window: a parser asks for a few bytes at a time.
bool EditedFile::ReadOriginal(qint64 position, char* bytes, qint64 count)
{
    constexpr int windowSize = 1 << 14; // bytes
    if (count > windowSize)
        return original.Read(position, bytes, count) == count;
    if (position < windowStart || position + count > windowStart + window.size()) {
        window.resize(windowSize);
        windowStart = position;
        window.resize(static_cast<int>(qMax<qint64>(original.Read(position, window.data(), windowSize), 0)));
        if (window.size() < count)
            return false;
    }
    std::copy_n(window.constData() + (position - windowStart), count, bytes);
    return true;
}

QByteArray EditedFile::Read(qint64 position, qint64 count)
{
    constexpr qint64 longest = 1 << 30; // bytes; only a damaged file makes a parser ask for so many
    count = qBound<qint64>(0, count, qMin(size - position, longest));
    if (position < 0 || count == 0)
        return {};
    QByteArray bytes(static_cast<int>(count), Qt::Uninitialized);
    qint64 done = 0;
    qint64 start = 0; // of the piece
    for (const SPiece& piece : pieces) {
        const qint64 skipped = position + done - start;
        start += piece.size;
        if (skipped >= piece.size)
            continue;
        const qint64 part = qMin(piece.size - skipped, count - done);
        if (piece.IsNew())
            std::copy_n(piece.bytes.constData() + skipped, part, bytes.data() + done);
        else if (!ReadOriginal(piece.start + skipped, bytes.data() + done, part))
            valid = false;
        done += part;
        if (done == count || !valid)
            break;
    }
    bytes.truncate(static_cast<int>(valid ? done : 0));
    return bytes;
}

/// Makes a piece begin at @p position, which is not after the end. @return its index.
std::size_t EditedFile::SplitAt(qint64 position)
{
    std::size_t index = 0;
    while (index < pieces.size() && position >= pieces[index].size)
        position -= pieces[index++].size;
    if (position == 0)
        return index;
    SPiece& head = pieces[index];
    SPiece tail = head;
    tail.size -= position;
    if (head.IsNew()) {
        tail.bytes = head.bytes.mid(static_cast<int>(position));
        head.bytes.truncate(static_cast<int>(position));
    } else {
        tail.start += position;
    }
    head.size = position;
    pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(index) + 1, tail);
    return index + 1;
}

void EditedFile::Replace(qint64 position, qint64 count, const QByteArray& bytes)
{
    if (position < 0 || position > size || count < 0 || count > size - position) {
        valid = false;
        return;
    }
    const auto at = [this](std::size_t index) { return pieces.begin() + static_cast<std::ptrdiff_t>(index); };
    const std::size_t first = SplitAt(position);
    const std::size_t last = SplitAt(position + count); // apart: it may move all of them
    pieces.erase(at(first), at(last));
    size += bytes.size() - count;
    if (bytes.isEmpty())
        return;
    if (first > 0 && pieces[first - 1].IsNew()) {
        pieces[first - 1].bytes += bytes;
        pieces[first - 1].size += bytes.size();
    } else {
        pieces.insert(at(first), {-1, bytes.size(), bytes});
    }
}

bool EditedFile::IsUntouched() const
{
    const auto now = FactsOf(path);
    return now && IsUnchanged(*facts, *now);
}

EditedFile::Saved EditedFile::Save()
{
    FileHandle target(path, O_RDWR);
    if (!valid || !target.IsOpen())
        return IsUntouched() ? Saved::NotAtAll : Saved::Overtaken;
    return KeepsPlaces() ? Patch(target) : Rewrite();
}

/// Whether every range of the file on disk stands where it stood, and no more is cut off than can be put back.
bool EditedFile::KeepsPlaces() const
{
    constexpr qint64 longestTail = 1 << 30; // bytes
    if (facts->size - size > longestTail)
        return false;
    qint64 position = 0;
    for (const SPiece& piece : pieces) {
        if (!piece.IsNew() && piece.start != position)
            return false;
        position += piece.size;
    }
    return true;
}

/// What has to be written into the file on disk: of each piece of new bytes, what is between its first difference and
/// its last. What is cut off its end counts as replaced by nothing.
std::vector<EditedFile::SPatch> EditedFile::Patches()
{
    std::vector<SPatch> patches;
    qint64 position = 0;
    for (const SPiece& piece : pieces) {
        if (piece.IsNew()) {
            QByteArray before(static_cast<int>(qBound<qint64>(0, facts->size - position, piece.size)), '\0');
            valid = valid && original.Read(position, before.data(), before.size()) == before.size();
            const auto front = std::mismatch(before.begin(), before.end(), piece.bytes.begin());
            const auto equal = static_cast<int>(front.first - before.begin());
            int last = piece.bytes.size();
            while (last > equal && last <= before.size() && before.at(last - 1) == piece.bytes.at(last - 1))
                --last;
            if (last > equal)
                patches.push_back(
                    {position + equal, before.mid(equal, last - equal), piece.bytes.mid(equal, last - equal)});
        }
        position += piece.size;
    }
    if (size < facts->size) {
        QByteArray cutOff(static_cast<int>(facts->size - size), '\0');
        valid = valid && original.Read(size, cutOff.data(), cutOff.size()) == cutOff.size();
        patches.push_back({size, cutOff, {}});
    }
    return patches;
}

EditedFile::Saved EditedFile::Patch(FileHandle& target)
{
    const std::vector<SPatch> patches = Patches();
    const auto now = target.Facts();
    if (!now || !IsUnchanged(*facts, *now))
        return Saved::Overtaken;
    if (!valid)
        return Saved::NotAtAll;
    // From the end: where there is no room for more, nothing has been touched yet.
    const bool written = std::all_of(patches.rbegin(), patches.rend(), [&target](const SPatch& patch) {
        return target.Write(patch.position, patch.after);
    });
    if (written && (size >= facts->size || target.Resize(size)) && target.Flush())
        return Saved::Whole;
    for (const SPatch& patch : patches)
        target.Write(patch.position, patch.before);
    target.Resize(facts->size);
    target.Flush();
    return Saved::NotAtAll;
}

EditedFile::Saved EditedFile::Rewrite()
{
    const auto always = [] { return true; };
    NewFile copy(QFileInfo(path).canonicalFilePath()); // a link stays one
    bool written = copy.IsOpen();
    for (const SPiece& piece : pieces) {
        written = written && (piece.IsNew() ? copy.Append(piece.bytes)
                                            : copy.CopyRange(original, piece.start, piece.size, always) ==
                                                  NewFile::Transfer::Done);
    }
    written = written && copy.TakeOwner(*facts);
    if (written) {
        copy.TakeAttributes(original, *facts);
        written = copy.Finish();
    }
    // As late as can be: what somebody else writes while we do comes first.
    if (!IsUntouched())
        return Saved::Overtaken;
    return written && copy.Appear(NewFile::Existing::Replace) ? Saved::Whole : Saved::NotAtAll;
}
