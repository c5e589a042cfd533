#pragma once

#include "tags/SAudioFile.h"

#include <QDialog>

#include <memory>

class QAction;
class QMediaPlayer;
class QMenu;
class Ui_DialogEditTags;

/// The tag editor. It touches no file: the caller fills the tags, runs it, and reads them back.
class DialogEditTags : public QDialog
{
    Q_OBJECT

public:
    /// What the editor is opened for; any other number shows the form as RepairIncomplete.
    enum Mode { RepairIncomplete = 0, RepairEvery = 1, EditOne = 2, EditAll = 3 };

    DialogEditTags(QWidget* parent, int mode);
    ~DialogEditTags() override;

    /// Takes the six tags and the path of @p file.
    void SetFile(const SAudioFile& file);
    /// The six tags and the path as a record.
    SAudioFile File() const;

    /// Shows the members in the form and runs it modally. 1: accepted by OK, Skip or closing the window, where OK alone
    /// changes the members; 0: aborted or cancelled.
    int exec() override;

    QString artist;
    QString title;
    QString album;
    QString year;
    QString genre;
    QString track;
    QString filePath;

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void on_buttonOK_clicked();
    void on_buttonSkip_clicked();
    void on_buttonAbort_clicked();
    void on_buttonPlay_clicked();
    void on_buttonStop_clicked();
    void on_buttonOnlineSearch_clicked();
    void OnDiscogs();
    void OnAllmusic();

private:
    void Init();
    QString GenerateSearchString() const;

    std::unique_ptr<Ui_DialogEditTags> ui;
    std::unique_ptr<QMediaPlayer> player; ///< always null: another application plays the files
    QMenu* menuOnlineSearch;
    QAction* actionDiscogs;
    QAction* actionAllmusic;
};
