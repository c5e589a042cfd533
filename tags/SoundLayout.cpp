#include "tags/SoundLayout.h"

#include <algorithm>
#include <string>

namespace
{
enum class Order { BigEndian, LittleEndian };

constexpr int id3v1Size = 128; // bytes

/// 0 where there are not so many bytes: the file ends there, or cannot be read.
quint64 NumberIn(const QByteArray& bytes, int at, int size, Order order = Order::BigEndian)
{
    if (bytes.size() < at + size)
        return 0;
    quint64 number = 0;
    for (int i = 0; i < size; ++i)
        number = number << 8 | static_cast<quint8>(bytes.at(order == Order::BigEndian ? at + i : at + size - 1 - i));
    return number;
}

quint64 NumberAt(EditedFile& file, qint64 position, int size, Order order = Order::BigEndian)
{
    return NumberIn(file.Read(position, size), 0, size, order);
}

bool IsOneOf(const QByteArray& name, std::initializer_list<const char*> names)
{
    return std::any_of(names.begin(), names.end(), [&name](const char* one) { return name == one; });
}

/// The atoms of an mp4 file (ISO/IEC 14496-12), which TagLib believes. They nest in each other.
class Mp4Atoms
{
public:
    explicit Mp4Atoms(EditedFile& mp4) : file(mp4) {}
    bool Walk() { return Walk(0, file.Size(), 0, false); }
    SSoundLayout layout;

private:
    bool Walk(qint64 position, qint64 end, int depth, bool areTags);
    bool AddOffsets(const QByteArray& name, qint64 content, qint64 end);
    bool AddTable(qint64 start, qint64 end, int entrySize, int inEntry, int numberSize);
    bool AddOffset(qint64 at, qint64 end, int size, bool isFromEnd = false);
    void Keep(qint64 to);

    qint64 keptTo = 0; ///< from here on, it is not yet decided what has to stay
    EditedFile& file;
    int count = 0;
};

/// Walks through the atoms from @p position to @p end; @p areTags for those whose bytes an edit may change.
bool Mp4Atoms::Walk(qint64 position, qint64 end, int depth, bool areTags)
{
    constexpr int deepest = 32, mostAtoms = 1 << 18;
    constexpr qint64 longestInMemory = 1 << 28; // bytes; TagLib reads tables and tags as a whole
    if (depth > deepest)
        return false;
    while (end - position >= 8) {
        const QByteArray header = file.Read(position, 16);
        if (depth == 0 && end - position == id3v1Size && header.startsWith("TAG"))
            return true; // that of a program which took the file for an mp3
        const QByteArray name = header.mid(4, 4);
        qint64 content = position + 8;
        qint64 size = static_cast<qint64>(NumberIn(header, 0, 4));
        if (size == 0 && depth == 0) {
            size = end - position; // the last one
        } else if (size == 1 && header.size() == 16) {
            size = static_cast<qint64>(NumberIn(header, 8, 8));
            content += 8;
        }
        if (++count > mostAtoms || size < content - position || size > end - position)
            return false;
        const qint64 next = position + size;
        const bool isTags = areTags || (depth == 1 && name == "udta");
        if (IsOneOf(name,
                    {"moov", "udta", "mdia", "meta", "ilst", "stbl", "minf", "moof", "traf", "trak", "stsd", "mfra"})) {
            if (name == "moov" && size > longestInMemory)
                return false;
            if (name == "stsd")
                content += 8;
            else if (name == "meta" && !IsOneOf(file.Read(content + 4, 4), {"hdlr", "ilst", "mhdr", "ctry", "lang"}))
                content += 4; // in QuickTime, it has no version and flags
            keptTo = position;
            if (!isTags && name != "moov") // whose sizes change
                Keep(content);
            if (content > next || !Walk(content, next, depth + 1, isTags))
                return false;
        } else {
            keptTo = position;
            if (!AddOffsets(name, content, next))
                return false;
            if (!isTags)
                Keep(next);
        }
        position = next;
    }
    // Anything may follow the last atom of the file; inside an atom, QuickTime ends a list with a word of zeros.
    return depth == 0 || file.Read(position, end - position).count('\0') == end - position;
}

/// Says that all bytes before @p to have to stay together.
void Mp4Atoms::Keep(qint64 to)
{
    if (to > keptTo)
        layout.ranges.push_back({keptTo, to - keptTo});
    keptTo = to;
}

/// Collects the offsets in an atom that has no others in it, if any.
bool Mp4Atoms::AddOffsets(const QByteArray& name, qint64 content, qint64 end)
{
    if (IsOneOf(name, {"cmov", "iloc", "saio"}))
        layout.mayMove = false;
    if (name == "stco" || name == "co64") {
        const int numberSize = name == "stco" ? 4 : 8;
        return AddTable(content + 4, end, numberSize, 0, numberSize);
    }
    if (name == "tfhd") {
        const bool hasBase = NumberAt(file, content, 4) & 1;
        return content + 8 <= end && (!hasBase || AddOffset(content + 8, end, 8));
    }
    if (name == "sidx") {
        const bool isLong = NumberAt(file, content, 1) > 0;
        return AddOffset(content + (isLong ? 20 : 16), end, isLong ? 8 : 4, true);
    }
    if (name == "tfra") {
        const int numberSize = NumberAt(file, content, 1) > 0 ? 8 : 4;
        const auto lengths = static_cast<int>(NumberAt(file, content + 11, 1));
        const int smallNumbers = 3 + (lengths & 3) + (lengths >> 2 & 3) + (lengths >> 4 & 3);
        return AddTable(content + 12, end, 2 * numberSize + smallNumbers, numberSize, numberSize);
    }
    return true;
}

/// Collects the offsets in a table whose number of entries is at @p start. Each is @p inEntry bytes behind the
/// beginning of its entry.
bool Mp4Atoms::AddTable(qint64 start, qint64 end, int entrySize, int inEntry, int numberSize)
{
    const auto entries = static_cast<qint64>(NumberAt(file, start, 4));
    for (qint64 entry = 0; entry < entries; ++entry) {
        if (!AddOffset(start + 4 + entry * entrySize + inEntry, end, numberSize))
            return false;
    }
    return true;
}

bool Mp4Atoms::AddOffset(qint64 at, qint64 end, int size, bool isFromEnd)
{
    constexpr std::size_t mostOffsets = 1 << 22;
    constexpr qint64 farthest = 1 << 30;
    if (at + size > end || end - at > farthest || layout.offsets.size() == mostOffsets)
        return false;
    Keep(at);
    keptTo = at + size;
    const qint64 base = isFromEnd ? end : 0;
    layout.offsets.push_back(
        {base + static_cast<qint64>(NumberAt(file, at, size)), at, size, isFromEnd ? static_cast<int>(end - at) : 0});
    return true;
}

/// Where edits have moved the bytes of a file.
class Places
{
public:
    explicit Places(const EditedFile& edited) : kept(edited.KeptRanges()) {}

