#include "platform/UserSettings.h"

#include "platform/QtVersion.h"

#include <QStandardPaths>
#include <QStringList>

namespace
{
QString FirstLocation(QStandardPaths::StandardLocation type)
{
    return QStandardPaths::standardLocations(type).value(0);
}
} // namespace

SettingsStore::SettingsStore() : QSettings(QStringLiteral("Orvanto"), QStringLiteral("Orvanto"))
{
    WriteInUtf8(*this);
}

SettingsStore OpenSettings()
{
    return {};
}

QString StoredFolder(const QString& key)
{
    const QVariant folder = OpenSettings().value(key);
    return folder.userType() == QMetaType::QString ? folder.toString() : FirstLocation(QStandardPaths::MusicLocation);
}

bool StoredFlag(const QString& key)
{
    // Text files hold it as a word or a number, other stores as it was written; garbage is neither.
    const QVariant flag = OpenSettings().value(key);
    return flag.toString() == QLatin1String("true") || flag.toInt() != 0;
}

QString DocumentsFolder()
{
    return FirstLocation(QStandardPaths::DocumentsLocation);
}

QString RunLogPath()
{
    return DocumentsFolder() + QStringLiteral("/Orvanto/Orvanto.log");
}
