#pragma once

#include "naming/SRunSettings.h"
#include "processing/OriginalsDeletion.h"
#include "processing/RunLog.h"
#include "tags/SAudioFile.h"
#include "tags/TagManager.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QThread>

#include <atomic>
#include <vector>

class CopyGroup;

/// The worker: one run over its own copy of the file list. It repairs and writes tags, copies every file into the
/// output tree and may delete the originals. Fill `files` and `settings`, start it, and read the results once it has
/// finished; while it runs, nothing but the hand-off below may be written, and only `settings` read.
/// requestInterruption() stops it before the next file, or within one that it copies or saves; it then deletes no more.
class ProcessThread : public QThread
{
    Q_OBJECT

public:
    explicit ProcessThread(QObject* parent);
    /// Stops the run and blocks until it has ended.
    ~ProcessThread() override;

    /// Forgets the results of an earlier run. Every run begins by calling it.
    void Init();

    /// The new name, without extension, of `files[index]`.
    QString GenerateFilename(int index) const;

    /// Interface thread: hands the tag editor's result to the waiting worker, once `editedFile` holds the user's tags.
    void AnswerDialog(int result);

    QList<SAudioFile> files; ///< rewritten while tags are fixed; empty after originals were deleted
    TagManager tagManager;
    SRunSettings settings; ///< settings.outputFolder has no trailing "/" here

    RunEnd end = RunEnd::Complete;
    QString failureText; ///< the report: a heading, then the sources in failedPaths, one a line

    /// The hand-off: the worker fills the record and waits while the flag is set. The interface thread writes the
    /// record and the result and clears the flag last; whoever sees the flag cleared sees the other two.
    SAudioFile editedFile;
    std::atomic<bool> waitingForDialog{false};
    int dialogResult = -1; ///< 1 accepted, -1 not asked yet, anything else aborts the run

    QList<QString> outputPaths; ///< every destination decided on, in order, whether or not a copy was made there
    QList<QString> failedPaths; ///< sources that were not copied, or had changed when they were to be deleted, in order

signals:
    /// Asks for the tag editor on `editedFile`.
    void ShowEditTagDialog();
    /// The number of files handled so far.
    void SetProgress(int handled);

protected:
    void run() override;

private:
    RunEnd Process();
    RunEnd EndSoFar() const;
    RunEnd FixTags();
    bool FixFromFileName(SAudioFile& file);
    RunEnd AskUser(SAudioFile& file);
    void CreateFolders();
    RunEnd CopyFiles();
    void CopyToTree(int index, CopyGroup& group);
    void RecordFailure(const QString& sourcePath);
    RunEnd DeleteOriginals();
    SRowResult& RowAt(int index);

    std::vector<SRowResult> rows;
    QSet<QStringList> foldersLeadingOut; ///< FolderTags() of folders behind a link out of the output folder
};
