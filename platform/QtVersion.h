#pragma once

#include <QSettings>
#include <QUrl>

/// What differs between Qt 5 and Qt 6. Nothing else asks for the version.

/// Says what only one of them has to be told before the application object exists: to scale, to draw sharp pictures,
/// and that file names are UTF-8.
void PrepareQt();

/// Has the settings written as UTF-8 where they are a text file, so that each of the two reads what the other wrote.
void WriteInUtf8(QSettings& settings);

/// The sizes that macOS draws controls in: the attributes that ask for one of them.
inline constexpr Qt::WidgetAttribute controlSizes[] = {
    Qt::WA_MacMiniSize,
    Qt::WA_MacSmallSize,
    Qt::WA_MacNormalSize,
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    Qt::WA_MacVariableSize,
#endif
};

/// Opens a file in a media player, at a volume in percent. Qt Multimedia comes from the caller, who alone may use it.
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
