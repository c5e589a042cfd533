#include "app/MainWindow.h"

#include "dialogs/DialogRename.h"
#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "naming/OutputPath.h"
#include "platform/UserSettings.h"
#include "ui_MainWindow.h"

void MainWindow::SignalSettingsChanged()
{
    if (loading)
        return;
    if (!windowTitle().endsWith(QLatin1Char('*')))
        setWindowTitle(windowTitle() + QLatin1Char('*'));
    unsavedChanges = true;
}

void MainWindow::on_comboOrganizeBy_activated(int index)
{
    settings.organizeBy = index;
    UpdateOutputPreview();
    SignalSettingsChanged();
}

void MainWindow::on_comboRename_activated(int index)
{
    if (index == customRenameIndex) {
        DialogRename dialog(this);
        dialog.scheme = settings.customRenameScheme;
        if (dialog.exec() == QDialog::Accepted)
            settings.customRenameScheme = dialog.scheme;
        // After Cancel, the choice is Custom all the same, with the scheme as it was.
    }
    settings.renameIndex = index;
    UpdateOutputPreview();
    SignalSettingsChanged();
}

void MainWindow::on_checkSkipOrganize_clicked(bool checked)
{
    settings.skipOrganize = checked;
    for (QWidget* const setting :
         std::initializer_list<QWidget*>{ui->comboOrganizeBy, ui->comboRename, ui->editOutputFolder,
                                         ui->buttonBrowseOutFold, ui->editOutputPreview, ui->checkDeleteOriginal})
        EnableSetting(*setting, !checked, *ui->checkSkipOrganize);
    SignalSettingsChanged();
}

/// A setting that is disabled hands the focus to @p neighbour. Qt would pass it on to Start, or to a text that the next
/// key would change.
void MainWindow::EnableSetting(QWidget& setting, bool enabled, QWidget& neighbour)
{
    if (!enabled && focusWidget() == &setting) // also just after a dialog, when no widget has it yet
        neighbour.setFocus();
    setting.setEnabled(enabled);
}

void MainWindow::on_radioFixAuto_clicked()
{
    settings.fixManually = false;
    EnableSetting(*ui->checkOnlyEditInvalid, false, *ui->radioFixAuto);
    SignalSettingsChanged();
}

void MainWindow::on_radioFixMan_clicked()
{
    settings.fixManually = true;
    ui->checkOnlyEditInvalid->setEnabled(true);
    SignalSettingsChanged();
}

void MainWindow::on_checkOnlyEditInvalid_clicked(bool checked)
{
    settings.onlyEditInvalid = checked;
    SignalSettingsChanged();
}

void MainWindow::on_checkDeleteOriginal_clicked(bool checked)
{
    settings.deleteOriginal = checked;
    SignalSettingsChanged();
}

void MainWindow::on_editOutputFolder_textEdited(const QString& text)
{
    const QString folder = WithoutLineBreaks(text);
    if (folder != text) { // it was pasted
        const QString before = WithoutLineBreaks(text.left(ui->editOutputFolder->cursorPosition()));
        ui->editOutputFolder->setText(folder);
        ui->editOutputFolder->setCursorPosition(static_cast<int>(before.size()));
    }
    SetOutputFolder(folder);
}

/// Sets an output folder that was typed or read from a profile, where a carriage return is part of it.
void MainWindow::SetOutputFolder(const QString& folder)
{
    settings.outputFolder = WithForwardSlashes(folder);
    UpdateOutputPreview();
    if (!loading)
        OpenSettings().setValue(SettingsKey::outputFolder, settings.outputFolder);
    SignalSettingsChanged();
}

void MainWindow::on_buttonBrowseOutFold_clicked()
{
    const QString folder = AskForFolder(this, SettingsKey::outputFolder);
    // Not SetOutputFolder(): a chosen folder keeps its backslashes, and is remembered even while `loading` is set.
    if (!folder.isEmpty()) {
        ui->editOutputFolder->setText(folder);
        settings.outputFolder = folder;
        UpdateOutputPreview();
        OpenSettings().setValue(SettingsKey::outputFolder, folder);
    }
    SignalSettingsChanged(); // after Cancel, too: a needless mark loses nothing
}

/// The name of the selected file in the preview; empty when none is selected.
QString MainWindow::GenerateCurrentFilename() const
{
    return audioFiles.IsRow(currentRow) ? BuildPreviewFileName(audioFiles.At(currentRow), settings) : QString();
}

void MainWindow::UpdateOutputPreview()
{
    if (audioFiles.IsRow(currentRow))
        ui->editOutputPreview->setText(
            BuildPreviewPath(audioFiles.At(currentRow), settings, GenerateCurrentFilename()));
}

/// Shows the tags of @p file in the info panel, a line each; their captions alone when there is no file.
void MainWindow::ShowTags(const SAudioFile* file)
{
    QStringList lines;
    for (const STag& tag : allTags)
        lines += QLatin1String(tag.name) + (file ? QStringLiteral(": ") + file->*tag.field : QStringLiteral(":"));
    ui->textInfo->setText(lines.join(QLatin1Char('\n')));
}

void MainWindow::ClearPreviews()
{
    ShowTags(nullptr);
    ui->editOutputPreview->clear();
}
