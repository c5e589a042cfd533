#include "app/MainWindow.h"

#include "platform/Desktop.h"
#include "platform/QtVersion.h"

#include <QAudioOutput>
#include <QFile>
#include <QListWidgetItem>
#include <QMediaPlayer>
#include <QUrl>

namespace
{
constexpr int previewVolume = 50; // percent
} // namespace

void MainWindow::DiscardPlayer()
{
    if (player) {
        player->stop();
        player.reset();
    }
}

void MainWindow::on_buttonPlay_clicked()
{
    if (player)
        player->stop();
    else
        player = std::make_unique<QMediaPlayer>();
    if (!audioFiles.IsRow(currentRow) || !QFile::exists(audioFiles.At(currentRow).Path))
        return;
    OpenMedia<QAudioOutput>(*player, QUrl::fromLocalFile(audioFiles.At(currentRow).Path), previewVolume);
    player->play();
}

void MainWindow::on_buttonStop_clicked()
{
    DiscardPlayer();
}

void MainWindow::on_listAudioFiles_itemDoubleClicked(QListWidgetItem* item)
{
    const int row = audioFiles.RowOf(item->text());
    if (row < 0)
        return;
    currentRow = row; // the press before the double-click has shown the file's tags already
    PlayInMusicApplication(audioFiles.At(row).Path);
}
