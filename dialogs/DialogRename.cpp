#include "dialogs/DialogRename.h"

#include "naming/ProfileText.h"
#include "ui_DialogRename.h"

DialogRename::DialogRename(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui_DialogRename>())
{
    ui->setupUi(this);
}

DialogRename::~DialogRename() = default;

int DialogRename::exec()
{
    ui->editRenameScheme->setText(scheme);
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
