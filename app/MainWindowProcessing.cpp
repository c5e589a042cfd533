#include "app/MainWindow.h"

#include "app/MainWindowBusy.h"
#include "app/Percentage.h"
#include "dialogs/DialogSocial.h"
#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "files/TextFile.h"
#include "naming/OutputPath.h"
#include "platform/UserSettings.h"
#include "processing/RunLog.h"
#include "tags/TagTextRules.h"
#include "ui_MainWindow.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

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
        if (ClearInvalidTags(file))
            WriteRecord(row, file);
    }
}

void MainWindow::StartProcessing()
{
    BeginStage(tr("Processing..."));
    worker.files = audioFiles.Records();
    worker.settings = settings;
    worker.settings.outputFolder = WithoutTrailingSlashes(settings.outputFolder);
    worker.start(QThread::InheritPriority);
    if (stopping) // while tags were erased: such a run ends like any other that is stopped
        worker.requestInterruption();
}

void MainWindow::UpdateProgress(int handled)
{
    ui->progressOrganize->setValue(Percentage(handled, audioFiles.Count()));
}

void MainWindow::ProcessThreadFinished()
{
    if (quitting)
        return;
    if (stopQuestion) { // there is nothing left to stop
        CallAgainOnceAnswered(&MainWindow::ProcessThreadFinished);
        stopQuestion->reject();
        return;
    }
    stopping = false; // the list still has to be reloaded
    ReportRun();
    ReloadList();
    run.reset();
    ClearPreviews();
    if (quitting || worker.end == RunEnd::Interrupted || StoredFlag(SettingsKey::skipSocial))
        return;
    DialogSocial dialog(nullptr);
    PlaceOverMainWindow(dialog);
    dialog.exec();
}

/// Shows how the run went and appends that to the log. If the log cannot be written, it says only so.
void MainWindow::ReportRun()
{
    QDir().mkpath(FolderOf(RunLogPath()));
    if (!AppendToFile(RunLogPath(), QByteArray())) { // only to see whether it can be written
        Warn(tr("Could not save log."));
        return;
    }
    const SRunReport report = ReportOf(worker.end, worker.failedPaths.isEmpty() ? QString() : worker.failureText);
    if (report.failed)
        Warn(report.shown, tr("Log"));
    else
        Inform(report.shown);
    AppendToFile(RunLogPath(), RunLogBlock(QDateTime::currentDateTime(), report.logged));
}

/// Lists the files that the run has left over, with their tags as they are on disk now; after a stop, as the run left
/// them.
void MainWindow::ReloadList()
{
    BeginStage(tr("Updating audio file list..."));
    audioFiles.Clear();
    bool goesOn = true;
    for (const SAudioFile& file : std::as_const(worker.files)) {
        if (worker.end == RunEnd::Interrupted && !QFileInfo::exists(file.Path))
            continue; // stopped while originals were deleted
        audioFiles.Append(goesOn ? tagManager.ReadFile(file.Path) : file);
        goesOn = goesOn && Pump();
    }
    SynchronizeListAudioFiles(true);
}
