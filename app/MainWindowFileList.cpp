#include "app/MainWindow.h"

#include "app/MainWindowBusy.h"
#include "app/Percentage.h"
#include "dialogs/DialogSearch.h"
#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "files/FolderWalk.h"
#include "platform/UserSettings.h"
#include "tags/AudioTypes.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QCursor>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QUrl>

#include <utility>

void MainWindow::on_buttonAdd_clicked()
{
    addMenu->exec(ui->buttonAdd->mapToGlobal(QPoint(0, ui->buttonAdd->height())));
}

void MainWindow::on_buttonRemove_clicked()
{
    removeMenu->exec(ui->buttonRemove->mapToGlobal(QPoint(0, ui->buttonRemove->height())));
}

void MainWindow::OnListAudioFilesRightClick()
{
    const QPoint cursor = QCursor::pos();
    if (ui->listAudioFiles->itemAt(ui->listAudioFiles->viewport()->mapFromGlobal(cursor)))
        listMenu->exec(cursor);
}

/// Opens the menu at the current row, wherever the pointer is.
void MainWindow::OnListAudioFilesMenuKey()
{
    QListWidget& list = *ui->listAudioFiles;
    const QListWidgetItem* const item = list.item(currentRow);
    if (!item)
        return;
    list.scrollToItem(item);
    const QRect row = list.visualItemRect(item) & list.viewport()->rect();
    listMenu->exec(list.viewport()->mapToGlobal(row.bottomLeft()));
}

void MainWindow::OnAddFiles()
{
    const QString masks = QStringLiteral("*.") + AudioExtensions().join(QStringLiteral(" *."));
    const QStringList files = QFileDialog::getOpenFileNames(this, tr("Select one or more files to open"),
                                                            StoredFolder(SettingsKey::addFilesFolder),
                                                            tr("Multimedia files (%1)").arg(masks));
    if (files.isEmpty())
        return;
    FillList([&] { AddFilesToList(files); });
    OpenSettings().setValue(SettingsKey::addFilesFolder, FolderOf(files.first()));
}

void MainWindow::OnAddFolder()
{
    const QString folder = AskForFolder(this, SettingsKey::addFolder);
    if (folder.isEmpty())
        return;
    FillList([&] { AddFolder(folder, false); });
    OpenSettings().setValue(SettingsKey::addFolder, folder);
}

void MainWindow::OnAddFolderWithSubfolders()
{
    const QString folder = AskForFolder(this, SettingsKey::addFolder);
    if (folder.isEmpty())
        return;
    FillList([&] {
        AddFolder(folder, true);
        OpenSettings().setValue(SettingsKey::addFolder, folder);
    });
}

void MainWindow::OnSearch()
{
    DialogSearch dialog(nullptr);
    PlaceOverMainWindow(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.searchPath.isEmpty())
        return;
    FillList([&] {
        const QScopedValueRollback<QStringList> narrowed(extensions, {AudioExtensions().at(dialog.searchMask)});
        AddFolder(dialog.searchPath, dialog.searchSubfolders);
    });
}

/// Keeps the window busy while @p add adds files to the list and the new rows are shown.
void MainWindow::FillList(const std::function<void()>& add)
{
    const ActivityGuard adding(*this, Activity::Adding, tr("Updating audio file list..."));
    add();
    SynchronizeListAudioFiles(true);
}

/// Adds the files of @p folder, smallest first, then those of its subfolders in the same order.
void MainWindow::AddFolder(const QString& folder, bool recursive)
{
    WalkFolder(
        folder, recursive, [this](const QStringList& files) { AddFilesToList(files); }, [this] { return Pump(); });
}

/// Reads and appends those of @p files that are of an accepted type and not listed yet.
void MainWindow::AddFilesToList(const QStringList& files)
{
    for (const QString& path : files) {
        if (audioFiles.Contains(path) || !extensions.contains(ExtensionOf(path)))
            continue;
        if (!Pump())
            return;
        audioFiles.Append(tagManager.ReadFile(path));
    }
}

/// Rebuilds the rows from the records. The current row stays; no row is selected afterwards.
void MainWindow::SynchronizeListAudioFiles(bool showProgress)
{
    // All rows first, then one turn of the event loop for each: a list lays all its rows out again at the first turn
    // after an insertion, so turns in between would take quadratic time.
    const QIcon icon(QStringLiteral(":/res/ListIcon.png"));
    ui->listAudioFiles->clear();
    for (const SAudioFile& file : audioFiles.Records())
        ui->listAudioFiles->addItem(new QListWidgetItem(icon, file.Path));
    // The arrow keys go on from the current row.
    if (audioFiles.IsRow(currentRow))
        ui->listAudioFiles->setCurrentRow(currentRow, QItemSelectionModel::NoUpdate);

    const int count = audioFiles.Count();
    for (int row = 0; row < count; ++row) {
        if (showProgress)
            ui->progressOrganize->setValue(Percentage(row, count));
        if (!Pump())
            return;
    }
}

/// Whether files from outside may join the list.
bool MainWindow::AcceptsFiles() const
{
    return activity == Activity::Idle && !QApplication::activeModalWidget();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    event->accept();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    // Whatever the other program proposes, it must not think that its files were moved.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (!AcceptsFiles())
        return;

    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        paths += url.toLocalFile();
    AddPaths(paths);
}

void MainWindow::OpenPaths(const QStringList& paths)
{
    if (!AcceptsFiles())
        return;
    if (paths.size() == 1 && ExtensionOf(paths.first()) == QLatin1String("ovp")) {
        if (MayOverwriteSettings())
            LoadProfile(QFileInfo(paths.first()).absoluteFilePath());
        return;
    }
    AddPaths(paths);
}

/// Adds folders, always with their subfolders, and after them files; anything else is ignored.
void MainWindow::AddPaths(const QStringList& paths)
{
    QStringList files;
    QStringList folders;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isFile())
            files += info.absoluteFilePath();
        else if (info.isDir())
            folders += info.absoluteFilePath();
    }
    if (folders.isEmpty() && files.isEmpty())
        return;
    FillList([&] {
        for (const QString& folder : std::as_const(folders))
            AddFolder(folder, true);
        AddFilesToList(files);
    });
}

/// Makes the file of @p item the current one and shows its tags and its output path.
void MainWindow::on_listAudioFiles_itemPressed(QListWidgetItem* item)
{
    const int row = audioFiles.RowOf(item->text());
    if (row < 0)
        return;
    ShowTags(&audioFiles.At(row));
    currentRow = row;
    UpdateOutputPreview();
}

void MainWindow::OnRemoveFile()
{
    OnRemoveSelected();
}

void MainWindow::OnRemoveSelected()
{
    if (currentRow < 0 || !AskYesNo(tr("Are you sure you want to remove the selected file?")))
        return;
    const ActivityGuard changing(*this, Activity::Changing);
    // The current row stays: it now designates the file that moved up, or none when the last one went.
    audioFiles.Remove(currentRow);
    SynchronizeListAudioFiles(false);
    ClearPreviews();
}

void MainWindow::OnRemoveAll()
{
    if (audioFiles.IsEmpty() || !AskYesNo(tr("Are you sure you want to remove all the files in the list?")))
        return;
    const ActivityGuard changing(*this, Activity::Changing);
    DiscardPlayer();
    audioFiles.Clear();
    currentRow = -1;
    SynchronizeListAudioFiles(false);
    ClearPreviews();
}
