#include "files/EditedFile.h"

#include "files/FailureLog.h"
#include "files/NewFile.h"

#include <QFileInfo>

#include <algorithm>

namespace
{
constexpr qint64 longestBlock = 1 << 28; // bytes
const QString unreadable = QStringLiteral("Parts of it cannot be read, or it is damaged");
} // namespace

EditedFile::EditedFile(const QString& filePath) : path(filePath), original(path, O_RDONLY), facts(original.Facts())
{
    if (IsOpen() && facts->size > 0) {
        size = facts->size;
        pieces.push_back({0, size, {}});
        found = pieces.begin();
    }
}

/// Reads from the file on disk, small pieces through the window: a parser asks for a few bytes at a time.
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

/// @return the piece with the byte at @p position; the end of all pieces for the end of the file.
EditedFile::Pieces::iterator EditedFile::Find(qint64 position)
{
    while (position < foundStart)
        foundStart -= (--found)->size;
    while (found != pieces.end() && position >= foundStart + found->size)
        foundStart += (found++)->size;
    return found;
}

QByteArray EditedFile::Read(qint64 position, qint64 count)
{
    if (position < 0 || position >= size || count <= 0)
        return {};
    count = std::min(count, size - position);
    if (count > longestBlock) {
        valid = false; // only a damaged file makes a parser ask for so much; it makes do with less
        count = longestBlock;
    }
    QByteArray bytes(static_cast<int>(count), Qt::Uninitialized);
    qint64 done = 0;
    while (done < count) {
        const SPiece& piece = *Find(position + done);
        const qint64 skipped = position + done - foundStart;
        const qint64 part = std::min(piece.size - skipped, count - done);
        if (piece.IsNew()) {
            std::copy_n(piece.bytes.constData() + skipped, part, bytes.data() + done);
        } else if (!ReadOriginal(piece.start + skipped, bytes.data() + done, part)) {
            valid = false;
            return {};
        }
        done += part;
    }
    return bytes;
}

/// Makes a piece begin at @p position, which is not after the end. @return that piece.
EditedFile::Pieces::iterator EditedFile::SplitAt(qint64 position)
{
    const auto tail = Find(position);
    const qint64 split = position - foundStart;
    if (split == 0)
        return tail;
    SPiece head = *tail;
    head.size = split;
    tail->size -= split;
    if (head.IsNew()) {
        head.bytes.truncate(static_cast<int>(split));
        tail->bytes.remove(0, static_cast<int>(split));
    } else {
        tail->start += split;
    }
    pieces.insert(tail, head);
    foundStart = position;
    return tail;
}

void EditedFile::Replace(qint64 position, qint64 count, const QByteArray& bytes)
{
    if (position < 0 || position > size || count < 0 || count > size - position) {
        valid = false;
        return;
    }
    const qint64 end = position + count;
    SplitAt(position);
    auto next = SplitAt(end);
    while (foundStart > position) {
        foundStart -= std::prev(next)->size;
        next = pieces.erase(std::prev(next));
    }
    found = next;
    size += bytes.size() - count;
    if (bytes.isEmpty())
        return;
    if (next != pieces.begin() && std::prev(next)->IsNew()) {
        std::prev(next)->bytes += bytes;
        std::prev(next)->size += bytes.size();
    } else {
        pieces.insert(next, {-1, bytes.size(), bytes});
    }
    foundStart += bytes.size();
}

std::vector<EditedFile::SKept> EditedFile::KeptRanges() const
{
    std::vector<SKept> ranges;
    qint64 position = 0;
    for (const SPiece& piece : pieces) {
        const bool follows = !ranges.empty() && piece.start == ranges.back().start + ranges.back().size &&
                             position == ranges.back().now + ranges.back().size;
        if (follows)
            ranges.back().size += piece.size;
        else if (!piece.IsNew())
            ranges.push_back({piece.start, piece.size, position});
        position += piece.size;
    }
    return ranges;
}

bool EditedFile::IsUntouched() const
{
    const auto now = FactsOf(path);
    return now && IsUnchanged(*facts, *now);
}

EditedFile::Saved EditedFile::Save(const std::function<bool()>& goOn)
{
    FileHandle target(path, O_RDWR);
    if (!valid || !target.IsOpen()) {
        const QString reason = valid ? SystemReason() : unreadable;
        if (!IsUntouched())
            return Saved::Overtaken;
        LogFailure(notSaved, path, reason);
        return Saved::NotAtAll;
    }
    if (KeepsPlaces())
        return Patch(target, goOn);
    target.Close();
    return Rewrite(goOn);
}

/// Whether every kept range stays where it is on disk, and no more is cut off than can be put back.
bool EditedFile::KeepsPlaces() const
{
    constexpr qint64 longestTail = 1 << 23; // bytes, which have to be kept in memory
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

/// What has to be written into the file on disk: of each piece of new bytes, the part from its first difference to its
/// last. What is cut off at the end counts as replaced by nothing.
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
            auto last = piece.bytes.size();
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

EditedFile::Saved EditedFile::Patch(FileHandle& target, const std::function<bool()>& goOn)
{
    const std::vector<SPatch> patches = Patches();
    if (!goOn()) // once: the answer may take long, and nobody is to find half a patch meanwhile
        return Saved::NotAtAll;
    if (!IsUntouched())
        return Saved::Overtaken;
    if (!valid) {
        LogFailure(notSaved, path, unreadable);
        return Saved::NotAtAll;
    }
    // From the end: if there is no room for the file to grow, nothing has been touched yet.
    const bool written = std::all_of(patches.rbegin(), patches.rend(),
                                     [&](const SPatch& patch) { return target.Write(patch.position, patch.after); });
    if (written && (size >= facts->size || target.Resize(size)) && target.Flush())
        return Saved::Whole;
    LogFailure(notSaved, path);
    for (const SPatch& patch : patches)
        target.Write(patch.position, patch.before);
    target.Resize(facts->size);
    target.Flush();
    return Saved::NotAtAll;
}

EditedFile::Saved EditedFile::Rewrite(const std::function<bool()>& goOn)
{
    constexpr qint64 step = 1 << 20;                   // bytes
    NewFile copy(QFileInfo(path).canonicalFilePath()); // a link stays one
    bool written = copy.IsOpen();
    qint64 position = 0;
    for (auto piece = Find(0); written && position < size; piece = Find(position)) {
        if (!piece->IsNew() && piece->size - (position - foundStart) >= step) {
            const qint64 skipped = position - foundStart;
            const qint64 length = piece->size - skipped;
            written = copy.CopyRange(original, piece->start + skipped, length, goOn) == NewFile::Transfer::Done;
            position += length;
            continue;
        }
        // Many small pieces at once.
        const QByteArray bytes = Read(position, step);
        written = goOn() && valid && copy.Append(bytes);
        position += bytes.size();
    }
    written = written && copy.CopyOwner(*facts);
    if (written) {
        copy.CopyAttributes(original, *facts);
        written = copy.Finish();
    }
    QString reason = valid ? SystemReason() : unreadable;
    // Some servers refuse to give a new file the name of one that is open.
    original.Close();
    // As late as possible: what somebody else wrote meanwhile is kept.
    if (!IsUntouched())
        return Saved::Overtaken;
    if (written) {
        if (copy.Appear(NewFile::Existing::Replace))
            return Saved::Whole;
        reason = SystemReason();
    }
    if (goOn())
        LogFailure(notSaved, path, reason);
    return Saved::NotAtAll;
}
