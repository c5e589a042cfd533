#pragma once

#include <QDialog>

#include <memory>

class Ui_DialogSocial;

/// Invites the user to the maker's social pages after a run. Following either link is stored, and the main window then
/// shows the dialog no more; the dialog itself stays open until the user closes it.
class DialogSocial : public QDialog
{
    Q_OBJECT

public:
    explicit DialogSocial(QWidget* parent);
    ~DialogSocial() override;

private slots:
    void on_buttonFacebook_clicked();
    void on_buttonGoogle_clicked();

private:
    std::unique_ptr<Ui_DialogSocial> ui;
};
