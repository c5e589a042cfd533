#include "dialogs/AskForFolder.h"

#include "platform/UserSettings.h"

#include <QCoreApplication>
#include <QFileDialog>

QString AskForFolder(QWidget* parent, const QString& settingsKey)
{
    return QFileDialog::getExistingDirectory(parent, QCoreApplication::translate("AskForFolder", "Select folder"),
                                             StoredFolder(settingsKey));
}