    /// Nothing when not all of the @p size bytes at @p start are kept.
    std::optional<qint64> Of(qint64 start, qint64 size = 1) const
    {
        const auto next = std::upper_bound(kept.begin(), kept.end(), start,
                                           [](qint64 position, const SKept& range) { return position < range.start; });
        if (next == kept.begin() || size > std::prev(next)->start + std::prev(next)->size - start)
            return std::nullopt;
        return std::prev(next)->now + start - std::prev(next)->start;
    }
    bool AreOld() const
    {
        return std::all_of(kept.begin(), kept.end(), [](const SKept& range) { return range.start == range.now; });
    }

private:
    using SKept = EditedFile::SKept;
    const std::vector<SKept> kept;
};

/// The end of the sound before the tags that end a file.
qint64 EndOfSound(EditedFile& file)
{
    constexpr int footerSize = 32; // bytes, of APE's header, too
    qint64 end = file.Size();
    if (file.Read(end - id3v1Size, 3) == "TAG")
        end -= id3v1Size;
    const QByteArray footer = file.Read(end - footerSize, footerSize);
    if (footer.startsWith("APETAGEX")) {
        const auto size = static_cast<qint64>(NumberIn(footer, 12, 4, Order::LittleEndian));
        const bool hasHeader = NumberIn(footer, 20, 4, Order::LittleEndian) >> 31;
        const qint64 start = end - size - (hasHeader ? footerSize : 0);
        if (size >= footerSize && start >= 0 && (!hasHeader || file.Read(start, 8) == "APETAGEX"))
            end = start;
    }
    return end;
}
} // namespace

std::optional<SSoundLayout> Mp4Layout(EditedFile& file, qint64 start)
{
    Mp4Atoms atoms(file);
    if (start != 0 || !atoms.Walk())
        return std::nullopt;
    return atoms.layout;
}

