#include "platform/WebPages.h"

#include <QDesktopServices>
#include <QUrl>

void OpenWebPage(const QString& address)
{
    QDesktopServices::openUrl(QUrl(address, QUrl::TolerantMode));
}
