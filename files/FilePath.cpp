#include "files/FilePath.h"

QString ExtensionOf(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('.')) + 1).toLower();
}

QString BaseNameOf(const QString& path)
{
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}

QString FolderOf(const QString& path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

QString WithForwardSlashes(QString path)
{
    return path.replace(QLatin1Char('\\'), QLatin1Char('/'));
}
