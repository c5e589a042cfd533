#include "app/MainWindow.h"

#include "app/MainWindowBusy.h"
#include "dialogs/Prompts.h"
#include "naming/OutputPath.h"
#include "platform/Desktop.h"
#include "platform/UserSettings.h"
#include "tags/AudioTypes.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMediaPlayer>
#include <QMenu>
#include <QPalette>
#include <QScrollBar>
#include <QShortcut>
#include <QStyleFactory>

#include <initializer_list>
#include <utility>

namespace
{
constexpr QSize startSize(780, 560);

const QString themeSheet =
    QStringLiteral("QToolTip { color: #FFFFFF; background-color: #26A3E2; border: 1px solid white; }"
                   "QLineEdit:!enabled { background-color: #424242; }"
                   "QPushButton:!enabled { background-color: #505050; color: #999999; }"
                   "QSpinBox:!enabled { background-color: #424242; }"
                   "QMenu { background-color: #313131; }"
                   "QMenu::item:!enabled { color: #999999; }"
                   "QMenu::item:selected { color: #FFFFFF; background-color: #07D33A; }"
                   "QMenu::item:selected:!enabled { color: #000000; }"
                   "QMenu::separator { }");
} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), ui(std::make_unique<Ui_MainWindow>()), worker(nullptr)
{
    ChangeTheme();
    ui->setupUi(this);
    listMenu = new QMenu(this);
    addMenu = new QMenu(this);
    removeMenu = new QMenu(this);
    Init();
}

MainWindow::~MainWindow()
{
    worker.requestInterruption();
    worker.wait(); // here, before the form goes
    DiscardPlayer();
}

void MainWindow::ChangeTheme()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));

    const QColor accent(0x07, 0xD3, 0x3A);
    const QColor dark(0x42, 0x42, 0x42);
    // The garish colours show at once when something uses a role that this theme does not expect.
    const std::pair<QPalette::ColorRole, QColor> colors[] = {
        {QPalette::Window, dark},
        {QPalette::WindowText, Qt::white},
        {QPalette::Base, {0x21, 0x21, 0x21}},
        {QPalette::AlternateBase, Qt::yellow},
        {QPalette::ToolTipBase, Qt::white},
        {QPalette::ToolTipText, Qt::white},
        {QPalette::Text, Qt::white},
        {QPalette::Button, dark},
        {QPalette::ButtonText, Qt::white},
        {QPalette::BrightText, Qt::magenta},
        {QPalette::Light, dark},
        {QPalette::Midlight, Qt::red},
        {QPalette::Dark, Qt::gray},
        {QPalette::Mid, Qt::red},
        {QPalette::Shadow, Qt::red},
        {QPalette::Highlight, accent},
        {QPalette::HighlightedText, Qt::black},
        {QPalette::Link, accent},
        {QPalette::LinkVisited, accent},
    };
    QPalette palette;
    for (const auto& [role, color] : colors)
        palette.setBrush(QPalette::All, role, color);
    QApplication::setPalette(palette);

    // That palette shows disabled widgets like enabled ones.
    QPalette disabledPalette = palette;
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        disabledPalette.setColor(QPalette::Disabled, role, QColor(0x99, 0x99, 0x99));
    for (const char* widget : {"QCheckBox", "QComboBox", "QLabel", "QLineEdit", "QRadioButton"})
        QApplication::setPalette(disabledPalette, widget);

    qApp->setStyleSheet(themeSheet);
}

void MainWindow::Init()
{
    connect(&worker, &ProcessThread::finished, this, &MainWindow::ProcessThreadFinished);
    connect(&worker, &ProcessThread::ShowEditTagDialog, this, &MainWindow::ShowDialogEditTag);
    connect(&worker, &ProcessThread::SetProgress, this, &MainWindow::UpdateProgress);
    connect(ui->listAudioFiles, &QWidget::customContextMenuRequested, this, &MainWindow::OnListAudioFilesRightClick);

    tagManager.goOn = [this] { return Pump(); };
    extensions = AudioExtensions();
    resize(startSize);
    setAcceptDrops(true);
    // A double-click plays a file in the user's own player. To show ours, remove this loop.
    for (QWidget* hidden : std::initializer_list<QWidget*>{ui->groupAudioPlayer, ui->buttonPlay, ui->buttonStop})
        hidden->hide();
    // Six tags of one line each fit in any font.
    const int sixLines = static_cast<int>(allTags.size()) * ui->textInfo->fontMetrics().lineSpacing();
    ui->scrollInfo->setMinimumHeight(sixLines + 2 * ui->scrollInfo->frameWidth());
    ui->buttonAdd->setStyleSheet(QStringLiteral("Text-align:left; padding:7px 0px 9px 18px;"));
    ui->buttonRemove->setStyleSheet(QStringLiteral("padding:7px 8px 9px 8px;")); // on one line with Add
    FillCombos();
    ResetInterface();
    CreatePopupMenus();
    BindKeys();
    qApp->installEventFilter(this);
}

