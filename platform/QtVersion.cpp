#include "platform/QtVersion.h"

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QCoreApplication>
#include <QTextCodec>
#endif

void PrepareQt()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // File names are UTF-8 everywhere today, also where the locale is missing or says otherwise.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}

void WriteInUtf8([[maybe_unused]] QSettings& settings)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    settings.setIniCodec("UTF-8");
#endif
}
