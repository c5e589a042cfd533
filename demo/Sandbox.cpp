#include "demo/Sandbox.h"

#include <QDir>

namespace
{
QStringList warnings;
QtMessageHandler previousHandler = nullptr;

void KeepWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    // What the offscreen platform cannot do is no fault of the program.
    if (text.startsWith(QLatin1String("This plugin does not support")))
        return;
    // Tests make copies and saves fail; the log says why, and does no harm.
    if (type != QtDebugMsg && type != QtInfoMsg && qstrcmp(context.category, "orvanto.files") != 0)
        warnings += text;
    previousHandler(type, context, text);
}
} // namespace

Sandbox::Sandbox()
{
    qputenv("HOME", folder.path().toUtf8());
    qputenv("CFFIXED_USER_HOME", folder.path().toUtf8()); // macOS asks this before HOME; not tried there
    qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qunsetenv(variable);
    Reset();
    previousHandler = qInstallMessageHandler(KeepWarning);
}

QString Sandbox::Home()
{
    return QDir::homePath();
}

void Sandbox::Reset()
{
    QDir home(Home());
    for (const QFileInfo& entry : home.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        if (entry.isDir())
            QDir(entry.filePath()).removeRecursively();
        else
            home.remove(entry.fileName());
    }
    for (const char* folder : {"Music", "Documents"})
        home.mkdir(folder);
}

QStringList Sandbox::TakeWarnings()
{
    QStringList taken;
    taken.swap(warnings);
    return taken;
}
