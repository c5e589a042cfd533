#include "app/MainWindowBusy.h"

#include "ui_MainWindow.h"

#include <QCoreApplication>

MainWindow::ActivityGuard::ActivityGuard(MainWindow& busyWindow, Activity activity, const QString& status)
    : window(busyWindow), outer(busyWindow.activity)
{
    window.activity = activity;
    if (!status.isEmpty())
        window.LookBusy(status);
}

MainWindow::ActivityGuard::~ActivityGuard()
{
    window.activity = outer;
    if (outer == Activity::Idle)
        window.LookIdle();
}

void MainWindow::LookBusy(const QString& status)
{
    ui->buttonOrganize->setEnabled(false);
    ui->listAudioFiles->setEnabled(false);
    ui->buttonAdd->setEnabled(false);
    ui->buttonRemove->setEnabled(false);
    ui->progressOrganize->setEnabled(true);
    ui->textProgress->setText(status);
}

void MainWindow::LookIdle()
{
    ui->buttonOrganize->setEnabled(true);
    ui->listAudioFiles->setEnabled(true);
    ui->buttonAdd->setEnabled(true);
    ui->buttonRemove->setEnabled(true);
    ui->progressOrganize->setEnabled(false);
    ui->progressOrganize->setValue(0);
    ui->textProgress->clear();
}

/// Another stage of an activity: its status, with the progress bar back at its start.
void MainWindow::BeginStage(const QString& status)
{
    ui->progressOrganize->setValue(0);
    ui->textProgress->setText(status);
}

/// Lets the window live for a turn in the middle of an activity. @return whether to go on: not once the user wants to
/// leave.
bool MainWindow::Pump()
{
    QCoreApplication::processEvents(activity == Activity::Changing ? QEventLoop::ExcludeUserInputEvents
                                                                   : QEventLoop::AllEvents);
    return !quitting;
}
