#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class Ui_DialogSearch;

/// Asks for a folder to search for files of one type. Every choice is stored as soon as it is made, so that Cancel
/// keeps it for the next time. Once the dialog was accepted, the caller reads the three members.
class DialogSearch : public QDialog
{
    Q_OBJECT

public:
    explicit DialogSearch(QWidget* parent);
    ~DialogSearch() override;

    QString searchPath;
    bool searchSubfolders = false;
    int searchMask = 0; ///< index into AudioExtensions()

private slots:
    void on_editSearchPath_textEdited(const QString& text);
    void on_buttonBrowse_clicked();
    void on_checkSearchSubfolders_clicked(bool checked);
    void on_comboSearchMask_activated(int index);
    void on_buttonOK_clicked();
    void on_buttonCancel_clicked();

private:
    void Init();
    void StoreSearchPath(const QString& path);

    std::unique_ptr<Ui_DialogSearch> ui;
};
