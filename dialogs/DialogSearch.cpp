#include "dialogs/DialogSearch.h"

#include "dialogs/Prompts.h"
#include "files/FilePath.h"
#include "platform/UserSettings.h"
#include "tags/AudioTypes.h"
#include "ui_DialogSearch.h"

DialogSearch::DialogSearch(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui_DialogSearch>())
{
    ui->setupUi(this);
    Init();
}

DialogSearch::~DialogSearch() = default;

void DialogSearch::Init()
{
    searchPath = StoredFolder(SettingsKey::searchFolder);
    ui->editSearchPath->ShowText(searchPath);
    ui->editSearchPath->setFocus();

    searchSubfolders = StoredFlag(SettingsKey::searchSubfolders);
    ui->checkSearchSubfolders->setChecked(searchSubfolders);

    for (const QString& extension : AudioExtensions())
        ui->comboSearchMask->addItem(QStringLiteral("*.") + extension);
    searchMask = OpenSettings().value(SettingsKey::searchMask).toInt();
    if (searchMask < 0 || searchMask >= AudioExtensions().size())
        searchMask = 0;
    ui->comboSearchMask->setCurrentIndex(searchMask);
}

void DialogSearch::StoreSearchPath(const QString& path)
{
    searchPath = path;
    OpenSettings().setValue(SettingsKey::searchFolder, path);
}

void DialogSearch::on_editSearchPath_textEdited(const QString& text)
{
    StoreSearchPath(WithForwardSlashes(text));
}

void DialogSearch::on_buttonBrowse_clicked()
{
    const QString folder = AskForFolder(this, SettingsKey::searchFolder);
    if (folder.isEmpty())
        return;
    ui->editSearchPath->ShowText(folder);
    StoreSearchPath(folder);
}

void DialogSearch::on_checkSearchSubfolders_clicked(bool checked)
{
    searchSubfolders = checked;
    OpenSettings().setValue(SettingsKey::searchSubfolders, checked);
}

void DialogSearch::on_comboSearchMask_activated(int index)
{
    searchMask = index;
    OpenSettings().setValue(SettingsKey::searchMask, index);
}

void DialogSearch::on_buttonOK_clicked()
{
    accept();
}

void DialogSearch::on_buttonCancel_clicked()
{
    reject();
}
