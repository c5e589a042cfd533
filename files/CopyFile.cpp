#include "files/CopyFile.h"

#include "files/FileHandle.h"
#include "files/NewFile.h"

#include <QFile>

#include <sys/stat.h>

#include <cerrno>

namespace
{
bool IsFree(const QString& path)
{
    struct stat status;
    return lstat(QFile::encodeName(path).constData(), &status) != 0 && errno == ENOENT;
}
} // namespace

SCopy CopyFile(const QString& source, const QString& destination, const std::function<bool()>& goOn)
{
    const FileHandle from(source, O_RDONLY);
    const auto facts = from.Facts();
    if (!facts || !facts->IsRegular() || !IsFree(destination))
        return {CopyResult::Failed, facts};
    NewFile copy(destination);
    if (!copy.IsOpen())
        return {CopyResult::Failed, facts};
    const NewFile::Transfer content = copy.CopyContent(from, facts->size, goOn);
    if (content == NewFile::Transfer::Stopped)
        return {CopyResult::Stopped, facts};
    copy.TakeAttributes(from, *facts);
    copy.TakeTime(*facts);
    const bool flushed = content == NewFile::Transfer::Done && copy.Finish();
    const auto now = from.Facts();
    const bool appeared = flushed && now && IsUnchanged(*facts, *now) && copy.Appear(NewFile::Existing::Keep);
    return {appeared ? CopyResult::Copied : CopyResult::Failed, facts};
}

bool FlushFolder(const QString& folder)
{
    FileHandle handle(folder, O_RDONLY);
    return !handle.IsOpen() || handle.Flush(FileHandle::Depth::Drive);
}
