#include "dialogs/DialogEditTags.h"

#include "platform/Desktop.h"
#include "platform/WebPages.h"
#include "tags/FilePath.h"
#include "tags/TagTextRules.h"
#include "ui_DialogEditTags.h"

#include <QAction>
#include <QCloseEvent>
#include <QMediaPlayer>
#include <QMenu>

DialogEditTags::DialogEditTags(QWidget* parent, int mode)
    : QDialog(parent), ui(std::make_unique<Ui_DialogEditTags>()), menuOnlineSearch(new QMenu(this)),
      actionDiscogs(new QAction(WebPage::discogsHost.section(QLatin1Char('.'), 1), this)),
      actionAllmusic(new QAction(WebPage::allmusicHost.section(QLatin1Char('.'), 1), this))
{
    ui->setupUi(this);
    connect(actionDiscogs, &QAction::triggered, this, &DialogEditTags::OnDiscogs);
    connect(actionAllmusic, &QAction::triggered, this, &DialogEditTags::OnAllmusic);

    if (mode == RepairEvery || mode == EditOne) {
        ui->fileLabel->setText(tr("Audio file:"));
        ui->actionLabel->hide();
    }
    if (mode == EditAll) {
        setWindowTitle(tr("Batch Edit Tags"));
        setFixedHeight(250);
        ui->actionLabel->setText(tr("Edit the tags of all the files in the list:"));
        for (QWidget* widget : std::initializer_list<QWidget*>{ui->fileLabel, ui->textFilePath, ui->buttonOnlineSearch,
                                                               ui->buttonPlay, ui->buttonStop})
            widget->hide();
    }
    if (mode == EditOne || mode == EditAll) {
        ui->buttonSkip->hide();
        ui->buttonAbort->setText(tr("Cancel"));
    }
    ui->buttonOnlineSearch->setFixedWidth(130);
}

DialogEditTags::~DialogEditTags() = default;

void DialogEditTags::SetFile(const SAudioFile& file)
{
    artist = file.Artist;
    title = file.Title;
    album = file.Album;
    year = file.Year;
    genre = file.Genre;
    track = file.Track;
    filePath = file.Path;
}

SAudioFile DialogEditTags::File() const
{
    return {title, artist, album, year, genre, track, filePath};
}

void DialogEditTags::Init()
{
    player.reset();
    ui->textFilePath->setText(filePath);
    ui->textFilePath->setToolTip(filePath.toHtmlEscaped());
    ui->editAlbum->setText(album);
    ui->editArtist->setText(artist);
    ui->editGenre->setText(genre);
    ui->editTitle->setText(title);
    ui->editTrack->setText(track);
    ui->editYear->setText(year);
    ui->editArtist->setFocus();
    ui->buttonPlay->setFixedWidth(130);
    ui->buttonPlay->setText(tr("Play in iTunes"));
    ui->buttonStop->hide();
    menuOnlineSearch->addActions({actionDiscogs, actionAllmusic});
}

int DialogEditTags::exec()
{
    Init();
    return QDialog::exec();
}

void DialogEditTags::closeEvent(QCloseEvent* event)
{
    // Closing the window skips the file; only Abort and Escape end the run. Our decision.
    accept();
    event->accept();
}

void DialogEditTags::on_buttonOK_clicked()
{
    album = ui->editAlbum->text();
    artist = ui->editArtist->text();
    genre = ui->editGenre->text();
    title = ui->editTitle->text();
    track = ui->editTrack->text();
    year = ui->editYear->text();
    accept();
}

void DialogEditTags::on_buttonSkip_clicked()
{
    accept();
}

void DialogEditTags::on_buttonAbort_clicked()
{
    reject();
}

void DialogEditTags::on_buttonPlay_clicked()
{
    PlayInMusicApplication(filePath);
}

void DialogEditTags::on_buttonStop_clicked()
{
    if (player) {
        player->stop();
        player.reset();
    }
}

void DialogEditTags::on_buttonOnlineSearch_clicked()
{
    const QWidget& button = *ui->buttonOnlineSearch;
    menuOnlineSearch->exec(button.mapToGlobal(QPoint(button.width(), 0)));
}

QString DialogEditTags::GenerateSearchString() const
{
    return PrepareForSearch(BaseNameOf(filePath));
}

void DialogEditTags::OnDiscogs()
{
    OpenWebPage(QStringLiteral("http://") + WebPage::discogsHost + QStringLiteral("/search/?q=") +
                GenerateSearchString());
}

void DialogEditTags::OnAllmusic()
{
    OpenWebPage(QStringLiteral("http://") + WebPage::allmusicHost + QStringLiteral("/search/all/") +
                GenerateSearchString());
}
