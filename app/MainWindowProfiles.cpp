#include "app/MainWindow.h"

#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "files/TextFile.h"
#include "naming/ProfileText.h"
#include "platform/UserSettings.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>

namespace
{
/// Where the profile dialogs start; created if missing.
QString ProfileFolder()
{
    const QString folder = DocumentsFolder() + QStringLiteral("/Orvanto/Profiles");
    QDir().mkpath(folder);
    return folder;
}

QString ProfileFilter()
{
    return MainWindow::tr("Orvanto Profile (*.ovp)");
}
} // namespace

/// Shows that the settings are those of the profile @p name: its name in the title, without the mark of unsaved
/// changes.
void MainWindow::UpdateAppTitleWithProfile(const QString& name)
{
    setWindowTitle(QStringLiteral("Orvanto - ") + name);
    unsavedChanges = false;
}

void MainWindow::on_actionNew_triggered()
{
    const bool nothingToLose = !unsavedChanges && audioFiles.IsEmpty() && profilePath.isEmpty();
    if (!nothingToLose && !AskYesNo(tr("This will overwrite your current settings. Continue?")))
        return;
    ResetInterface();
    RefreshInterface();
    setWindowTitle(QStringLiteral("Orvanto"));
    unsavedChanges = false;
    profilePath.clear();
}

void MainWindow::on_actionSave_Profile_triggered()
{
    if (profilePath.isEmpty()) {
        on_actionSave_Profile_As_triggered();
        return;
    }
    if (!WriteWholeFile(profilePath, ProfileText(settings))) {
        Warn(tr("Could not save profile."));
        return;
    }
    UpdateAppTitleWithProfile(BaseNameOf(profilePath));
}

void MainWindow::on_actionSave_Profile_As_triggered()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save profile"), ProfileFolder(), ProfileFilter());
    if (path.isEmpty())
        return;
    profilePath = path; // stays even if saving fails, so that the next Save tries the same file again
    on_actionSave_Profile_triggered();
}

void MainWindow::on_actionLoad_Profile_triggered()
{
    if (!MayOverwriteSettings())
        return;
    // A user who asks for a profile has given up the present settings. So only a successful load clears the flag: after
    // a cancelled or failed one, changed settings go unmarked until a profile is loaded.
    loading = true;
    const QString path = QFileDialog::getOpenFileName(this, tr("Load profile"), ProfileFolder(), ProfileFilter());
    if (!path.isEmpty())
        LoadProfile(path);
}

/// Whether a profile may replace the settings. Asks the user if there are unsaved changes.
bool MainWindow::MayOverwriteSettings()
{
    return !unsavedChanges || AskYesNo(tr("Loading a profile will overwrite your current settings. Continue?"));
}

void MainWindow::LoadProfile(const QString& path)
{
    loading = true;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Warn(tr("Could not load profile."));
        return;
    }
    settings = ReadProfile(file);
    file.close();
    UpdateAppTitleWithProfile(BaseNameOf(path));
    RefreshInterface();
    profilePath = path;
    loading = false;
}
