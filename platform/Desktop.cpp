#include "platform/Desktop.h"

#ifdef Q_OS_MACOS
#include <QProcess>
#include <QStringList>
#else
#include <QDesktopServices>
#include <QUrl>
#endif
#include <QStandardPaths>

namespace
{
void OpenWith([[maybe_unused]] const QString& application, const QString& path)
{
#ifdef Q_OS_MACOS
    QProcess::startDetached(QStringLiteral("open"), {QStringLiteral("-a"), application, path});
#else
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
#endif
}
} // namespace

void PlayInMusicApplication(const QString& path)
{
    // macOS has had Music instead since 10.15.
    const QString old = QStringLiteral("iTunes");
    const bool isThere = !QStandardPaths::locate(QStandardPaths::ApplicationsLocation, old + QStringLiteral(".app"),
                                                 QStandardPaths::LocateDirectory)
                              .isEmpty();
    OpenWith(isThere ? old : QStringLiteral("Music"), path);
}

void ShowInTextEditor(const QString& path)
{
    OpenWith(QStringLiteral("TextEdit"), path);
}

QList<QKeySequence> RemovalKeys()
{
#ifdef Q_OS_MACOS
    return {Qt::Key_Backspace, Qt::Key_Delete}; // the first is the one that is labelled "delete" there
#else
    return {Qt::Key_Delete};
#endif
}
