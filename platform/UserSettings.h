#pragma once

#include <QSettings>
#include <QString>

/// The user's preferences outside profiles, and the folders of the desktop that the program starts from.
namespace SettingsKey
{
inline const QString outputFolder = QStringLiteral("OutputFolderPath");
inline const QString addFilesFolder = QStringLiteral("AddFilesPath");
inline const QString addFolder = QStringLiteral("AddFolderPath");
inline const QString searchFolder = QStringLiteral("SearchFolderPath");
inline const QString searchSubfolders = QStringLiteral("SearchSubfolders");
inline const QString searchMask = QStringLiteral("SearchMask");
inline const QString skipSocial = QStringLiteral("SkipSocial");
} // namespace SettingsKey

/// The settings store. Where it is a text file, Qt 5 and Qt 6 read it alike.
class SettingsStore : public QSettings
{
public:
    SettingsStore();
};

/// Opens the settings store. Each handler opens its own; nothing caches it.
SettingsStore OpenSettings();

/// The folder stored under @p key; where there is none, or no text, the first of the desktop's music locations.
QString StoredFolder(const QString& key);

/// The flag stored under @p key, by default false.
bool StoredFlag(const QString& key);

/// The first of the desktop's documents locations. The folder may not exist yet.
QString DocumentsFolder();

/// Where every run is logged. The file may not exist yet.
QString RunLogPath();
