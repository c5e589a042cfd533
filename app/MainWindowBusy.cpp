#include "app/MainWindow.h"

#include "ui_MainWindow.h"

#include <QCoreApplication>
#include <QScopedValueRollback>

/// Whether files are being added or a run is on.
bool MainWindow::IsBusy() const
{
    return !ui->buttonOrganize->isEnabled();
}

void MainWindow::EnterBusyState(const QString& status)
{
    ui->buttonOrganize->setEnabled(false);
    ui->listAudioFiles->setEnabled(false);
    ui->buttonAdd->setEnabled(false);
    ui->buttonRemove->setEnabled(false);
    ui->progressOrganize->setEnabled(true);
    ui->textProgress->setText(status);
}

void MainWindow::LeaveBusyState()
{
    ui->buttonOrganize->setEnabled(true);
    ui->listAudioFiles->setEnabled(true);
    ui->buttonAdd->setEnabled(true);
    ui->buttonRemove->setEnabled(true);
    ui->progressOrganize->setEnabled(false);
    ui->progressOrganize->setValue(0);
    ui->textProgress->clear();
}

/// Lets the window live for a turn in the middle of a change during which its controls are enabled: the user must not
/// start another one in it. Drops are no input to the event loop and are kept out by themselves.
void MainWindow::PumpWithoutInput()
{
    const QScopedValueRollback<bool> noDrops(takesDrops, false);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}
