#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

/// Copies an audio file of tests/data to @p path, whose folders are made. @return @p path.
inline QString PutSample(const QString& sample, const QString& path)
{
    QDir().mkpath(QFileInfo(path).path());
    if (!QFile::copy(QStringLiteral(TEST_DATA_DIR "/") + sample, path))
        qFatal("cannot put %s at %s", qPrintable(sample), qPrintable(path));
    return path;
}

inline QByteArray Bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}
