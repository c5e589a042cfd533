#pragma once

#include <QString>
#include <QStringList>

/// The accepted file extensions, lower case and without dot, in the order in which every choice of them is offered.
/// Append only: the settings store the index.
/// What a file really is, its content says: AudioSignature.cpp knows more types than these. A new type also goes there,
/// with its layout from SoundLayout.h; into tests/data/make-audio and the files that this makes; tests/tst_tags.cpp;
/// demo/SampleTour.cpp; README.md and docs/manual.md; and in packaging, into all files that name spx.
inline const QStringList& AudioExtensions()
{
    static const QStringList extensions{
        QStringLiteral("mp3"), QStringLiteral("mp4"), QStringLiteral("wav"), QStringLiteral("flac"),
        QStringLiteral("aif"), QStringLiteral("asf"), QStringLiteral("ogg"), QStringLiteral("mpc"),
        QStringLiteral("spx"), QStringLiteral("wv"),
    };
    return extensions;
}
