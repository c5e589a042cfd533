#include "processing/ProcessThread.h"

#include "files/CopyGroup.h"
#include "files/FailureLog.h"
#include "files/FilePath.h"
#include "naming/OutputPath.h"
#include "naming/StandIns.h"
#include "tags/TagTextRules.h"

#include <QDir>
#include <QFileInfo>

using Outcome = SRowResult::Outcome;

namespace
{
constexpr unsigned long dialogPollInterval = 50; // milliseconds

/// Whether a folder named by these tags is, or lies below, a link that leads out of @p outputFolder, or nowhere yet.
bool LeadsOut(const QString& outputFolder, const QStringList& folderTags)
{
    const auto canonical = [](const QString& path) {
        const QString folder = QDir(path).canonicalPath();
        return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    };
    const QString root = canonical(outputFolder + QLatin1Char('/'));
    for (int levels = 1; levels <= folderTags.size(); ++levels) {
        const QString folder = BuildFolderPath(outputFolder, folderTags.mid(0, levels));
        const QFileInfo info(folder);
        if ((info.exists() || info.isSymLink()) && !canonical(folder).startsWith(root))
            return true;
    }
    return false;
}
} // namespace

ProcessThread::ProcessThread(QObject* parent) : QThread(parent)
{
    tagManager.goOn = [this] { return !isInterruptionRequested(); };
    Init();
}

ProcessThread::~ProcessThread()
{
    requestInterruption();
    wait();
}

void ProcessThread::Init()
{
    failureText = failureHeading;
    waitingForDialog = false;
    dialogResult = -1;
    outputPaths.clear();
    failedPaths.clear();
    foldersLeadingOut.clear();
    rows.clear();
}

QString ProcessThread::GenerateFilename(int index) const
{
    return BuildFileName(files.at(index), settings.renameIndex, settings.customRenameScheme);
}

void ProcessThread::AnswerDialog(int result)
{
    dialogResult = result;
    waitingForDialog = false;
}

void ProcessThread::run()
{
    Init();
    end = Process();
    // No request outlives its run, and whoever sees the flag cleared sees the results, too.
    waitingForDialog = false;
}

RunEnd ProcessThread::Process()
{
    const RunEnd fixing = FixTags();
    if (fixing != RunEnd::Complete)
        return fixing;
    if (settings.skipOrganize) {
        emit SetProgress(static_cast<int>(files.size()));
        return RunEnd::Complete;
    }
    if (!OrganizeChoiceAt(settings.organizeBy))
        return RunEnd::Complete; // nothing is copied, so there are no originals to delete
    CreateFolders();
    const RunEnd copying = CopyFiles();
    return copying == RunEnd::Complete && settings.deleteOriginal ? DeleteOriginals() : copying;
}

/// For the end of a stage: a stop may have cut short the very last file.
RunEnd ProcessThread::EndSoFar() const
{
    return isInterruptionRequested() ? RunEnd::Interrupted : RunEnd::Complete;
}

RunEnd ProcessThread::FixTags()
{
    for (SAudioFile& file : files) {
        if (isInterruptionRequested())
            return RunEnd::Interrupted;
        if (!settings.AsksAboutEveryFile() && !IsIncomplete(file))
            continue;
        const bool askUser = settings.fixManually || FixFromFileName(file);
        const RunEnd asking = askUser ? AskUser(file) : RunEnd::Complete;
        if (asking != RunEnd::Complete)
            return asking;
    }
    return EndSoFar();
}

/// Fills a missing artist and title from a file name like "Artist-Title", else a missing title from all of it.
/// @return whether @p file is still incomplete.
bool ProcessThread::FixFromFileName(SAudioFile& file)
{
    const QString baseName = BaseNameOf(file.Path);
    const auto dash = baseName.indexOf(QLatin1Char('-'));
    const bool hasArtistAndTitle = dash > 0 && dash < baseName.size() - 1;
    TagValues found;
    bool incomplete = false;
    for (const STag& tag : allTags) {
        if (!IsMissing(file, tag))
            continue;
        if (hasArtistAndTitle && (tag.index == Tag::Artist || tag.index == Tag::Title)) {
            QString candidate = tag.index == Tag::Artist ? baseName.left(dash) : baseName.mid(dash + 1);
            RemoveTrailingSpaces(candidate);
            if (!candidate.isEmpty() && candidate != unknownTag)
                found.emplace_back(tag.index, candidate);
            else
                incomplete = true;
        } else if (tag.index == Tag::Title) {
            found.emplace_back(tag.index, baseName); // whatever it is, it counts as a title
        } else {
            incomplete = true;
        }
    }
    tagManager.path = file.Path;
    if (!found.empty())
        tagManager.SetTags(found);
    for (const auto& [index, text] : found)
        file.*FieldOf(index) = text;
    return incomplete;
}

