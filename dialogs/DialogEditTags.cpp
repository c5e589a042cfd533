#include "dialogs/DialogEditTags.h"

#include "files/FilePath.h"
#include "platform/Desktop.h"
#include "platform/WebPages.h"
#include "tags/TagTextRules.h"
#include "ui_DialogEditTags.h"

#include <QAction>
#include <QCloseEvent>
#include <QMediaPlayer>
#include <QMenu>

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace
{
constexpr int wideButton = 130;  // pixels
constexpr int batchHeight = 250; // pixels

/// Where one tag is kept: in a record, in the dialog, in the form.
struct SField
{
    TagField tag;
    QString DialogEditTags::*text;
    StartVisibleLineEdit* Ui_DialogEditTags::*edit;
};

constexpr SField fields[] = {
    {&SAudioFile::Artist, &DialogEditTags::artist, &Ui_DialogEditTags::editArtist},
    {&SAudioFile::Title, &DialogEditTags::title, &Ui_DialogEditTags::editTitle},
    {&SAudioFile::Album, &DialogEditTags::album, &Ui_DialogEditTags::editAlbum},
    {&SAudioFile::Year, &DialogEditTags::year, &Ui_DialogEditTags::editYear},
    {&SAudioFile::Genre, &DialogEditTags::genre, &Ui_DialogEditTags::editGenre},
    {&SAudioFile::Track, &DialogEditTags::track, &Ui_DialogEditTags::editTrack},
};
static_assert(std::size(fields) == allTags.size());

/// The index of the field to start in: the first without a tag, else 0. `fields` has the order of `allTags`.
std::size_t FirstGap(const SAudioFile& file)
{
    const auto gap = std::find_if(allTags.begin(), allTags.end(), [&file](const STag& tag) {
        return (file.*tag.field).isEmpty() || IsMissing(file, tag);
    });
    return gap == allTags.end() ? 0 : static_cast<std::size_t>(gap - allTags.begin());
}
} // namespace

DialogEditTags::DialogEditTags(QWidget* parent, int mode)
    : QDialog(parent), ui(std::make_unique<Ui_DialogEditTags>()), menuOnlineSearch(new QMenu(this)),
      actionDiscogs(new QAction(WebPage::discogsName, this)), actionAllmusic(new QAction(WebPage::allmusicName, this))
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
        setFixedHeight(batchHeight);
        ui->actionLabel->setText(tr("Edit the tags of all the files in the list:"));
        for (QWidget* widget : std::initializer_list<QWidget*>{ui->fileLabel, ui->textFilePath, ui->buttonOnlineSearch,
                                                               ui->buttonPlay, ui->buttonStop})
            widget->hide();
    }
    if (mode == EditOne || mode == EditAll) {
        ui->buttonSkip->hide();
        ui->buttonAbort->setText(tr("Cancel"));
    }
    ui->buttonOnlineSearch->setFixedWidth(wideButton);
}

DialogEditTags::~DialogEditTags() = default;

void DialogEditTags::SetFile(const SAudioFile& file)
{
    for (const SField& field : fields)
        this->*field.text = file.*field.tag;
    filePath = file.Path;
}

SAudioFile DialogEditTags::File() const
{
    SAudioFile file;
    for (const SField& field : fields)
        file.*field.tag = this->*field.text;
    file.Path = filePath;
    return file;
}

void DialogEditTags::Init()
{
    player.reset();
    ui->textFilePath->setText(filePath);
    for (const SField& field : fields)
        ((*ui).*field.edit)->ShowText(this->*field.text);
    const bool isRepair = !ui->buttonSkip->isHidden();
    StartVisibleLineEdit* const first = (*ui).*fields[isRepair ? FirstGap(File()) : 0].edit;
    first->setFocus();
    first->selectAll();
    ui->buttonPlay->setFixedWidth(wideButton);
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
    // Closing the window skips the file: a stray click must not end a long run, as Abort and Escape do.
    accept();
    event->accept();
}

void DialogEditTags::on_buttonOK_clicked()
{
    for (const SField& field : fields)
        this->*field.text = ((*ui).*field.edit)->text();
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
    OpenWebPage(WebPage::discogsSearch + GenerateSearchString());
}

void DialogEditTags::OnAllmusic()
{
    OpenWebPage(WebPage::allmusicSearch + GenerateSearchString());
}
