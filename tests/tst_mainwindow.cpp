#include "app/MainWindow.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "files/FilePath.h"
#include "platform/UserSettings.h"
#ifdef Q_OS_LINUX
#include "tests/support/Openings.h"
#endif

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMediaPlayer>
#include <QProgressBar>
#include <QPushButton>
#include <QStyledItemDelegate>

namespace
{
/// Counts how often the list asks for the size of a row, which is what laying rows out costs.
class CountingDelegate : public QStyledItemDelegate
{
public:
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        ++sizes;
        return QStyledItemDelegate::sizeHint(option, index);
    }
    mutable int sizes = 0;
};

const QStringList addEntries{"File(s)", "Folder", "Folder with Subfolders", "Search"};
const QStringList removeEntries{"Selected", "All"};
const QStringList listEntries{"Edit Tags", "Batch Edit Tags", "-", "Remove"};
const QString removeAll = "Are you sure you want to remove all the files in the list?";
const QString clearedInfo = "Artist:\nTitle:\nAlbum:\nYear:\nGenre:\nTrack:";
const QString advice =
    "\nOrvanto could not fix the invalid tags. For better results try to manually edit the tags or try a "
    "different organize/rename pattern.";
const QString deleteOriginals =
    "You have chosen to delete the original files after processing. The files with processing errors will not be "
    "deleted. Even so, we advise you to make backup copies of the original files before proceeding. Continue?";

QString Home(const QString& path)
{
    return Sandbox::Home() + '/' + path;
}

const Answer success =
    Box(QMessageBox::Information, "Operation finished successfully!", QMessageBox::Ok, QMessageBox::Ok);
const Answer closeSocial = Dialog("Give Us a Like", [](QWidget* shown) { shown->close(); });

/// Types into the line edits of a dialog and clicks a button there.
Answer Fill(const QString& title, const QMap<QString, QString>& texts, const char* button)
{
    return Dialog(title, [=](QWidget* dialog) {
        for (auto text = texts.begin(); text != texts.end(); ++text)
            Type(*dialog, qPrintable(text.key()), text.value());
        Click(*dialog, button);
    });
}

/// The texts above the fields of the tag editor and on its buttons, as far as they can be seen, without the path.
QString Visible(const QWidget& editor)
{
    QStringList texts;
    for (const char* name : {"fileLabel", "actionLabel", "buttonOnlineSearch", "buttonPlay", "buttonStop", "buttonOK",
                             "buttonSkip", "buttonAbort"}) {
        if (Child<QWidget>(editor, name)->isVisible())
            texts += Child<QWidget>(editor, name)->property("text").toString();
    }
    return texts.join('|');
}

Answer ExitPrompt(QMessageBox::StandardButton answer)
{
    return Box(QMessageBox::Question, "You have unsaved changes. Do you want to save your settings?",
               QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, answer);
}
} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> window;

    template <class Widget>
    Widget* Get(const char* name) const
    {
        return Child<Widget>(*window, name);
    }
    QListWidget& List() const { return *Get<QListWidget>("listAudioFiles"); }
    QString Preview() const { return Get<QLineEdit>("editOutputPreview")->text(); }
    QString Info() const { return Get<QLabel>("textInfo")->text(); }
    bool IsIdle() const
    {
        bool idle = !Get<QProgressBar>("progressOrganize")->isEnabled();
        for (const char* name : {"buttonOrganize", "listAudioFiles", "buttonAdd", "buttonRemove"})
            idle = idle && Get<QWidget>(name)->isEnabled();
        return idle && Get<QLabel>("textProgress")->text().isEmpty() &&
               Get<QProgressBar>("progressOrganize")->value() == 0;
    }

    /// The rows, relative to the home folder.
    QString Rows() const
    {
        QStringList rows;
        for (int row = 0; row < List().count(); ++row)
            rows += List().item(row)->text().remove(Home(""));
        return rows.join('|');
    }

    /// Every file below @p folder of the home folder, relative to it and sorted.
    static QString Tree(const QString& folder)
    {
        QStringList paths = FilesBelow(Home(folder));
        for (QString& path : paths)
            path.remove(Home(folder) + '/');
        return paths.join('|');
    }

    void Press(int row, Qt::MouseButton button = Qt::LeftButton)
    {
        const QPoint point = List().visualItemRect(List().item(row)).center();
        QCursor::setPos(List().viewport()->mapToGlobal(point));
        QTest::mouseClick(List().viewport(), button, {}, point);
    }

    /// Does something that dialogs and menus follow, which @p answers answer.
    void Do(const std::function<void()>& action, const QList<Answer>& answers)
    {
        Answers dialogs(answers);
        action();
        QTRY_VERIFY_WITH_TIMEOUT(IsIdle(), 20000);
        dialogs.Finish();
    }
    void FromList(int row, const QString& entry, const QList<Answer>& answers)
    {
        Do(
            [&] {
                Press(row, Qt::RightButton);
                emit List().customContextMenuRequested({}); // what the window system sends after the press
            },
            QList<Answer>{Entry(listEntries, entry)} + answers);
    }
    void FromButton(const char* button, const QString& entry, const QList<Answer>& answers)
    {
        const QStringList& entries = addEntries.contains(entry) ? addEntries : removeEntries;
        Do([&] { Click(*window, button); }, QList<Answer>{Entry(entries, entry)} + answers);
    }
    void Run(const QList<Answer>& answers)
    {
        Do([&] { Click(*window, "buttonOrganize"); }, answers);
    }
    void Trigger(const char* action, const QList<Answer>& answers)
    {
        Do([&] { Get<QAction>(action)->trigger(); }, answers);
    }

