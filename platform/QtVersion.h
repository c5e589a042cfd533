#pragma once

#include <QSettings>
#include <QUrl>

/// What differs between Qt 5 and Qt 6. Nothing else asks for the version.

/// Tells Qt 5 what Qt 6 does by itself, before the application object exists: to scale, to draw sharp pictures, and
/// that file names are UTF-8.
void PrepareQt();

/// Has the settings written as UTF-8 where they are a text file, so that each of the two reads what the other wrote.
void WriteInUtf8(QSettings& settings);

/// The attributes that ask for one of the sizes in which macOS draws controls.
inline constexpr Qt::WidgetAttribute controlSizes[] = {
    Qt::WA_MacMiniSize,
    Qt::WA_MacSmallSize,
    Qt::WA_MacNormalSize,
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    Qt::WA_MacVariableSize,
#endif
};

/// Opens a file in a media player, at a volume in percent. The caller brings Qt Multimedia's types: this folder may not
/// include them.
template <class AudioOutput, class MediaPlayer>
void OpenMedia(MediaPlayer& player, const QUrl& file, int volume)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    player.setMedia(file);
    player.setVolume(volume);
#else
    if (!player.audioOutput())
        player.setAudioOutput(new AudioOutput(&player));
    player.audioOutput()->setVolume(static_cast<float>(volume) / 100);
    player.setSource(file);
#endif
}
