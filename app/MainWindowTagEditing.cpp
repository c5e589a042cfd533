#include "app/MainWindow.h"

#include "app/MainWindowBusy.h"
#include "app/Percentage.h"
#include "dialogs/DialogEditTags.h"
#include "dialogs/Prompts.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QScopeGuard>

namespace
{
/// What the batch editor shows in each field; a field left at it keeps every file's own tag.
const QString keptTag = QStringLiteral("[Original]");
} // namespace

/// Writes the tags of @p file to disk and updates its row. A failed write is not reported. Events are processed
/// meanwhile, so the caller has to hold an ActivityGuard for Activity::Changing.
void MainWindow::WriteRecord(int row, const SAudioFile& file)
{
    tagManager.WriteFile(file);
    audioFiles.Replace(row, stopping ? tagManager.ReadFile(file.Path) : file); // the stop may have left it as it was
}

void MainWindow::OnEditTags()
{
    if (!audioFiles.IsRow(currentRow))
        return;
    DiscardPlayer();
    DialogEditTags dialog(this, DialogEditTags::EditOne);
    dialog.SetFile(audioFiles.At(currentRow));
    if (dialog.exec() != QDialog::Accepted)
        return;
    const ActivityGuard changing(*this, Activity::Changing);
    WriteRecord(currentRow, dialog.File());
    on_listAudioFiles_itemPressed(ui->listAudioFiles->currentItem());
}

void MainWindow::OnBatchEditTags()
{
    if (!audioFiles.IsRow(currentRow))
        return;
    DiscardPlayer();
    DialogEditTags dialog(this, DialogEditTags::EditAll);
    SAudioFile shown = audioFiles.At(currentRow);
    for (const STag& tag : allTags)
        shown.*tag.field = keptTag;
    dialog.SetFile(shown);
    if (dialog.exec() != QDialog::Accepted ||
        !AskYesNo(tr("Are you sure you want to apply these tags to all the audio files in the list?")))
        return;

    const ActivityGuard changing(*this, Activity::Changing, tr("Writing tags..."));
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const auto usualCursor = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
    const SAudioFile edited = dialog.File();
    for (int row = 0; row < audioFiles.Count(); ++row) {
        SAudioFile file = audioFiles.At(row);
        for (const STag& tag : allTags) {
            if (edited.*tag.field != keptTag)
                file.*tag.field = edited.*tag.field;
        }
        WriteRecord(row, file);
        ui->progressOrganize->setValue(Percentage(row + 1, audioFiles.Count()));
        if (!Pump())
            break;
    }
    on_listAudioFiles_itemPressed(ui->listAudioFiles->currentItem());
}

void MainWindow::ShowDialogEditTag()
{
    if (stopQuestion) {
        CallAgainOnceAnswered(&MainWindow::ShowDialogEditTag);
        return;
    }
    if (stopping) // the worker no longer waits
        return;
    DialogEditTags dialog(this, worker.settings.AsksAboutEveryFile() ? DialogEditTags::RepairEvery
                                                                     : DialogEditTags::RepairIncomplete);
    dialog.SetFile(worker.editedFile);
    const int result = dialog.exec();
    if (result == QDialog::Accepted)
        worker.editedFile = dialog.File();
    worker.AnswerDialog(result);
}
