#include "platform/Desktop.h"

#ifdef Q_OS_MACOS
#include <QProcess>
#include <QStringList>
#else
#include <QDesktopServices>
#include <QUrl>
#endif

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
    OpenWith(QStringLiteral("iTunes"), path);
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
