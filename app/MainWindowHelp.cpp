#include "app/MainWindow.h"

#include "dialogs/DialogAbout.h"
#include "dialogs/Prompts.h"
#include "platform/Desktop.h"
#include "platform/UserSettings.h"
#include "platform/WebPages.h"

#include <QFile>

void MainWindow::on_actionShow_Log_triggered()
{
    if (!QFile::exists(RunLogPath())) {
        Warn(tr("Could not open log. The log file will be created after the first processing session."));
        return;
    }
    ShowInTextEditor(RunLogPath());
}

void MainWindow::on_actionOnline_Help_triggered()
{
    OpenWebPage(WebPage::onlineHelp);
}

void MainWindow::on_actionVideo_Tutorial_triggered()
{
    OpenWebPage(WebPage::videoTutorial);
}

void MainWindow::on_actionOnline_Support_triggered()
{
    OpenWebPage(WebPage::onlineSupport);
}

void MainWindow::on_actionVisit_Our_Website_triggered()
{
    OpenWebPage(WebPage::home);
}

void MainWindow::on_actionAbout_triggered()
{
    DialogAbout(this).exec();
}
