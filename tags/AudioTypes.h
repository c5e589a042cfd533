#pragma once

#include <QString>
#include <QStringList>

/// The accepted file extensions, lower case and without dot, in the order in which every choice of them is offered.
/// What a file really is, TagLib finds out from its content. The files in packaging/ and the documents list them, too.
inline const QStringList& AudioExtensions()
{
    static const QStringList extensions{
        QStringLiteral("mp3"), QStringLiteral("mp4"), QStringLiteral("wav"), QStringLiteral("flac"),
        QStringLiteral("aif"), QStringLiteral("asf"), QStringLiteral("ogg"), QStringLiteral("mpc"),
        QStringLiteral("spx"), QStringLiteral("wv"),
    };
    return extensions;
}
