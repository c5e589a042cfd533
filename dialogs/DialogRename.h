#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class Ui_DialogRename;

/// Asks for the custom rename scheme. The caller fills `scheme` and, when the dialog was accepted, reads it back.
class DialogRename : public QDialog
{
    Q_OBJECT

public:
    explicit DialogRename(QWidget* parent);
    ~DialogRename() override;

    int exec() override;

    QString scheme;

private slots:
    void on_buttonOK_clicked();
    void on_buttonCancel_clicked();

private:
    std::unique_ptr<Ui_DialogRename> ui;
};
