#include "platform/UserSettings.h"

#include <QStandardPaths>
#include <QStringList>

namespace
{
QString FirstLocation(QStandardPaths::StandardLocation type)
{
    return QStandardPaths::standardLocations(type).value(0);
}
} // namespace

QSettings OpenSettings()
{
    return QSettings(QStringLiteral("Orvanto"), QStringLiteral("Orvanto"));
}

QString StoredFolder(const QString& key)
{
    return OpenSettings().value(key, FirstLocation(QStandardPaths::MusicLocation)).toString();
}

QString DocumentsFolder()
{
    return FirstLocation(QStandardPaths::DocumentsLocation) + QStringLiteral("/Orvanto");
}