private slots:
    void init()
    {
        Sandbox::Reset();
        window = std::make_unique<MainWindow>(nullptr);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    void cleanup()
    {
        window.reset();
        QCOMPARE(Sandbox::TakeWarnings(), QStringList()); // a slot that is bound to nothing shows only so
    }

    void startsInItsDefaultState()
    {
        QCOMPARE(window->size(), QSize(780, 560));
        QCOMPARE(Get<QComboBox>("comboOrganizeBy")->currentText(), QString("Artist"));
        QCOMPARE(Get<QComboBox>("comboRename")->currentText(), QString("Artist-Title"));
        QVERIFY(Get<QAbstractButton>("radioFixAuto")->isChecked());
        QVERIFY(Get<QAbstractButton>("checkOnlyEditInvalid")->isChecked());
        QVERIFY(!Get<QWidget>("checkOnlyEditInvalid")->isEnabled() && !Get<QWidget>("groupAudioPlayer")->isVisible());
        QVERIFY(Get<QLineEdit>("editOutputFolder")->text() == Home("Music") && IsIdle() && Info() == clearedInfo);
        QVERIFY(Get<QWidget>("label")->testAttribute(Qt::WA_MacSmallSize));
        QVERIFY(!Get<QWidget>("buttonAdd")->testAttribute(Qt::WA_MacSmallSize));
        for (const char* button : {"buttonAdd", "buttonRemove", "buttonPlay", "buttonStop", "buttonOrganize"})
            QVERIFY2(!Get<QPushButton>(button)->icon().isNull(), button);
        Run({Warning("There are no audio files to process.")});
    }

    void addsFiles_data()
    {
        for (const char* column : {"choice", "key", "rows"})
            QTest::addColumn<QString>(column);
        const QString folder =
            "lib/b2.mp3|lib/b.mp3|lib/.h.ogg|lib/a.MP3"; // the smallest first, of equals the last name
        const QString subfolders = folder + "|lib/sub/d.flac|lib/sub/linked/f.spx";
        QTest::newRow("File(s)") << "lib/a.MP3|lib/notes.txt|lib/b.mp3|lib/a.MP3"
                                 << "AddFilesPath"
                                 << "lib/a.MP3|lib/b.mp3";
        QTest::newRow("Folder") << "lib"
                                << "AddFolderPath" << folder;
        QTest::newRow("Folder with Subfolders") << "lib"
                                                << "AddFolderPath" << subfolders;
        QTest::newRow("Search") << "lib"
                                << "SearchFolderPath"
                                << "lib/sub/d.flac";
        QTest::newRow("drop") << "other/f.spx|lib|lib/b.mp3|lib/notes.txt"
                              << "" << subfolders + "|other/f.spx";
    }
    void addsFiles()
    {
        const QString way = QTest::currentDataTag();
        QFETCH(QString, choice);
        QFETCH(QString, key);
        PutSample("full.wav", Home("lib/a.MP3"));
        for (const char* name :
             {"lib/b.mp3", "lib/b2.mp3", "lib/notes.txt", "lib/b.mp3.bak", "lib/nodot", "lib/.hidden/e.wv"})
            PutSample("full.mp3", Home(name));
        PutSample("bare.ogg", Home("lib/.h.ogg"));
        PutSample("full.flac", Home("lib/sub/d.flac"));
        PutSample("full.spx", Home("other/f.spx"));
        QVERIFY(QFile::link(Home("lib/b.mp3"), Home("lib/link.mp3")) &&
                QFile::link(Home("other"), Home("lib/sub/linked")));

        bool busySeen = false;
        QTimer watch;
        connect(&watch, &QTimer::timeout, [this, &busySeen] {
            if (Get<QLabel>("textProgress")->text() != "Updating audio file list..." || IsIdle())
                return;
            busySeen = true;
            DropOn(*window, {Home("lib/nodot"), Home("lib/.hidden")}); // adds nothing while files are being added
        });
        watch.start(0);

        QStringList chosen = choice.split('|');
        chosen.replaceInStrings(QRegularExpression("^"), Home(""));
        const QString caption = way == "File(s)" ? "Select one or more files to open" : "Select folder";
        for (int time = 0; time < 2; ++time) {
            if (way == "drop")
                DropOn(*window, chosen);
            else if (way != "Search")
                FromButton("buttonAdd", way, {Files(caption, chosen)});
            else
                FromButton("buttonAdd", way, {Dialog("Search", [&](QWidget* search) {
                               Type(*search, "editSearchPath", QString(chosen.first()).replace('/', '\\'));
                               Choose(*search, "comboSearchMask", 3);
                               if (time == 0)
                                   Click(*search, "checkSearchSubfolders");
                               Click(*search, "buttonOK");
                           })});
            QTEST(Rows(), "rows");
            QVERIFY(IsIdle() && busySeen);
        }
        if (way == "Search") { // all types are accepted again
            DropOn(*window, {Home("other")});
            QVERIFY(Rows().endsWith("|other/f.spx"));
        } else if (way != "drop") {
            FromButton("buttonAdd", way, {Files(caption, {})});
            QTEST(Rows(), "rows");
        }
        QVERIFY(key.isEmpty() || OpenSettings().value(key).toString() == Home("lib"));
    }

    void captionsFitALargeFont()
    {
        const QFont usual = QApplication::font();
        const auto restore = qScopeGuard([&usual] { QApplication::setFont(usual); });
        QFont large = usual;
        large.setPointSizeF(usual.pointSizeF() * 1.5);
        QApplication::setFont(large);
        window = std::make_unique<MainWindow>(nullptr);
        window->show();

        const auto check = [](const QWidget* shown) {
            for (const auto* const button : shown->findChildren<QAbstractButton*>()) {
                const int text = button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width();
                const bool isPushButton = qobject_cast<const QPushButton*>(button);
                const int needed = isPushButton ? text : button->sizeHint().width();
                QVERIFY2(!button->isVisible() || needed <= button->width(), qPrintable(button->text()));
            }
            for (const auto* const label : shown->findChildren<QLabel*>()) {
                const bool whole = label->wordWrap() ? label->heightForWidth(label->width()) <= label->height()
                                                     : label->sizeHint().width() <= label->width();
                QVERIFY2(whole || !label->isVisible() || label->objectName() == "textFilePath",
                         qPrintable(label->text()));
            }
        };
        const auto look = [&check](const char* title, const char* button = nullptr) {
            return Dialog(title, [=](QWidget* shown) {
                check(shown);
                if (button)
                    Click(*shown, button);
                else
                    shown->close();
            });
        };
        check(window.get());
        QVERIFY(Get<QWidget>("label_4")->font().pixelSize() > 0 && Get<QWidget>("label_2")->font().pixelSize() < 0);
        DropOn(*window, {PutSample("full.mp3", Home("x/1.mp3"))});
        FromList(0, "Edit Tags", {look("Edit Tags", "buttonAbort")});
        FromList(0, "Batch Edit Tags", {look("Batch Edit Tags", "buttonAbort")});
        FromButton("buttonAdd", "Search", {look("Search")});
        Trigger("actionAbout", {look("About Us")});
        Do([this] { Choose(*window, "comboRename", 6); }, {look("Custom Rename")});
        Run({success, look("Give Us a Like")});
    }

    void layoutGrowsWithTheRows()
    {
        CountingDelegate delegate;
        List().setItemDelegate(&delegate);
        int made = 0;
        for (const int count : {600, 1200}) {
            for (; made < count; ++made)
                PutSample("bare.spx", Home(QString("many/%1.spx").arg(made)));
            DropOn(*window, {Home("many")});
            QCOMPARE(List().count(), count);
            delegate.sizes = 0;
            Press(0);
            FromButton("buttonRemove", "Selected",
                       {Question("Are you sure you want to remove the selected file?", QMessageBox::Yes)});
            QVERIFY2(delegate.sizes >= count - 1 && delegate.sizes <= count * 3 / 2,
                     qPrintable(QString::number(delegate.sizes)));
        }
    }

    void opensEachFileOnce()
    {
#ifdef Q_OS_LINUX
        QMap<QString, int> once, twice;
        for (const QString& extension : AudioExtensions()) {
            PutSample("full." + extension, Home("lib/x." + extension));
            once["x." + extension] = 1;
            twice["x." + extension] = 2;
        }
        Openings openings(Home("lib"));
        DropOn(*window, {Home("lib")});
        QCOMPARE(openings.Take(), once);
        Run({success, closeSocial});
        QCOMPARE(openings.Take(), twice); // copied, and read for the new list
#else
        QSKIP("Nothing here tells of openings.");
#endif
    }

    void searchesForEachType()
    {
        for (const QString& extension : AudioExtensions())
            PutSample("full." + extension, Home("lib/x." + extension.toUpper()));
        OpenSettings().setValue("SearchFolderPath", Home("lib"));
        QString rows;
        for (int mask = 0; mask < AudioExtensions().size(); ++mask) {
            FromButton("buttonAdd", "Search", {Dialog("Search", [mask](QWidget* search) {
                           Choose(*search, "comboSearchMask", mask);
                           Click(*search, "buttonOK");
                       })});
            rows += "lib/x." + AudioExtensions().at(mask).toUpper() + '|';
            QCOMPARE(Rows() + '|', rows);
        }
    }

    void selectsAndRemoves()
    {
        for (const char* name : {"1.mp3", "2.ogg", "3.wv"})
            PutSample((*name == '1' ? "full" : "bare") + QString(name + 1), Home("x/" + QString(name)));
        DropOn(*window, {Home("x/1.mp3"), Home("x/2.ogg"), Home("x/3.wv")});
        Press(0);
        const QString full =
            "Artist: Björk Ärger\nTitle: Tone of Ten\nAlbum: Small Files\nYear: 1999\nGenre: Rock\nTrack: 7";
        QCOMPARE(Info(), full);
        QCOMPARE(Preview(), Home("Music/Björk Ärger/Björk Ärger-Tone of Ten.mp3"));
        QTest::keyClick(&List(), Qt::Key_Down);
        QCOMPARE(Info(), QString("Artist: \nTitle: \nAlbum: \nYear: 0\nGenre: \nTrack: 0"));
        QCOMPARE(Preview(), Home("Music/Artist/Artist-Title.ogg"));

        Outside outside;
        Press(0);
        QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, List().visualItemRect(List().item(0)).center());
        QCOMPARE(outside.opened, QStringList("file://" + Home("x/1.mp3")));

        const auto sure = [](QMessageBox::StandardButton answer) {
            return Question("Are you sure you want to remove the selected file?", answer);
        };
        FromButton("buttonRemove", "Selected", {sure(QMessageBox::No)});
        FromList(1, "Remove", {sure(QMessageBox::Yes)});
        QCOMPARE(Rows(), QString("x/1.mp3|x/3.wv"));
        QVERIFY(Info() == clearedInfo && Preview().isEmpty());
        // Without a new press, the file that moved up is next; past the end, nothing goes.
        FromButton("buttonRemove", "Selected", {sure(QMessageBox::Yes)});
        FromButton("buttonRemove", "Selected", {sure(QMessageBox::Yes)});
        QCOMPARE(Rows(), QString("x/1.mp3"));

        // A removed file can be added again, and rows still find their records.
        DropOn(*window, {Home("x/3.wv")});
        Press(1);
        QVERIFY(Preview().endsWith(".wv"));
        FromButton("buttonRemove", "All", {Question(removeAll, QMessageBox::No)});
        QCOMPARE(List().count(), 2);
        FromButton("buttonRemove", "All", {Question(removeAll, QMessageBox::Yes)});
        QCOMPARE(List().count(), 0);
        FromButton("buttonRemove", "All", {});
        FromButton("buttonRemove", "Selected", {});
        emit List().customContextMenuRequested({}); // no menu over no file
    }

    void settingsSteerThePreview()
    {
        DropOn(*window, {PutSample("full.mp3", Home("x/1.mp3"))});
        Press(0);
        Choose(*window, "comboOrganizeBy", 10);
        Type(*window, "editOutputFolder", "C:\\Out\\");
        QCOMPARE(Get<QLineEdit>("editOutputFolder")->text(), QString("C:\\Out\\"));
        QCOMPARE(Preview(), QString("C:/Out/Rock/Björk Ärger/Small Files/Björk Ärger-Tone of Ten.mp3"));
        QCOMPARE(OpenSettings().value("OutputFolderPath").toString(), QString("C:/Out/"));
        QCOMPARE(window->windowTitle(), QString("Orvanto*"));

        const auto chooseCustom = [this] { Choose(*window, "comboRename", 6); };
        Do(chooseCustom, {Fill("Custom Rename", {{"editRenameScheme", "[Title]."}}, "buttonCancel")});
        QVERIFY(Preview().endsWith("/7 Björk Ärger-Tone of Ten (Small Files, 1999, Rock).mp3"));
        Do(chooseCustom, {Fill("Custom Rename", {{"editRenameScheme", "[Title] [x]"}}, "buttonOK")});
        QVERIFY(Preview().endsWith("/Tone of Ten [x].mp3"));
        for (const QStringList& answer : {QStringList(Home("Documents")), QStringList()})
            Do([this] { Click(*window, "buttonBrowseOutFold"); }, {Files("Select folder", answer)});
        QVERIFY(Preview().startsWith(Home("Documents/Rock")));
        QCOMPARE(OpenSettings().value("OutputFolderPath").toString(), Home("Documents"));

        for (const bool skip : {true, false}) {
            Click(*window, "checkSkipOrganize");
            for (const char* name : {"comboOrganizeBy", "comboRename", "editOutputFolder", "buttonBrowseOutFold",
                                     "editOutputPreview", "checkDeleteOriginal"})
                QCOMPARE(Get<QWidget>(name)->isEnabled(), !skip);
        }
        Click(*window, "radioFixMan");
        QVERIFY(Get<QWidget>("checkOnlyEditInvalid")->isEnabled());
        Click(*window, "radioFixAuto");
        QVERIFY(!Get<QWidget>("checkOnlyEditInvalid")->isEnabled());
        QCOMPARE(window->windowTitle(), QString("Orvanto*"));
    }

    void editsTags()
    {
        const QString first = PutSample("full.mp3", Home("x/1.mp3"));
        const QString second = PutSample("bare.flac", Home("x/2.flac"));
        DropOn(*window, {first, second});
        const QByteArray before = Bytes(first);
        FromList(0, "Edit Tags", {Fill("Edit Tags", {{"editTitle", "New"}}, "buttonAbort")});
        FromList(0, "Edit Tags", {Dialog("Edit Tags", [](QWidget* editor) {
                     QCOMPARE(Visible(*editor), QString("Audio file:|Online Tag Search|Play in iTunes|OK|Cancel"));
                     editor->close();
                 })});
        QVERIFY(Bytes(first) == before);
        FromList(0, "Edit Tags", {Fill("Edit Tags", {{"editTitle", "New"}, {"editYear", "MCM"}}, "buttonOK")});
        QVERIFY(Info().contains("Title: New\nAlbum: Small Files\nYear: MCM\n"));
        QVERIFY(TagManager().ReadFile(first).Title == "New" && TagManager().ReadFile(first).Year == "0");

        const QString batch = "Batch Edit Tags";
        const QMap<QString, QString> texts{{"editGenre", ""}, {"editArtist", "All"}};
        const QString sure = "Are you sure you want to apply these tags to all the audio files in the list?";
        FromList(1, batch, {Dialog(batch, [](QWidget* editor) {
                     QCOMPARE(Visible(*editor), QString("Edit the tags of all the files in the list:|OK|Cancel"));
                     QCOMPARE(editor->height(), 250);
                     QTest::keyClick(editor, Qt::Key_Escape);
                 })});
        FromList(1, batch, {Fill(batch, texts, "buttonOK"), Question(sure, QMessageBox::No)});
        QCOMPARE(TagManager().ReadFile(first).Genre, QString("Rock"));
        QTimer drops; // in the middle of the change, they add nothing
        connect(&drops, &QTimer::timeout, [this] { DropOn(*window, {Home("x")}); });
        PutSample("full.ogg", Home("x/3.ogg"));
        FromList(1, batch, {Fill(batch, texts, "buttonOK"), [&](QWidget* shown) {
                                drops.start(0);
                                Question(sure, QMessageBox::Yes)(shown);
                                drops.stop();
                            }});
        QCOMPARE(List().count(), 2);
        QCOMPARE(Info(), QString("Artist: All\nTitle: \nAlbum: \nYear: 0\nGenre: \nTrack: 0"));
        QVERIFY(TagManager().ReadFile(first).Genre.isEmpty() && TagManager().ReadFile(first).Title == "New");
        QCOMPARE(TagManager().ReadFile(second).Artist, QString("All"));
    }

    void runs_data()
    {
        for (const char* column : {"mode", "button", "tree"})
            QTest::addColumn<QString>(column);
        const QString whole = "Björk Ärger/Björk Ärger-Tone of Ten.ogg";
        const QString both = "Ann/Ann- Song.mp3|" + whole;
        QTest::newRow("OK") << "radioFixAuto"
                            << "buttonOK" << both;
        QTest::newRow("Skip") << "radioFixAuto"
                              << "buttonSkip" << both;
        QTest::newRow("closed") << "radioFixAuto"
                                << "" << both;
        QTest::newRow("Abort") << "radioFixAuto"
                               << "buttonAbort"
                               << "";
        QTest::newRow("manual") << "radioFixMan"
                                << "buttonOK" << whole + "|New/New-Typed.mp3";
        QTest::newRow("manual, every file") << "radioFixMan every"
                                            << "buttonSkip" << whole;
    }
    void runs()
    {
        QFETCH(QString, mode);
        QFETCH(QString, button);
        const QString broken = PutSample("bare.mp3", Home("in/Ann - Song.mp3"));
        PutSample("full.ogg", Home("in/z.ogg"));
        TagManager tags;
        tags.path = broken;
        tags.SetInfo(Tag::Genre, "www.spam.com"); // is erased before the editor shows it
        DropOn(*window, {Home("in")});
        Type(*window, "editOutputFolder", Home("out//"));
        Click(*window, qPrintable(mode.section(' ', 0, 0)));
        const bool automatic = mode == "radioFixAuto";
        const bool every = mode.endsWith("every");
        if (every)
            Click(*window, "checkOnlyEditInvalid");

        const Answer answer = Dialog("Edit Tags", [&](QWidget* editor) {
            const auto text = [editor](const char* name) {
                return Child<QWidget>(*editor, name)->property("text").toString();
            };
            const bool isBroken = text("textFilePath") == broken;
            QCOMPARE(text("editArtist"), QString(!isBroken ? "Björk Ärger" : automatic ? "Ann" : ""));
            QCOMPARE(text("editGenre"), QString(isBroken ? "" : "Rock"));
            const QString heading = every ? "Audio file:"
                                          : "The following file has incomplete/invalid tags:|Please edit the "
                                            "incomplete/invalid tags.";
            QCOMPARE(Visible(*editor), heading + "|Online Tag Search|Play in iTunes|OK|Skip|Abort");
            QCOMPARE(Get<QLabel>("textProgress")->text(), QString("Processing..."));
            DropOn(*window, {Home("in")}); // adds nothing during a run
            if (mode == "radioFixMan") {
                Type(*editor, "editArtist", "New");
                Type(*editor, "editTitle", "Typed");
            }
            if (button.isEmpty())
                editor->close();
            else
                Click(*editor, qPrintable(button));
        });
        if (every) // skipped without artist and title
            Run({answer, answer, Warning("Could not copy the following:\n\n" + broken + '\n' + advice, "Log"),
                 closeSocial});
        else
            Run({answer, success, closeSocial});
        QTEST(Tree("out"), "tree");
        QCOMPARE(List().count(), 2);
        QCOMPARE(tags.ReadFile(broken).Genre, QString());
        QVERIFY(Info() == clearedInfo && Preview().isEmpty());
    }

    void logsEveryRun()
    {
        Trigger("actionShow_Log",
                {Warning("Could not open log. The log file will be created after the first processing session.")});
        OpenSettings().setValue("SkipSocial", 1);
        const QString refused = PutSample("full.mp3", Home("in/An Unknown é.mp3"));
        DropOn(*window, {refused});
        Type(*window, "editOutputFolder", Home("out"));
        Run({success});
        Choose(*window, "comboRename", 0);
        const QString report = "Could not copy the following:\n\n" + refused + "\n";
        Run({Warning(report + advice, "Log")});

        const QString path = Home("Documents/Orvanto/Orvanto.log");
        QString log = QString::fromUtf8(Bytes(path));
        log.replace(QRegularExpression("\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d"), "TIME");
        const QString dashes = "--------------------------------------------------------------\n";
        QCOMPARE(log, dashes + "TIME\n\nOperation finished successfully!\n" + dashes + '\n' + dashes + "TIME\n\n" +
                          report + dashes + '\n');
        Outside outside;
        Trigger("actionShow_Log", {});
        QCOMPARE(outside.opened, QStringList("file://" + path));

        QVERIFY(QFile::remove(path) && QDir().mkdir(path)); // a folder in its place
        Run({Warning("Could not save log.")});
        QCOMPARE(Rows(), QString("in/An Unknown é.mp3"));
    }

    void deletesOriginals()
    {
        OpenSettings().setValue("SkipSocial", 1);
        DropOn(*window, {PutSample("full.mp3", Home("in/1.mp3")), PutSample("full.ogg", Home("in/2.ogg"))});
        Choose(*window, "comboRename", 0);
        Choose(*window, "comboOrganizeBy", 0);
        Click(*window, "checkDeleteOriginal");
        Click(*window, "checkSkipOrganize");
        Run({success});
        Click(*window, "checkSkipOrganize");
        QCOMPARE(Rows(), QString("in/1.mp3|in/2.ogg"));
        for (const char* output : {"in//", "out//"}) {
            Type(*window, "editOutputFolder", Home(output));
            Run({Question(deleteOriginals, QMessageBox::No)});
            Run({Question(deleteOriginals, QMessageBox::Yes), success});
            QCOMPARE(Tree(QString(output).chopped(2)), QString("1.mp3|2.ogg"));
            QVERIFY(Rows().isEmpty());
            DropOn(*window, {Home("in")});
        }
        QVERIFY(Rows().isEmpty());
    }

    void profiles()
    {
        const QString path = Home("Documents/Orvanto/Profiles/my.set.ovp");
        const QString overwrite = "This will overwrite your current settings. Continue?";
        Trigger("actionNew", {});
        Choose(*window, "comboOrganizeBy", 3);
        Click(*window, "radioFixMan");
        Trigger("actionSave_Profile", {Files("Save profile", {})});
        QCOMPARE(window->windowTitle(), QString("Orvanto*"));
        Trigger("actionSave_Profile", {Files("Save profile", {path})});
        QCOMPARE(window->windowTitle(), QString("Orvanto - my.set"));
        Click(*window, "checkDeleteOriginal");
        QCOMPARE(window->windowTitle(), QString("Orvanto - my.set*"));
        Trigger("actionSave_Profile_As", {Files("Save profile", {})});
        Trigger("actionSave_Profile", {});
        QVERIFY(Bytes(path).startsWith("organizeBy=3\nrename=2\n") && Bytes(path).endsWith("deleteOriginal=1\n"));

        Trigger("actionNew", {Question(overwrite, QMessageBox::No)});
        QCOMPARE(window->windowTitle(), QString("Orvanto - my.set"));
        Trigger("actionNew", {Question(overwrite, QMessageBox::Yes)});
        QCOMPARE(window->windowTitle(), QString("Orvanto"));
        QCOMPARE(Get<QComboBox>("comboOrganizeBy")->currentIndex(), 1);
        QVERIFY(!Get<QWidget>("checkOnlyEditInvalid")->isEnabled());

        // Indices outside the tables are kept and harm nobody, and a custom scheme is not asked for.
        QFile odd(Home("Documents/odd.ovp"));
        QVERIFY(odd.open(QIODevice::WriteOnly) && odd.write("o=99\nr=6\nc=[Title]\n1\n1\n1\n/o\n1\n") > 0);
        odd.close();
        DropOn(*window, {PutSample("full.mp3", Home("x/1.mp3"))});
        Press(0);
        Choose(*window, "comboOrganizeBy", 0);
        const QString loses = "Loading a profile will overwrite your current settings. Continue?";
        Trigger("actionLoad_Profile", {Question(loses, QMessageBox::No)});
        Trigger("actionLoad_Profile", {Question(loses, QMessageBox::Yes), Files("Load profile", {odd.fileName()})});
        QCOMPARE(window->windowTitle(), QString("Orvanto - odd"));
        QCOMPARE(Preview(), QString("/o/Tone of Ten.mp3"));
        QCOMPARE(Get<QComboBox>("comboOrganizeBy")->currentIndex(), -1);
        QVERIFY(!Get<QWidget>("comboRename")->isEnabled() && Get<QAbstractButton>("radioFixMan")->isChecked());
        QCOMPARE(OpenSettings().value("OutputFolderPath").toString(), Home("Music"));
        Trigger("actionSave_Profile", {});
        QVERIFY(Bytes(odd.fileName()).startsWith("organizeBy=99\n"));
        Click(*window, "radioFixAuto");
        QCOMPARE(window->windowTitle(), QString("Orvanto - odd*"));

        // A profile that cannot be written is tried again; one that cannot be read leaves changes unmarked.
        QVERIFY(odd.remove() && QDir().mkdir(odd.fileName()));
        Trigger("actionSave_Profile", {Warning("Could not save profile.")});
        QVERIFY(QDir().rmdir(odd.fileName()));
        Trigger("actionSave_Profile", {});
        Trigger("actionLoad_Profile", {Files("Load profile", {})});
        Click(*window, "radioFixMan");
        QCOMPARE(window->windowTitle(), QString("Orvanto - odd"));
        Trigger("actionLoad_Profile", {Files("Load profile", {path})});
        Click(*window, "radioFixAuto");
        QCOMPARE(window->windowTitle(), QString("Orvanto - my.set*"));

        // Where the profile folder cannot be made, another one serves.
        QDir(Home("Documents/Orvanto")).removeRecursively();
        QVERIFY(QFile(Home("Documents/Orvanto")).open(QIODevice::WriteOnly));
        Trigger("actionSave_Profile_As", {Files("Save profile", {Home("Music/p.ovp")})});
        QCOMPARE(window->windowTitle(), QString("Orvanto - p"));
        Run({Question(deleteOriginals, QMessageBox::Yes), Warning("Could not save log."), closeSocial});
    }

    void exitPrompt()
    {
        const struct
        {
            QMessageBox::StandardButton answer;
            const char* savedAs;
            bool quits;
        } rows[] = {{QMessageBox::Escape, "", false},
                    {QMessageBox::Cancel, "", false},
                    {QMessageBox::No, "", true},
                    {QMessageBox::Yes, "", true}, // cancelling the file dialog does not keep us
                    {QMessageBox::Yes, "p.ovp", true}};
        Click(*window, "checkDeleteOriginal");
        for (const auto& row : rows) {
            QList<Answer> answers{ExitPrompt(row.answer)};
            if (row.answer == QMessageBox::Yes)
                answers += Files("Save profile", *row.savedAs ? QStringList(Home(row.savedAs)) : QStringList());
            Answers dialogs(answers);
            QObject context;
            bool stayed = false;
            QTimer::singleShot(0, &context, [&] {
                window->close();
                QTimer::singleShot(0, &context, [&] {
                    stayed = true;
                    QCoreApplication::exit();
                });
            });
            QCoreApplication::exec();
            dialogs.Finish();
            QCOMPARE(!stayed, row.quits);
            QCOMPARE(QFile::exists(Home("p.ovp")), *row.savedAs != 0);
        }
    }

    void quitsInMidRun()
    {
        DropOn(*window, {PutSample("bare.mp3", Home("in/x.mp3"))});
        Answers dialogs({Dialog("Edit Tags", [this](QWidget*) { Get<QAction>("actionExit")->trigger(); })});
        QTimer::singleShot(0, [this] { Click(*window, "buttonOrganize"); });
        QCOMPARE(QCoreApplication::exec(), 0);
        window.reset();
        dialogs.Finish();
        QCOMPARE(Tree("in") + Tree("Music"), QString("x.mp3"));
    }

    void quitsWhileFilesAreAdded()
    {
        for (int i = 0; i < 200; ++i)
            PutSample("bare.spx", Home(QString("in/%1.spx").arg(i)));
        Click(*window, "checkDeleteOriginal");
        QTimer watch;
        int turns = 0;
        connect(&watch, &QTimer::timeout, [this, &turns] {
            if (!IsIdle() && ++turns == 20)
                window->close();
        });
        watch.start(0);
        Answers dialogs({ExitPrompt(QMessageBox::No)});
        QTimer::singleShot(0, [this] { DropOn(*window, {Home("in")}); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY2(turns < 150, "the adding went on");
    }

    void searchKeepsItsChoices()
    {
        FromButton("buttonAdd", "Search", {Dialog("Search", [](QWidget* search) {
                       Type(*search, "editSearchPath", "C:\\My Music");
                       Click(*search, "checkSearchSubfolders");
                       Choose(*search, "comboSearchMask", 3);
                       Click(*search, "buttonCancel");
                   })});
        FromButton("buttonAdd", "Search",
                   {Dialog("Search",
                           [](QWidget* search) {
                               QCOMPARE(Child<QLineEdit>(*search, "editSearchPath")->text(), QString("C:/My Music"));
                               QVERIFY(Child<QAbstractButton>(*search, "checkSearchSubfolders")->isChecked());
                               QCOMPARE(Child<QComboBox>(*search, "comboSearchMask")->currentText(), QString("*.flac"));
                               Click(*search, "buttonBrowse");
                               Click(*search, "buttonOK");
                           }),
                    Files("Select folder", {Home("Documents")})});
        QCOMPARE(OpenSettings().value("SearchFolderPath").toString(), Home("Documents"));
    }

    void leadsOut()
    {
        Outside outside;
        const QString name = "50% #1? é \"x\".[2].mp3";
        DropOn(*window, {PutSample("full.mp3", Home(name))});
        const QStringList hosts{"discogs.com", "allmusic.com"};
        FromList(0, "Edit Tags",
                 {Dialog("Edit Tags",
                         [](QWidget* editor) {
                             for (const char* button : {"buttonPlay", "buttonOnlineSearch", "buttonOnlineSearch"})
                                 Click(*editor, button);
                             QTest::keyClick(editor, Qt::Key_Escape);
                         }),
                  Entry(hosts, hosts.first()), Entry(hosts, hosts.last())});
        QCOMPARE(QUrl(outside.opened.takeFirst()).toLocalFile(), Home(name));
        // Digits and separators go, and nothing is escaped: what follows "#" is the browser's affair.
        QCOMPARE(outside.opened.takeFirst(), QString("http://www.discogs.com/search/?q=%25+#?+%C3%A9+%22x%22+++"));
        QCOMPARE(outside.opened.takeFirst(), QString("http://www.allmusic.com/search/all/%25+#?+%C3%A9+%22x%22+++"));

        const Answer follow = Dialog("Give Us a Like", [](QWidget* social) {
            Click(*social, "buttonFacebook");
            Click(*social, "buttonGoogle");
            social->close();
        });
        Run({success, closeSocial});
        Run({success, follow});
        Run({success});
        QCOMPARE(outside.opened.takeFirst(), QString("http://www.facebook.example/orvanto"));
        QCOMPARE(outside.opened.takeFirst(), QString("http://plus.google.example/orvanto"));
        const char* rows[][2] = {{"actionOnline_Help", "/help-mac.html"},
                                 {"actionVideo_Tutorial", "/feature.html"},
                                 {"actionOnline_Support", "/contact.html"},
                                 {"actionVisit_Our_Website", ""}};
        for (const auto& [action, page] : rows) {
            Trigger(action, {});
            QCOMPARE(outside.opened.takeFirst(), QString("http://www.orvanto.example") + page);
        }
        Trigger("actionAbout", {Dialog("About Us", [](QWidget* shown) {
                    QVERIFY(shown->minimumSize() == QSize(351, 151) && shown->maximumSize() == shown->minimumSize());
                    QCOMPARE(Child<QLabel>(*shown, "textVersion")->text(), QString("Orvanto Version 2.1.0"));
                    QTest::mouseClick(Child<QLabel>(*shown, "label_2"), Qt::LeftButton);
                    shown->close();
                })});
        QCOMPARE(outside.opened, QStringList("http://www.orvanto.example"));
    }

    void previewPlayer()
    {
        // Its controls stay hidden; pressed all the same, they show no dialog, whatever the machine can play.
        DropOn(*window, {PutSample("full.wav", Home("x/1.wav"))});
        for (const char* button : {"buttonPlay", "buttonStop", "buttonPlay", "buttonPlay"}) {
            Do([&] { Get<QPushButton>(button)->click(); }, {});
            Press(0);
        }
        FromButton("buttonRemove", "All", {Question(removeAll, QMessageBox::Yes)});
        Sandbox::TakeWarnings(); // a machine without sound has its say
    }

    void garbageInTheSettingsStoreReadsAsTheDefaults()
    {
        for (const char* key : {"OutputFolderPath", "AddFilesPath", "AddFolderPath", "SearchFolderPath"})
            OpenSettings().setValue(key, QStringList{"a", "b"});
        for (const char* key : {"SearchSubfolders", "SearchMask", "SkipSocial"})
            OpenSettings().setValue(key, "garbage");
        window = std::make_unique<MainWindow>(nullptr);
        window->show();
        QCOMPARE(Get<QLineEdit>("editOutputFolder")->text(), Home("Music"));
        const auto startsInMusic = [](QWidget* shown) {
            QCOMPARE(qobject_cast<QFileDialog*>(shown)->directory().path(), Home("Music"));
            shown->close();
        };
        FromButton("buttonAdd", "File(s)", {Dialog("Select one or more files to open", startsInMusic)});
        FromButton("buttonAdd", "Folder", {Dialog("Select folder", startsInMusic)});
        FromButton("buttonAdd", "Search", {Dialog("Search", [](QWidget* search) {
                       QCOMPARE(Child<QLineEdit>(*search, "editSearchPath")->text(), Home("Music"));
                       QVERIFY(!Child<QAbstractButton>(*search, "checkSearchSubfolders")->isChecked());
                       Click(*search, "buttonCancel");
                   })});
        DropOn(*window, {PutSample("full.mp3", Home("x/1.mp3"))});
        Run({success, closeSocial});
    }
};

ORVANTO_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
