#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

/// Copies an audio file of tests/data to @p path and creates its folders. @return @p path.
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

/// What an audio file of tests/data holds.
inline QByteArray SampleBytes(const QString& sample)
{
    return Bytes(QStringLiteral(TEST_DATA_DIR "/") + sample);
}

/// Makes a file of @p bytes, or fills it with them, and makes its folders.
inline void PutBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// Every file below @p folder, hidden ones among them, sorted.
inline QStringList FilesBelow(const QString& folder)
{
    QStringList paths;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        if (entries.fileInfo().isFile()) // reading a pipe or a device would not end
            paths += entries.filePath();
    }
    paths.sort();
    return paths;
}
