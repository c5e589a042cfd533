#include "app/MainWindow.h"

#include "app/MainWindowBusy.h"
#include "app/Percentage.h"
#include "dialogs/DialogSocial.h"
#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "files/WholeFile.h"
#include "platform/UserSettings.h"
#include "processing/RunLog.h"
#include "tags/TagTextRules.h"
#include "ui_MainWindow.h"

#include <QDir>

void MainWindow::on_buttonOrganize_clicked()
{
    if (audioFiles.IsEmpty()) {
        Warn(tr("There are no audio files to process."));
        return;
    }
    if (settings.deleteOriginal && !settings.skipOrganize &&
        !AskYesNo(tr("You have chosen to delete the original files after processing. The files with processing errors "
                     "will not be deleted. Even so, we advise you to make backup copies of the original files before "
                     "proceeding. Continue?")))
        return;
    DiscardPlayer();
    run = std::make_unique<ActivityGuard>(*this, Activity::Running, tr("Erasing invalid tags..."));
    EraseInvalidTags();
    if (!quitting)
        StartProcessing();
}

/// Empties every tag that carries a web address, in the list and in the files.
void MainWindow::EraseInvalidTags()
{
    const ActivityGuard changing(*this, Activity::Changing);
    for (int row = 0; row < audioFiles.Count(); ++row) {
        if (!Pump())
            return;
        SAudioFile file = audioFiles.At(row);
        bool erased = false;
        for (const STag& tag : allTags) {
            if (IsInvalidTag(file.*tag.field)) {
                (file.*tag.field).clear();
                erased = true;
            }
        }
        if (erased)
            WriteRecord(row, file);
    }
}

void MainWindow::StartProcessing()
{
    BeginStage(tr("Processing..."));
    worker.files = audioFiles.Records();
    worker.settings = settings;
    while (worker.settings.outputFolder.endsWith(QLatin1Char('/')))
        worker.settings.outputFolder.chop(1);
    worker.start(QThread::InheritPriority);
}

void MainWindow::UpdateProgress(int handled)
{
    ui->progressOrganize->setValue(Percentage(handled, audioFiles.Count()));
}

void MainWindow::ProcessThreadFinished()
{
    if (quitting)
        return;
    ReportRun();
    ReloadList();
    run.reset();
    ClearPreviews();
    if (quitting || StoredFlag(SettingsKey::skipSocial))
        return;
    DialogSocial dialog(nullptr);
    PlaceOverMainWindow(dialog);
    dialog.exec();
}

/// Shows how the run went and appends it to the log. Without a log it says only that.
void MainWindow::ReportRun()
{
    QDir().mkpath(FolderOf(RunLogPath()));
    if (!AppendToFile(RunLogPath(), QByteArray())) { // only to see whether it can be written
        Warn(tr("Could not save log."));
        return;
    }
    QString report = worker.failureText;
    if (worker.failedPaths.isEmpty()) { // after Abort, too, by our decision
        const QString success = tr("Operation finished successfully!");
        Inform(success);
        report = success + QLatin1Char('\n');
    } else {
        Warn(report +
                 tr("\nOrvanto could not fix the invalid tags. For better results try to manually edit the tags or "
                    "try a different organize/rename pattern."),
             tr("Log"));
    }
    AppendToFile(RunLogPath(), RunLogBlock(QDateTime::currentDateTime(), report));
}

/// Lists the files that the worker has left, with their tags as they are on disk now.
void MainWindow::ReloadList()
{
    BeginStage(tr("Updating audio file list..."));
    audioFiles.Clear();
    for (const SAudioFile& file : qAsConst(worker.files)) {
        audioFiles.Append(tagManager.ReadFile(file.Path));
        if (!Pump())
            return;
    }
    SynchronizeListAudioFiles(true);
}