RunEnd ProcessThread::AskUser(SAudioFile& file)
{
    editedFile = file;
    waitingForDialog = true; // before the request: an answer must not overtake it
    emit ShowEditTagDialog();
    while (waitingForDialog) {
        if (isInterruptionRequested())
            return RunEnd::Interrupted;
        msleep(dialogPollInterval);
    }
    if (dialogResult != 1)
        return RunEnd::Aborted;

    tagManager.WriteFile(editedFile);
    if (!settings.skipOrganize) {
        PutStandIns(editedFile);
        file = editedFile;
    }
    return RunEnd::Complete;
}

/// Makes one folder for each distinct combination of tags, and notes those that are not ours to write into; what
/// becomes a link only later is not seen. Failures show when files are copied.
void ProcessThread::CreateFolders()
{
    const QDir workingFolder;
    if (!settings.outputFolder.isEmpty())
        workingFolder.mkdir(settings.outputFolder);

    QSet<QStringList> made;
    for (const SAudioFile& file : files) {
        const QStringList tags = FolderTags(file, settings.organizeBy);
        if (tags.isEmpty() || made.contains(tags))
            continue;
        made.insert(tags);
        if (LeadsOut(settings.outputFolder, tags)) {
            foldersLeadingOut.insert(tags);
            continue;
        }
        // Only a top level named "Unknown" is refused, a lower one may be.
        if (StrippedOfReservedChars(tags.first()) == unknownTag)
            continue;
        const QString folder = BuildFolderPath(settings.outputFolder, tags);
        if (tags.size() == 1)
            workingFolder.mkdir(folder); // which creates no missing levels of the output folder
        else
            workingFolder.mkpath(folder);
    }
}

RunEnd ProcessThread::CopyFiles()
{
    rows.assign(static_cast<std::size_t>(files.size()), {});
    CopyGroup group(
        [this] { return !isInterruptionRequested(); },
        [this](int row, const SCopy& copy) {
            if (copy.result != CopyResult::Stopped)
                RowAt(row) = {copy.result == CopyResult::Copied ? Outcome::Copied : Outcome::Failed, copy.source};
        });
    for (int i = 0; i < files.size() && !isInterruptionRequested(); ++i) {
        // Blunt, for it refuses a real title with this word in it, too; but a file that is refused loses nothing.
        const bool refused = GenerateFilename(i).contains(unknownTag);
        if (refused) {
            RowAt(i).outcome = Outcome::Failed;
            RemoveStandIns(files[i]);
        } else {
            CopyToTree(i, group);
        }
        // Without folders, refused files are not counted: the bar then shows what has been placed. With folders they
        // count, so that it goes on evenly.
        if (!refused || settings.organizeBy != 0)
            emit SetProgress(i + 1);
    }
    group.Finish();
    for (int i = 0; i < files.size(); ++i) {
        if (RowAt(i).outcome == Outcome::Failed)
            RecordFailure(files.at(i).Path);
    }
    return EndSoFar();
}

void ProcessThread::CopyToTree(int index, CopyGroup& group)
{
    const SAudioFile& file = files.at(index);
    const QString destination = BuildOutputPath(file, settings);
    outputPaths += destination;
    group.FinishBefore(destination);
    const auto source = FactsOf(file.Path);
    const bool leadsOut = foldersLeadingOut.contains(FolderTags(file, settings.organizeBy));
    // A pipe or a device in the source's place must not count as copied.
    if (!source || !source->IsRegular() || leadsOut) {
        LogFailure(notCopied, file.Path,
                   !source    ? SystemReason()
                   : leadsOut ? QStringLiteral("A link leads out of the output folder")
                              : QStringLiteral("It is no regular file"));
        RowAt(index).outcome = Outcome::Failed;
    } else if (QFileInfo(destination).isFile()) {
        // It is kept, and that is no failure. The two are compared at once: there are file systems that make inode
        // numbers up and forget them.
        if (!IsSameFile(destination, file.Path))
            RowAt(index) = {Outcome::WasThere, source};
    } else {
        group.Add(index, file.Path, destination);
    }
}

SRowResult& ProcessThread::RowAt(int index)
{
    return rows.at(static_cast<std::size_t>(index));
}

void ProcessThread::RecordFailure(const QString& sourcePath)
{
    failureText += sourcePath + QLatin1Char('\n');
    failedPaths += sourcePath;
}

RunEnd ProcessThread::DeleteOriginals()
{
    OriginalsDeletion deletion(settings, outputPaths + failedPaths);
    for (int i = 0; i < files.size(); ++i) {
        if (isInterruptionRequested())
            return RunEnd::Interrupted;
        if (!deletion.Delete(files.at(i), RowAt(i)))
            RecordFailure(files.at(i).Path);
    }
    files.clear();
    return RunEnd::Complete;
}
