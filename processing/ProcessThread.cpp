#include "processing/ProcessThread.h"

#include "files/FilePath.h"
#include "naming/OutputPath.h"
#include "naming/StandIns.h"
#include "processing/FileStatus.h"
#include "tags/TagTextRules.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
constexpr unsigned long dialogPollInterval = 50; // milliseconds

} // namespace

ProcessThread::ProcessThread(QObject* parent) : QThread(parent)
{
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
    ownDestinations.clear();
}

QString ProcessThread::GenerateFilename(int index) const
{
    return BuildFileName(files.at(index), settings.renameIndex, settings.customRenameScheme);
}

SAudioFile ProcessThread::AwaitRequest() const
{
    // The worker raises the flag just after it has asked; an answer must not overtake it.
    while (!waitingForDialog && isRunning())
        yieldCurrentThread();
    return editedFile;
}

void ProcessThread::AnswerDialog(int result)
{
    dialogResult = result;
    waitingForDialog = false;
}

void ProcessThread::run()
{
    Init();
    Process();
    // No request outlives its run, and whoever sees the flag cleared sees the results, too.
    waitingForDialog = false;
}

void ProcessThread::Process()
{
    if (!FixTags())
        return;
    if (settings.skipOrganize) {
        emit SetProgress(files.size());
        return;
    }
    if (!IsOrganizeChoice(settings.organizeBy))
        return; // nothing is copied, so there are no originals to delete
    CreateFolders();
    CopyFiles();
    // Without a rename choice all files were meant for one nameless destination; that is no reason to delete any.
    if (settings.deleteOriginal && IsRenameChoice(settings.renameIndex))
        DeleteOriginals();
}

/// @return false when the user aborted or the run was interrupted.
bool ProcessThread::FixTags()
{
    for (SAudioFile& file : files) {
        if (isInterruptionRequested())
            return false;
        if (!settings.AsksAboutEveryFile() && !IsIncomplete(file))
            continue;
        const bool askUser = settings.fixManually || FixFromFileName(file);
        if (askUser && !AskUser(file))
            return false;
    }
    return true;
}

/// Fills a missing artist and title from a file name like "Artist-Title", else a missing title from all of it.
/// @return whether @p file is still incomplete.
bool ProcessThread::FixFromFileName(SAudioFile& file)
{
    const QString baseName = BaseNameOf(file.Path);
    const int dash = baseName.indexOf(QLatin1Char('-'));
    const bool hasArtistAndTitle = dash > 0 && dash < baseName.size() - 1;
    const auto fill = [this, &file](const STag& tag, const QString& text) {
        tagManager.SetInfo(tag.index, text);
        file.*tag.field = text;
    };

    tagManager.path = file.Path;
    bool incomplete = false;
    for (const STag& tag : allTags) {
        if (!IsMissing(file, tag))
            continue;
        if (hasArtistAndTitle && (tag.index == Tag::Artist || tag.index == Tag::Title)) {
            QString candidate = tag.index == Tag::Artist ? baseName.left(dash) : baseName.mid(dash + 1);
            RemoveTrailingSpaces(candidate);
            if (!candidate.isEmpty() && candidate != unknownTag)
                fill(tag, candidate);
            else
                incomplete = true;
        } else if (tag.index == Tag::Title) {
            fill(tag, baseName); // whatever it is, it counts as a title
        } else {
            incomplete = true;
        }
    }
    return incomplete;
}

/// @return false when the user aborted or the run was interrupted.
bool ProcessThread::AskUser(SAudioFile& file)
{
    editedFile = file;
    emit ShowEditTagDialog();
    waitingForDialog = true;
    while (waitingForDialog) {
        if (isInterruptionRequested())
            return false;
        msleep(dialogPollInterval);
    }
    if (dialogResult != 1)
        return false;

    tagManager.WriteFile(editedFile);
    if (!settings.skipOrganize) {
        PutNamingPlaceholders(editedFile);
        file = editedFile;
    }
    return true;
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
            workingFolder.mkdir(folder); // a missing output folder of several levels is not made up for here
        else
            workingFolder.mkpath(folder);
    }
}

void ProcessThread::CopyFiles()
{
    for (int i = 0; i < files.size() && !isInterruptionRequested(); ++i) {
        const QString name = GenerateFilename(i);
        // A blunt test on purpose: it refuses a real title with this word in it, too.
        const bool refused = name.contains(unknownTag);
        if (refused) {
            RecordFailure(files.at(i).Path);
            TakeNamingPlaceholdersBack(files[i]);
        } else {
            CopyFile(i, name);
        }
        // Without folders, progress passes refused files over; with folders it counts them. Both are kept.
        if (!refused || settings.organizeBy != 0)
            emit SetProgress(i + 1);
    }
}

void ProcessThread::CopyFile(int index, const QString& name)
{
    const SAudioFile& file = files.at(index);
    const QStringList folderTags = FolderTags(file, settings.organizeBy);
    const QString destination = BuildFolderPath(settings.outputFolder, folderTags) + QLatin1Char('/') + name +
                                QLatin1Char('.') + ExtensionOf(file.Path);
    outputPaths += destination;
    const auto source = StatusOf(file.Path);
    // A pipe or a device in the source's place would be waited for, or count as copied.
    if (!source || !S_ISREG(source->st_mode) || foldersLeadingOut.contains(folderTags)) {
        RecordFailure(file.Path);
    } else if (QFileInfo(destination).isFile()) {
        // It is kept, and that is no failure. The two are compared at once: there are file systems that make inode
        // numbers up and forget them.
        if (IdentityOf(destination) == IdentityOf(*source))
            ownDestinations.insert(file.Path);
    } else if (QFile::copy(file.Path, destination)) {
        CopyAttributes(*source, destination);
    } else {
        RecordFailure(file.Path);
    }
}

void ProcessThread::RecordFailure(const QString& sourcePath)
{
    failureText += sourcePath + QLatin1Char('\n');
    failedPaths += sourcePath;
}

/// Removes every source that was copied, or whose destination was another file all along. A source that is its own
/// destination stays, however its path is spelled.
void ProcessThread::DeleteOriginals()
{
    const QStringList kept = outputPaths + failedPaths + ownDestinations.values();
    const QSet<QString> keptPaths(kept.begin(), kept.end());
    QSet<FileIdentity> keptFiles;
    for (const QString& path : kept) {
        if (const auto identity = IdentityOf(path))
            keptFiles.insert(*identity);
    }

    for (const SAudioFile& file : qAsConst(files)) {
        if (isInterruptionRequested())
            return;
        const auto identity = IdentityOf(file.Path);
        if (identity && !keptFiles.contains(*identity) && !keptPaths.contains(file.Path))
            QFile::remove(file.Path);
    }
    files.clear();
}
