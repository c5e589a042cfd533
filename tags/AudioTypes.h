#pragma once

#include <QString>
#include <QStringList>

/// The accepted file extensions, lower case and without dot, in the order in which every choice of them is offered.
/// Append only: the settings store the index.
/// What a file really is, its content says. A new type also goes into AudioSignature.cpp, with its layout from
/// SoundLayout.h; tests/data/make-audio and the files that this makes; tests/tst_tags.cpp; README.md and
/// docs/manual.md; deb.cmake and the metainfo in packaging/linux.
inline const QStringList& AudioExtensions()
{
    static const QStringList extensions{
        QStringLiteral("mp3"), QStringLiteral("mp4"), QStringLiteral("wav"), QStringLiteral("flac"),
        QStringLiteral("aif"), QStringLiteral("asf"), QStringLiteral("ogg"), QStringLiteral("mpc"),
        QStringLiteral("spx"), QStringLiteral("wv"),
    };
    return extensions;
}