std::optional<SSoundLayout> RiffLayout(EditedFile& file, qint64 start)
{
    const Order order = file.Read(start, 4) == "FORM" ? Order::BigEndian : Order::LittleEndian;
    const qint64 end = file.Size();
    const auto size = static_cast<qint64>(NumberAt(file, start + 4, 4, order));
    // Some programs forget the byte that makes the length of the last chunk even, or do not count it.
    if (start != 0 || (size + 8 != end && size + 8 + size % 2 != end))
        return std::nullopt;
    constexpr std::size_t mostChunks = 1 << 16; // quiet sound that a header does not count reads as many empty chunks
    SSoundLayout layout;
    qint64 position = 12;
    while (end - position >= 8) {
        const QByteArray header = file.Read(position, 12);
        if (header.isEmpty() || layout.ranges.size() == mostChunks)
            return std::nullopt;
        const QByteArray name = header.left(4);
        const qint64 chunkEnd = position + 8 + static_cast<qint64>(NumberIn(header, 4, 4, order));
        if (!IsOneOf(name, {"ID3 ", "id3 "}) && !(name == "LIST" && header.mid(8) == "INFO"))
            layout.ranges.push_back({position, chunkEnd - position});
        position = chunkEnd + chunkEnd % 2;
    }
    return layout;
}

std::optional<SSoundLayout> FlacLayout(EditedFile& file, qint64 start)
{
    qint64 position = start + 4;
    for (bool last = false; !last;) {
        const quint64 header = NumberAt(file, position, 4);
        last = header >> 31;
        position += 4 + static_cast<qint64>(header & 0xFFFFFF);
        if (position > file.Size() || header == 0)
            return std::nullopt;
    }
    constexpr quint64 sync = 0x3FFE; // the first 14 bits of each frame
    const qint64 end = EndOfSound(file);
    if (position < end && NumberAt(file, position, 2) >> 2 != sync)
        return std::nullopt;
    return SSoundLayout{{{position, end - position}}, {}, true};
}

std::optional<SSoundLayout> OggLayout(EditedFile& file, qint64 start)
{
    // Header pages have the position 0, or -1 where no packet ends. An edit may renumber the pages after them.
    qint64 position = start;
    QByteArray page = file.Read(position, 27);
    while (page.size() == 27 && page.startsWith("OggS") && qint64(NumberIn(page, 6, 8, Order::LittleEndian)) <= 0) {
        const QByteArray lengths = file.Read(position + 27, static_cast<quint8>(page.at(26)));
        position += 27 + lengths.size();
        for (const char length : lengths)
            position += static_cast<quint8>(length);
        page = file.Read(position, 27);
    }
    if (!page.startsWith("OggS"))
        return std::nullopt;
    return SSoundLayout{{}, {{position}, {file.Size() - 1}}, true};
}

std::optional<SSoundLayout> AsfLayout(EditedFile& file, qint64 start)
{
    // The header is followed by the data object, which has this id.
    const QByteArray dataId = QByteArray::fromHex("3626b2758e66cf11a6d900aa0062ce6c");
    const auto position = static_cast<qint64>(NumberAt(file, 16, 8, Order::LittleEndian));
    if (start != 0 || file.Read(position, 16) != dataId)
        return std::nullopt;
    return SSoundLayout{{{position, file.Size() - position}}, {}, true};
}

std::optional<SSoundLayout> TaggedAtEndsLayout(EditedFile& file, qint64 start)
{
    return SSoundLayout{{{start, qMax<qint64>(EndOfSound(file) - start, 0)}}, {}, true};
}

void CorrectOffsets(const SSoundLayout& before, const SSoundLayout& now, EditedFile& edited)
{
    const Places places(edited);
    if (before.offsets.size() != now.offsets.size())
        return;
    for (std::size_t i = 0; i < now.offsets.size(); ++i) {
        const SSoundLayout::SOffset& offset = now.offsets[i];
        const qint64 target = places.Of(before.offsets[i].target).value_or(before.offsets[i].target);
        if (target == offset.target || offset.size == 0)
            continue;
        qint64 number = target - (offset.distance ? offset.at + offset.distance : 0);
        QByteArray bytes(offset.size, Qt::Uninitialized);
        for (int at = offset.size - 1; at >= 0; --at, number >>= 8)
            bytes[at] = static_cast<char>(number);
        edited.Replace(offset.at, offset.size, bytes);
    }
}

bool HasMovedWhole(const SSoundLayout& before, const SSoundLayout& now, const EditedFile& edited)
{
    using SRange = SSoundLayout::SRange;
    using SOffset = SSoundLayout::SOffset;
    const Places places(edited);
    const auto isMoved = [&](const SRange& range, const SRange& moved) {
        return range.size == moved.size && (range.size == 0 || places.Of(range.start, range.size) == moved.start);
    };
    // An offset may also point to nothing, as in a recording that broke off.
    const auto isFollowed = [&](const SOffset& offset, const SOffset& followed) {
        return places.Of(offset.target).value_or(offset.target) == followed.target;
    };
    return (before.mayMove || places.AreOld()) &&
           std::equal(before.ranges.begin(), before.ranges.end(), now.ranges.begin(), now.ranges.end(), isMoved) &&
           std::equal(before.offsets.begin(), before.offsets.end(), now.offsets.begin(), now.offsets.end(), isFollowed);
}
