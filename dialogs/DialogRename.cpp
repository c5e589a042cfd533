#include "dialogs/DialogRename.h"

#include "naming/SRunSettings.h"
#include "tags/SAudioFile.h"
#include "ui_DialogRename.h"

DialogRename::DialogRename(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui_DialogRename>())
{
    ui->setupUi(this);
    QString placeholders = tr("Placeholders:");
    for (const STag& tag : allTags)
        placeholders += QStringLiteral(" [%1]").arg(QLatin1String(tag.name));
    ui->editRenameScheme->setToolTip(placeholders);
    ui->editRenameScheme->setAccessibleDescription(placeholders);
}

DialogRename::~DialogRename() = default;

int DialogRename::exec()
{
    ui->editRenameScheme->ShowText(scheme);
    ui->editRenameScheme->setFocus();
    return QDialog::exec();
}

void DialogRename::on_buttonOK_clicked()
{
    scheme = WithoutLineBreaks(ui->editRenameScheme->text());
    accept();
}

void DialogRename::on_buttonCancel_clicked()
{
    reject();
}
