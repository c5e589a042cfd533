#include "app/MainWindowBusy.h"

#include "dialogs/Prompts.h"
#include "ui_MainWindow.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QScopeGuard>

MainWindow::ActivityGuard::ActivityGuard(MainWindow& busyWindow, Activity activity, const QString& status)
    : window(busyWindow), outer(busyWindow.activity), focused(busyWindow.focusWidget())
{
    window.activity = activity;
    if (!status.isEmpty())
        window.LookBusy(status);
}

MainWindow::ActivityGuard::~ActivityGuard()
{
    window.activity = outer;
    if (outer != Activity::Idle)
        return;
    window.stopping = window.quitting;
    window.LookIdle(focused);
}

void MainWindow::LookBusy(const QString& status)
{
    ShowStatus(status); // first, so that a screen reader says it when the bar takes the focus
    // A widget that is disabled passes the focus on, here to a setting that the next key would change unnoticed.
    ui->progressOrganize->setEnabled(true);
    ui->progressOrganize->setFocus();
    ui->buttonOrganize->setEnabled(false);
    ui->listAudioFiles->setEnabled(false);
    ui->buttonAdd->setEnabled(false);
    ui->buttonRemove->setEnabled(false);
}

/// @p focused is what had the focus before the window was busy. It, or else the list, gets the focus back, unless the
/// user has moved it meanwhile.
void MainWindow::LookIdle(QWidget* focused)
{
    ui->buttonOrganize->setEnabled(true);
    ui->listAudioFiles->setEnabled(true);
    ui->buttonAdd->setEnabled(true);
    ui->buttonRemove->setEnabled(true);
    if (focusWidget() == ui->progressOrganize)
        (focused && focused->isEnabled() && focused->isVisible() ? focused : ui->listAudioFiles)->setFocus();
    ui->progressOrganize->setEnabled(false);
    ui->progressOrganize->setValue(0);
    ShowStatus(QString());
}

/// The status is also the accessible name of the progress bar: while the bar has the focus, a screen reader announces a
/// change of its name, but never a change of a label.
void MainWindow::ShowStatus(const QString& status)
{
    ui->textProgress->setText(status);
    ui->textProgress->setAccessibleName(status.isEmpty() ? tr("Status") : status);
    ui->progressOrganize->setAccessibleName(status.isEmpty() ? tr("Progress") : status);
}

/// Begins another stage of an activity: shows its status and sets the progress bar back to its start.
void MainWindow::BeginStage(const QString& status)
{
    ui->progressOrganize->setValue(0);
    ShowStatus(status);
}

/// Processes pending events in the middle of an activity. @return whether to go on: false once the user wants to stop
/// it, or to exit.
bool MainWindow::Pump()
{
    // Input is processed even while tags change: excluding it would only delay it, and closing the window counts as
    // input.
    QCoreApplication::processEvents();
    return !stopping;
}

/// Asks whether to end what the window is doing. Adding and changing wait for the answer, the worker does not.
void MainWindow::AskToStop()
{
    if (stopping || stopQuestion)
        return;
    QApplication::setOverrideCursor(Qt::ArrowCursor); // a batch edit shows the wait cursor
    const auto usualCursor = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
    if (!AskYesNo(tr("Do you want to stop?"), &stopQuestion))
        return;
    stopping = true;
    worker.requestInterruption();
}

/// No dialog that the worker causes may open inside the question whether to stop it.
void MainWindow::CallAgainOnceAnswered(void (MainWindow::*slot)())
{
    connect(stopQuestion, &QObject::destroyed, this, slot, Qt::QueuedConnection);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    // On X11, the open list of a combo box receives Return twice, the second time after it has closed. That would ask
    // for the custom scheme again.
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    if (isKey && watched == ui->comboRename->view() && !ui->comboRename->view()->isVisible())
        return true;
    // Over a combo box without the focus, the wheel was meant for something else.
    if (event->type() == QEvent::Wheel && qobject_cast<QComboBox*>(watched) &&
        !static_cast<QWidget*>(watched)->hasFocus())
        return true;
    if (!IsInput(*watched, *event))
        return false;
    if (IsStopKey(*watched, *event)) {
        AskToStop();
        return true;
    }
    if (activity != Activity::Changing)
        return false;
    if (ui->progressOrganize->isEnabled())
        ui->progressOrganize->setFocus(); // a mouse press has already moved it
    return true;
}

/// Whether an event is Escape, or whatever else cancels on this desktop, while there is something to stop. A menu bar
/// in use takes the key for itself.
bool MainWindow::IsStopKey(const QObject& receiver, const QEvent& event) const
{
    if (event.type() != QEvent::KeyPress || !ui->progressOrganize->isEnabled() || &receiver == ui->menuBar)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    return key.matches(QKeySequence::Cancel) && !key.isAutoRepeat();
}

/// Whether an event is input to this window itself, or one of its shortcuts. Menus and questions are windows of their
/// own.
bool MainWindow::IsInput(const QObject& receiver, const QEvent& event) const
{
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
        return receiver.isWidgetType() && static_cast<const QWidget&>(receiver).window() == this;
    case QEvent::Shortcut:
        return !QApplication::activeModalWidget();
    default:
        return false;
    }
}