void MainWindow::FillCombos()
{
    ui->comboOrganizeBy->clear();
    for (const SOrganizeChoice& choice : organizeChoices)
        ui->comboOrganizeBy->addItem(QLatin1String(choice.label));
    ui->comboRename->clear();
    for (const SRenameChoice& choice : renameChoices)
        ui->comboRename->addItem(QLatin1String(choice.label));
}

void MainWindow::CreatePopupMenus()
{
    addMenu->addAction(tr("File(s)"), this, &MainWindow::OnAddFiles);
    addMenu->addAction(tr("Folder"), this, &MainWindow::OnAddFolder);
    addMenu->addAction(tr("Folder with Subfolders"), this, &MainWindow::OnAddFolderWithSubfolders);
    addMenu->addAction(tr("Search"), this, &MainWindow::OnSearch);

    removeMenu->addAction(tr("Selected"), this, &MainWindow::OnRemoveSelected);
    removeMenu->addAction(tr("All"), this, &MainWindow::OnRemoveAll);

    listMenu->addAction(tr("Edit Tags"), this, &MainWindow::OnEditTags);
    listMenu->addAction(tr("Batch Edit Tags"), this, &MainWindow::OnBatchEditTags);
    listMenu->addSeparator();
    listMenu->addAction(tr("Remove"), this, &MainWindow::OnRemoveFile);
}

/// Binds keys to what a mouse does by pointing. The shortcuts of the menu bar are in the form.
void MainWindow::BindKeys()
{
    for (const QKeySequence& keys : {QKeySequence(Qt::Key_Menu), QKeySequence(QStringLiteral("Shift+F10"))})
        new QShortcut(keys, ui->listAudioFiles, this, &MainWindow::OnListAudioFilesMenuKey, Qt::WidgetShortcut);

    QAction* const removeSelected = removeMenu->actions().first();
    removeSelected->setShortcuts(RemovalKeys());
    removeSelected->setShortcutContext(Qt::WidgetShortcut);
    ui->listAudioFiles->addAction(removeSelected);

    new QShortcut(Qt::Key_F10, this, [this] { ui->menuBar->setActiveAction(ui->menuFile->menuAction()); });

    // Where the tags do not fit, Tab reaches the panel, and the arrow keys scroll it.
    connect(ui->scrollInfo->verticalScrollBar(), &QScrollBar::rangeChanged, ui->scrollInfo,
            [this](int, int last) { ui->scrollInfo->setFocusPolicy(last > 0 ? Qt::TabFocus : Qt::NoFocus); });
}

/// Resets every setting to its default; the file list, the current row and the title stay.
void MainWindow::ResetInterface()
{
    settings = SRunSettings();
    settings.outputFolder = StoredFolder(SettingsKey::outputFolder);
    ShowSettings();
    ui->progressOrganize->setValue(0);
    ui->progressOrganize->setEnabled(activity != Activity::Idle); // New in mid-run: the bar has the focus
    ClearPreviews();
}

/// Shows the settings in their widgets, without the effects of a change by the user.
void MainWindow::ShowSettings()
{
    ui->comboOrganizeBy->setCurrentIndex(settings.organizeBy);
    ui->comboRename->setCurrentIndex(settings.renameIndex);
    ui->checkSkipOrganize->setChecked(settings.skipOrganize);
    ui->radioFixAuto->setChecked(!settings.fixManually);
    ui->radioFixMan->setChecked(settings.fixManually);
    ui->checkOnlyEditInvalid->setChecked(settings.onlyEditInvalid);
    EnableSetting(*ui->checkOnlyEditInvalid, settings.fixManually, *ui->radioFixAuto);
    ui->checkDeleteOriginal->setChecked(settings.deleteOriginal);
    ui->editOutputFolder->setText(settings.outputFolder);
}

/// Shows the settings, with the effects that the same changes by the user would have.
void MainWindow::RefreshInterface()
{
    ShowSettings();
    // That slot would ask for the custom scheme.
    if (settings.renameIndex != customRenameIndex)
        on_comboRename_activated(settings.renameIndex);
    on_checkSkipOrganize_clicked(settings.skipOrganize);
    SetOutputFolder(settings.outputFolder);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->ignore(); // at a log-out, too: the next line decides whether we exit
    on_actionExit_triggered();
}

void MainWindow::on_actionExit_triggered()
{
    if (unsavedChanges) {
        const auto answer = Ask(tr("You have unsaved changes. Do you want to save your settings?"),
                                QMessageBox::No | QMessageBox::Cancel);
        if (answer != QMessageBox::Yes && answer != QMessageBox::No)
            return;
        if (answer == QMessageBox::Yes)
            on_actionSave_Profile_triggered(); // we leave even if that did not save
    }
    Quit();
}

/// Ends the program from any state. Loops on this thread see the flag; the worker stops in mid-file.
void MainWindow::Quit()
{
    quitting = stopping = true;
    hide();
    worker.requestInterruption();
    QCoreApplication::quit();
}
