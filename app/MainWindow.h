#pragma once

#include "naming/SRunSettings.h"
#include "processing/ProcessThread.h"
#include "tags/AudioFileList.h"
#include "tags/TagManager.h"

#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>

class QDialog;
class QListWidgetItem;
class QMediaPlayer;
class QMenu;
class Ui_MainWindow;

/// The one window: it owns the file list, the settings, the profile's state and the worker. Each group of slots below
/// has a file of its own, MainWindow*.cpp. "Frame" is in MainWindow.cpp; MainWindowBusy.cpp has what is common to
/// everything that takes long.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent);
    /// Stops a run and waits for that.
    ~MainWindow() override;

    /// Takes what the desktop or the command line hands over: files and folders join the list as if they were dropped;
    /// a single profile is loaded. A window that is busy or shows a dialog takes nothing.
    void OpenPaths(const QStringList& paths);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private slots:
    // Frame
    void on_actionExit_triggered();

    // File list
    void on_buttonAdd_clicked();
    void on_buttonRemove_clicked();
    void on_listAudioFiles_itemPressed(QListWidgetItem* item);
    void OnListAudioFilesRightClick();
    void OnListAudioFilesMenuKey();
    void OnAddFiles();
    void OnAddFolder();
    void OnAddFolderWithSubfolders();
    void OnSearch();
    void OnRemoveFile();
    void OnRemoveSelected();
    void OnRemoveAll();

    // Settings
    void on_comboOrganizeBy_activated(int index);
    void on_comboRename_activated(int index);
    void on_checkSkipOrganize_clicked(bool checked);
    void on_radioFixAuto_clicked();
    void on_radioFixMan_clicked();
    void on_checkOnlyEditInvalid_clicked(bool checked);
    void on_checkDeleteOriginal_clicked(bool checked);
    void on_editOutputFolder_textEdited(const QString& text);
    void on_buttonBrowseOutFold_clicked();

    // Processing
    void on_buttonOrganize_clicked();
    void UpdateProgress(int handled);
    void ProcessThreadFinished();

    // Tag editing
    void OnEditTags();
    void OnBatchEditTags();
    void ShowDialogEditTag();

    // Profiles
    void on_actionNew_triggered();
    void on_actionSave_Profile_triggered();
    void on_actionSave_Profile_As_triggered();
    void on_actionLoad_Profile_triggered();

    // Preview player
    void on_buttonPlay_clicked();
    void on_buttonStop_clicked();
    void on_listAudioFiles_itemDoubleClicked(QListWidgetItem* item);

    // Help
    void on_actionShow_Log_triggered();
    void on_actionOnline_Help_triggered();
    void on_actionVideo_Tutorial_triggered();
    void on_actionOnline_Support_triggered();
    void on_actionVisit_Our_Website_triggered();
    void on_actionAbout_triggered();

private:
    /// What the window is doing. Only an idle one takes drops. While files are added and during a run, the menus and
    /// the settings stay in use; while tags or rows change, the window takes no input but Escape, and can be closed.
    enum class Activity { Idle, Adding, Changing, Running };
    class ActivityGuard;

    static void ChangeTheme();
    void Init();
    void FillCombos();
    void CreatePopupMenus();
    void BindKeys();
    void ResetInterface();
    void ShowSettings();
    void RefreshInterface();
    void Quit();

    void FillList(const std::function<void()>& add);
    void AddPaths(const QStringList& paths);
    void AddFolder(const QString& folder, bool recursive);
    void AddFilesToList(const QStringList& files);
    void SynchronizeListAudioFiles(bool showProgress);
    void LookBusy(const QString& status);
    void LookIdle(QWidget* focused);
    void ShowStatus(const QString& status);
    void BeginStage(const QString& status);
    [[nodiscard]] bool Pump();
    void AskToStop();
    void CallAgainOnceAnswered(void (MainWindow::*slot)());
    bool IsStopKey(const QObject& receiver, const QEvent& event) const;
    bool IsInput(const QObject& receiver, const QEvent& event) const;
    bool AcceptsFiles() const;

    void EnableSetting(QWidget& setting, bool enabled, QWidget& neighbour);
    void SetOutputFolder(const QString& folder);
    void SignalSettingsChanged();
    void UpdateOutputPreview();
    QString GenerateCurrentFilename() const;
    void ShowTags(const SAudioFile* file);
    void ClearPreviews();

    void EraseInvalidTags();
    void StartProcessing();
    void ReportRun();
    void ReloadList();

    void WriteRecord(int row, const SAudioFile& file);

    bool MayOverwriteSettings();
    void LoadProfile(const QString& path);
    void UpdateAppTitleWithProfile(const QString& name);
    void DiscardPlayer();

    std::unique_ptr<Ui_MainWindow> ui;
    AudioFileList audioFiles;
    TagManager tagManager;
    ProcessThread worker;
    std::unique_ptr<QMediaPlayer> player; ///< null until the first Play
    QMenu* listMenu;
    QMenu* addMenu;
    QMenu* removeMenu;
    QStringList extensions; ///< what may join the list; narrowed during a search
    SRunSettings settings;
    int currentRow = -1; ///< the selected file; may lie past the end after a removal, -1 when there is none
    bool unsavedChanges = false;
    QString profilePath;  ///< of the profile last saved or loaded; empty when there is none
    bool loading = false; ///< a profile is being loaded: changes of settings do not count as the user's
    Activity activity = Activity::Idle;
    std::unique_ptr<ActivityGuard>
        run;                        ///< from Start until the list is reloaded; after `ui`, which its destructor uses
    QPointer<QDialog> stopQuestion; ///< while it is open
    bool stopping = false;          ///< the user wants the activity to end: every loop that pumps events then ends
    bool quitting = false;          ///< the user wants to exit
};
