#include "files/CopyGroup.h"

#include "files/FailureLog.h"
#include "files/FileHandle.h"
#include "files/FilePath.h"
#include "files/NewFile.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr std::size_t mostCopies = 32;
constexpr qint64 mostBytes = 64 << 20;
constexpr qint64 longestWait = 1000; // milliseconds
} // namespace

struct CopyGroup::SWaiting
{
    SWaiting(int ofRow, const QString& sourcePath, const QString& destination)
        : row(ofRow), source(sourcePath), from(source, O_RDONLY), facts(from.Facts()),
          copy(facts && facts->IsRegular() ? std::make_unique<NewFile>(destination) : nullptr)
    {}
    QString Reason() const;

    const int row;
    const QString source;
    const FileHandle from;
    const std::optional<SFileFacts> facts;
    const std::unique_ptr<NewFile> copy;
    QString place;
    bool isFlushed = false;
    QString flushReason; ///< why not
};

/// Why the last call failed for this copy.
QString CopyGroup::SWaiting::Reason() const
{
    const QString reason = SystemReason();
    const auto now = from.Facts();
    return now && !IsUnchanged(*facts, *now) ? QStringLiteral("Another program has changed it meanwhile") : reason;
}

CopyGroup::CopyGroup(std::function<bool()> goOnWhile, Report reportTo)
    : goOn(std::move(goOnWhile)), report(std::move(reportTo))
{}

CopyGroup::~CopyGroup() = default;

/// @p destination in one spelling for all the paths that a file system may take for it.
QString CopyGroup::PlaceOf(const QString& destination)
{
    const QString folder = FolderOf(destination);
    if (!folders.contains(folder))
        folders.insert(folder, ComparablePath(folder + QLatin1Char('/')));
    return folders.value(folder) + Comparable(destination.mid(folder.size()));
}

bool CopyGroup::IsDue() const
{
    return waiting.size() == mostCopies || waitingBytes >= mostBytes ||
           (!waiting.empty() && sinceFirst.hasExpired(longestWait));
}

void CopyGroup::FinishBefore(const QString& destination)
{
    const auto isThere = [place = waiting.empty() ? QString() : PlaceOf(destination)](const auto& each) {
        return each->place == place;
    };
    if (IsDue() || std::any_of(waiting.begin(), waiting.end(), isThere))
        Finish();
}

void CopyGroup::Add(int row, const QString& source, const QString& destination)
{
    auto next = std::make_unique<SWaiting>(row, source, destination);
    if (!next->copy || !next->copy->IsOpen()) {
        LogFailure(notCopied, source);
        return report(row, {CopyResult::Failed, next->facts});
    }
    if (next->facts->size > mostBytes - waitingBytes)
        Finish();
    const NewFile::Transfer content = next->copy->CopyContent(next->from, next->facts->size, [this] {
        if (IsDue())
            Finish();
        return goOn();
    });
    if (content != NewFile::Transfer::Done) {
        const bool failed = content == NewFile::Transfer::Failed;
        if (failed)
            LogFailure(notCopied, source, next->Reason());
        return report(row, {failed ? CopyResult::Failed : CopyResult::Stopped, next->facts});
    }
    next->copy->CopyAttributes(next->from, *next->facts);
    next->copy->CopyTimes(*next->facts);
    next->copy->StartFlush();
    next->place = PlaceOf(destination);
    if (waiting.empty())
        sinceFirst.start();
    waitingBytes += next->facts->size;
    waiting.push_back(std::move(next));
    if (IsDue())
        Finish();
}

void CopyGroup::Finish()
{
    const auto group = std::exchange(waiting, {});
    waitingBytes = 0;
    folders.clear();
    // The first flush waits for all of them, and cannot be stopped: on a slow stick, let there be little to wait for.
    for (const auto& each : group) {
        if (goOn())
            each->copy->AwaitFlush();
    }
    for (const auto& each : group) {
        each->isFlushed = goOn() && each->copy->Finish();
        if (!each->isFlushed)
            each->flushReason = each->Reason();
    }
    for (const auto& each : group) {
        const bool isStopped = !goOn();
        const auto now = each->from.Facts();
        const bool appeared = !isStopped && each->isFlushed && now && IsUnchanged(*each->facts, *now) &&
                              each->copy->Appear(NewFile::Existing::Keep);
        const CopyResult failure = isStopped ? CopyResult::Stopped : CopyResult::Failed;
        if (!appeared && !isStopped)
            LogFailure(notCopied, each->source, each->isFlushed ? each->Reason() : each->flushReason);
        report(each->row, {appeared ? CopyResult::Copied : failure, each->facts});
    }
}
