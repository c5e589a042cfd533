#include "dialogs/DialogAbout.h"

#include "platform/WebPages.h"
#include "ui_DialogAbout.h"

DialogAbout::DialogAbout(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui_DialogAbout>())
{
    ui->setupUi(this);
    ui->textVersion->setText(QStringLiteral("Orvanto Version " ORVANTO_VERSION));
    ui->label_2->setText(QStringLiteral("<a href=\"%1\">%1</a>").arg(WebPage::home));
}

DialogAbout::~DialogAbout() = default;
