#include "dialogs/DialogSocial.h"

#include "platform/UserSettings.h"
#include "platform/WebPages.h"
#include "ui_DialogSocial.h"

namespace
{
void Follow(const QString& page)
{
    OpenWebPage(page);
    OpenSettings().setValue(SettingsKey::skipSocial, 1);
}
} // namespace

DialogSocial::DialogSocial(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui_DialogSocial>())
{
    ui->setupUi(this);
}

DialogSocial::~DialogSocial() = default;

void DialogSocial::on_buttonFacebook_clicked()
{
    Follow(WebPage::facebook);
}

void DialogSocial::on_buttonGoogle_clicked()
{
    Follow(WebPage::googlePlus);
}
