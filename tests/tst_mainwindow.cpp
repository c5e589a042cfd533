#include "app/MainWindow.h"
#include "dialogs/ListAudioFiles.h"
#include "platform/UserSettings.h"
#include "support/AudioSamples.h"
#include "support/Driver.h"
#include "support/Sandbox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

namespace
{
const QStringList addEntries{"File(s)", "Folder", "Folder with Subfolders", "Search"};
const QStringList removeEntries{"Selected", "All"};
const QStringList listEntries{"Edit Tags", "Batch Edit Tags", "-", "Remove"};
const QString clearedInfo = "Artist:\nTitle:\nAlbum:\nYear:\nGenre:\nTrack:";
const QString overwriteSettings = "This will overwrite your current settings. Continue?";
const QString saveSettings = "You have unsaved changes. Do you want to save your settings?";
const QString deleteOriginals =
    "You have chosen to delete the original files after processing. The files with processing errors will not be "
    "deleted. Even so, we advise you to make backup copies of the original files before proceeding. Continue?";

QString Home(const QString& path)
{
    return Sandbox::Home() + '/' + path;
}

Answer Success()
{
    return Box(QMessageBox::Information, "Operation finished successfully!", QMessageBox::Ok, QMessageBox::Ok);
}

Answer Social()
{
    return CloseWindow("Give Us a Like");
}

/// Types @p tags ("editTitle" → text) into the tag editor and clicks @p button there.
Answer Edit(const QString& title, const QMap<const char*, QString>& tags, const char* button)
{
    return Dialog(title, [=](QWidget* editor) {
        for (auto tag = tags.begin(); tag != tags.end(); ++tag)
            Type(*editor, tag.key(), tag.value());
        Click(*editor, button);
    });
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
    ListAudioFiles& List() const { return *Get<ListAudioFiles>("listAudioFiles"); }
    QString Preview() const { return Get<QLineEdit>("editOutputPreview")->text(); }
    QString Info() const { return Get<QLabel>("textInfo")->text(); }
    bool IsIdle() const
    {
        bool idle = !Get<QProgressBar>("progressOrganize")->isEnabled();
        for (const char* name : {"buttonOrganize", "listAudioFiles", "buttonAdd", "buttonRemove"})
            idle = idle && Get<QWidget>(name)->isEnabled();
        return idle && Get<QLabel>("textProgress")->text().isEmpty();
    }

    /// The rows, relative to the home folder.
    QStringList Rows() const
    {
        QStringList rows;
        for (int row = 0; row < List().count(); ++row)
            rows += List().item(row)->text().remove(Sandbox::Home() + '/');
        return rows;
    }

    /// Every file below @p folder of the home folder, relative to it and sorted.
    static QStringList Tree(const QString& folder)
    {
        QStringList paths;
        QDirIterator entries(Home(folder), QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext())
            paths += entries.next().remove(Home(folder) + '/');
        paths.sort();
        return paths;
    }

    void Drop(const QStringList& paths)
    {
        QStringList absolute;
        for (const QString& path : paths)
            absolute += Home(path);
        DropOn(*window, absolute);
    }

    void Press(int row, Qt::MouseButton button = Qt::LeftButton)
    {
        const QPoint point = List().visualItemRect(List().item(row)).center();
        QCursor::setPos(List().viewport()->mapToGlobal(point));
        QTest::mouseClick(List().viewport(), button, {}, point);
    }

    /// Chooses from the list menu, which a right click on @p row opens; @p answers follow.
    void ChooseFromList(int row, const QString& entry, const QList<Answer>& answers)
    {
        Answers dialogs(QList<Answer>{Entry(listEntries, entry)} + answers);
        Press(row, Qt::RightButton);
        emit List().customContextMenuRequested({}); // the event that the window system sends after the press
        dialogs.Finish();
    }

    void ChooseFromButton(const char* button, const QString& entry, const QList<Answer>& answers)
    {
        Answers dialogs(QList<Answer>{Entry(qstrcmp(button, "buttonAdd") == 0 ? addEntries : removeEntries, entry)} +
                        answers);
        Click(*window, button);
        dialogs.Finish();
    }

    void Run(const QList<Answer>& answers)
    {
        Answers dialogs(answers);
        Click(*window, "buttonOrganize");
        QTRY_VERIFY_WITH_TIMEOUT(IsIdle(), 20000);
        dialogs.Finish();
    }

    void Trigger(const char* action, const QList<Answer>& answers)
    {
        Answers dialogs(answers);
        Get<QAction>(action)->trigger();
        dialogs.Finish();
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
        QCOMPARE(Sandbox::TakeWarnings(), QStringList());
    }

    void startsInItsDefaultState()
    {
        QCOMPARE(window->windowTitle(), QString("Orvanto"));
        QCOMPARE(window->size(), QSize(780, 560));
        QCOMPARE(Get<QComboBox>("comboOrganizeBy")->currentText(), QString("Artist"));
        QCOMPARE(Get<QComboBox>("comboOrganizeBy")->count(), 16);
        QCOMPARE(Get<QComboBox>("comboRename")->currentText(), QString("Artist-Title"));
        QCOMPARE(Get<QComboBox>("comboRename")->itemText(6), QString("Custom"));
        QVERIFY(Get<QRadioButton>("radioFixAuto")->isChecked());
        QVERIFY(Get<QCheckBox>("checkOnlyEditInvalid")->isChecked());
        QVERIFY(!Get<QCheckBox>("checkOnlyEditInvalid")->isEnabled());
        QCOMPARE(Get<QLineEdit>("editOutputFolder")->text(), Home("Music"));
        QCOMPARE(Info(), clearedInfo);
        QVERIFY(IsIdle() && !Get<QWidget>("groupAudioPlayer")->isVisible());
        QVERIFY(!window->windowIcon().isNull());
        QVERIFY(Get<QLabel>("label")->testAttribute(Qt::WA_MacSmallSize));
        QVERIFY(!Get<QPushButton>("buttonAdd")->testAttribute(Qt::WA_MacSmallSize));
        for (const char* button : {"buttonAdd", "buttonRemove", "buttonPlay", "buttonStop", "buttonOrganize"})
            QVERIFY2(!Get<QPushButton>(button)->icon().isNull(), button);
        Run({Warning("There are no audio files to process.")});
    }

    void addsFiles_data()
    {
        QTest::addColumn<QString>("entry"); // of the add menu; a drop without
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("rows");
        QTest::newRow("files") << "File(s)"
                               << "lib/a.MP3 lib/notes.txt lib/b.mp3 lib/a.MP3"
                               << "lib/a.MP3 lib/b.mp3";
        QTest::newRow("folder, smallest first") << "Folder"
                                                << "lib"
                                                << "lib/b2.mp3 lib/b.mp3 lib/.h.ogg lib/a.MP3";
        QTest::newRow("with subfolders")
            << "Folder with Subfolders"
            << "lib"
            << "lib/b2.mp3 lib/b.mp3 lib/.h.ogg lib/a.MP3 lib/sub/d.flac lib/sub/linked/f.spx";
        QTest::newRow("folders are dropped first") << ""
                                                   << "other/f.spx lib lib/b.mp3 lib/notes.txt"
                                                   << "lib/b2.mp3 lib/b.mp3 lib/.h.ogg lib/a.MP3 lib/sub/d.flac "
                                                      "lib/sub/linked/f.spx other/f.spx";
    }
    void addsFiles()
    {
        QFETCH(QString, entry);
        QFETCH(QString, choice);
        QFETCH(QString, rows);
        PutSample("full.wav", Home("lib/a.MP3"));
        PutSample("full.mp3", Home("lib/b.mp3"));
        PutSample("full.mp3", Home("lib/b2.mp3"));
        PutSample("bare.ogg", Home("lib/.h.ogg"));
        for (const char* other : {"lib/notes.txt", "lib/b.mp3.bak", "lib/nodot"})
            PutSample("bare.spx", Home(other));
        PutSample("full.flac", Home("lib/sub/d.flac"));
        PutSample("full.wv", Home("lib/.hidden/e.wv"));
        PutSample("full.spx", Home("other/f.spx"));
        QVERIFY(QFile::link(Home("lib/b.mp3"), Home("lib/link.mp3")));
        QVERIFY(QFile::link(Home("other"), Home("lib/sub/linked")));

        bool busySeen = false;
        QTimer watch;
        connect(&watch, &QTimer::timeout, [this, &busySeen] {
            if (Get<QLabel>("textProgress")->text() != "Updating audio file list..." || IsIdle())
                return;
            busySeen = true;
            Drop({"lib/nodot", "lib/.hidden"}); // adds nothing while files are being added
        });
        watch.start(0);

        QStringList chosen;
        for (const QString& path : choice.split(' '))
            chosen += Home(path);
        const bool isFiles = entry == "File(s)";
        for (int twice = 0; twice < 2; ++twice) {
            if (entry.isEmpty())
                Drop(choice.split(' '));
            else
                ChooseFromButton("buttonAdd", entry,
                                 {Files(isFiles ? "Select one or more files to open" : "Select folder", chosen)});
            QCOMPARE(Rows().join(' '), rows);
            QVERIFY(IsIdle() && busySeen);
            QCOMPARE(Get<QProgressBar>("progressOrganize")->value(), 0);
        }
        if (!entry.isEmpty()) {
            QCOMPARE(OpenSettings().value(isFiles ? "AddFilesPath" : "AddFolderPath").toString(), Home("lib"));
            ChooseFromButton("buttonAdd", entry,
                             {Files(isFiles ? "Select one or more files to open" : "Select folder", {})});
            QCOMPARE(Rows().join(' '), rows);
        }
    }

    void selectsAndRemoves()
    {
        PutSample("full.mp3", Home("x/1.mp3"));
        PutSample("bare.ogg", Home("x/2.ogg"));
        PutSample("bare.wv", Home("x/3.wv"));
        Drop({"x/1.mp3", "x/2.ogg", "x/3.wv"});
        Press(0);
        QCOMPARE(Info(),
                 QString("Artist: Björk Ärger\nTitle: Tone of Ten\nAlbum: Small Files\nYear: 1999\nGenre: Rock\n"
                         "Track: 7"));
        QCOMPARE(Preview(), Home("Music/Björk Ärger/Björk Ärger-Tone of Ten.mp3"));
        Press(1);
        QCOMPARE(Info(), QString("Artist: \nTitle: \nAlbum: \nYear: 0\nGenre: \nTrack: 0"));
        QCOMPARE(Preview(), Home("Music/Artist/Artist-Title.ogg"));

        const auto sure = [](QMessageBox::StandardButton answer) {
            return Question("Are you sure you want to remove the selected file?", answer);
        };
        ChooseFromButton("buttonRemove", "Selected", {sure(QMessageBox::No)});
        QCOMPARE(Rows().size(), 3);
        ChooseFromList(1, "Remove", {sure(QMessageBox::Yes)});
        QCOMPARE(Rows(), QStringList({"x/1.mp3", "x/3.wv"}));
        QCOMPARE(Info(), clearedInfo);
        QCOMPARE(Preview(), QString());
        // Without a new press, the file that moved up is next; past the end, nothing goes.
        ChooseFromButton("buttonRemove", "Selected", {sure(QMessageBox::Yes)});
        ChooseFromButton("buttonRemove", "Selected", {sure(QMessageBox::Yes)});
        QCOMPARE(Rows(), QStringList("x/1.mp3"));

        // A removed file can be added again, and rows still find their records.
        Drop({"x/3.wv"});
        Press(1);
        QVERIFY(Preview().endsWith(".wv"));
        const QString all = "Are you sure you want to remove all the files in the list?";
        ChooseFromButton("buttonRemove", "All", {Question(all, QMessageBox::No)});
        QCOMPARE(Rows().size(), 2);
        ChooseFromButton("buttonRemove", "All", {Question(all, QMessageBox::Yes)});
        QCOMPARE(Rows().size(), 0);
        ChooseFromButton("buttonRemove", "All", {});
        ChooseFromButton("buttonRemove", "Selected", {});
        emit List().customContextMenuRequested({}); // no menu over no file
    }

    void settingsSteerThePreview()
    {
        PutSample("full.mp3", Home("x/1.mp3"));
        Drop({"x/1.mp3"});
        Press(0);
        Choose(*window, "comboOrganizeBy", 10);
        Type(*window, "editOutputFolder", "C:\\Music\\Out");
        QCOMPARE(Get<QLineEdit>("editOutputFolder")->text(), QString("C:\\Music\\Out"));
        QCOMPARE(Preview(), QString("C:/Music/Out/Rock/Björk Ärger/Small Files/Björk Ärger-Tone of Ten.mp3"));
        QCOMPARE(OpenSettings().value("OutputFolderPath").toString(), QString("C:/Music/Out"));
        QCOMPARE(window->windowTitle(), QString("Orvanto*"));

        {
            Answers dialogs({Edit("Custom Rename", {{"editRenameScheme", "[Title]."}}, "buttonCancel")});
            Choose(*window, "comboRename", 6);
            dialogs.Finish();
        }
        QCOMPARE(Get<QComboBox>("comboRename")->currentIndex(), 6);
        QVERIFY(Preview().endsWith("/7 Björk Ärger-Tone of Ten (Small Files, 1999, Rock).mp3"));
        {
            Answers dialogs({Edit("Custom Rename", {{"editRenameScheme", "[Title] [x]"}}, "buttonOK")});
            Choose(*window, "comboRename", 6);
            dialogs.Finish();
        }
        QVERIFY(Preview().endsWith("/Tone of Ten [x].mp3"));
        {
            Answers dialogs({Files("Select folder", {Home("Documents")}), Files("Select folder", {})});
            Click(*window, "buttonBrowseOutFold");
            Click(*window, "buttonBrowseOutFold");
        }
        QVERIFY(Preview().startsWith(Home("Documents/Rock")));
        QCOMPARE(OpenSettings().value("OutputFolderPath").toString(), Home("Documents"));

        for (const bool skip : {true, false}) {
            Click(*window, "checkSkipOrganize");
            for (const char* name : {"comboOrganizeBy", "comboRename", "editOutputFolder", "buttonBrowseOutFold",
                                     "editOutputPreview", "checkDeleteOriginal"})
                QCOMPARE(Get<QWidget>(name)->isEnabled(), !skip);
        }
        Click(*window, "radioFixMan");
        QVERIFY(Get<QCheckBox>("checkOnlyEditInvalid")->isEnabled());
        Click(*window, "radioFixAuto");
        QVERIFY(!Get<QCheckBox>("checkOnlyEditInvalid")->isEnabled());
        QCOMPARE(window->windowTitle(), QString("Orvanto*"));
    }

    void editsTags()
    {
        const QString first = PutSample("full.mp3", Home("x/1.mp3"));
        const QString second = PutSample("bare.flac", Home("x/2.flac"));
        Drop({"x/1.mp3", "x/2.flac"});
        const QByteArray before = Bytes(first);
        ChooseFromList(0, "Edit Tags", {Edit("Edit Tags", {{"editTitle", "New"}}, "buttonAbort")});
        ChooseFromList(0, "Edit Tags", {CloseWindow("Edit Tags")}); // writes what the file holds already
        QVERIFY(Bytes(first) == before);
        ChooseFromList(0, "Edit Tags", {Edit("Edit Tags", {{"editTitle", "New"}, {"editYear", "MCM"}}, "buttonOK")});
        QVERIFY(Info().contains("Title: New\nAlbum: Small Files\nYear: MCM\n"));
        QCOMPARE(TagManager().ReadFile(first).Title, QString("New"));
        QCOMPARE(TagManager().ReadFile(first).Year, QString("0"));

        const QMap<const char*, QString> batch{{"editGenre", ""}, {"editArtist", "All"}};
        const auto sure = [](QMessageBox::StandardButton answer) {
            return Question("Are you sure you want to apply these tags to all the audio files in the list?", answer);
        };
        const QString title = "Batch Edit Tags";
        ChooseFromList(1, title, {Edit(title, batch, "buttonAbort")});
        ChooseFromList(1, title, {Edit(title, batch, "buttonOK"), sure(QMessageBox::No)});
        QCOMPARE(TagManager().ReadFile(first).Genre, QString("Rock"));
        ChooseFromList(1, title, {Edit(title, batch, "buttonOK"), sure(QMessageBox::Yes)});
        QCOMPARE(Info(), QString("Artist: All\nTitle: \nAlbum: \nYear: 0\nGenre: \nTrack: 0"));
        QCOMPARE(TagManager().ReadFile(first).Genre, QString());
        QCOMPARE(TagManager().ReadFile(first).Title, QString("New"));
        QCOMPARE(TagManager().ReadFile(second).Artist, QString("All"));
    }

    void runs_data()
    {
        QTest::addColumn<QByteArray>("mode"); // the radio button to click
        QTest::addColumn<bool>("everyFile");
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QStringList>("tree");
        const QStringList both{"Ann/Ann- Song.mp3", "Björk Ärger/Björk Ärger-Tone of Ten.ogg"};
        const QByteArray automatic("radioFixAuto");
        const QByteArray manual("radioFixMan");
        QTest::newRow("automatic, OK") << automatic << false << QByteArray("buttonOK") << both;
        QTest::newRow("automatic, Skip") << automatic << false << QByteArray("buttonSkip") << both;
        QTest::newRow("automatic, closed") << automatic << false << QByteArray() << both;
        QTest::newRow("automatic, Abort") << automatic << false << QByteArray("buttonAbort") << QStringList();
        QTest::newRow("manual, OK") << manual << false << QByteArray("buttonOK")
                                    << QStringList{both.last(), "New/New-Typed.mp3"};
        QTest::newRow("every file, Skip") << manual << true << QByteArray("buttonSkip") << QStringList{both.last()};
    }
    void runs()
    {
        QFETCH(QByteArray, mode);
        QFETCH(bool, everyFile);
        QFETCH(QByteArray, button);
        QFETCH(QStringList, tree);
        const QString broken = PutSample("bare.mp3", Home("in/Ann - Song.mp3"));
        PutSample("full.ogg", Home("in/z.ogg"));
        TagManager tags;
        tags.path = broken;
        tags.SetInfo(Tag::Genre, "www.spam.com"); // is erased, so that the editor shows no genre
        Drop({"in"});
        Type(*window, "editOutputFolder", Home("out//"));
        Click(*window, mode);
        if (everyFile)
            Click(*window, "checkOnlyEditInvalid");

        const bool automatic = mode == "radioFixAuto";
        int editors = 0;
        const Answer answer = Dialog("Edit Tags", [&](QWidget* editor) {
            ++editors;
            const bool brokenShown = Child<QLabel>(*editor, "textFilePath")->text() == broken;
            QCOMPARE(Child<QLineEdit>(*editor, "editArtist")->text(), QString(!brokenShown ? "Björk Ärger"
                                                                              : automatic  ? "Ann"
                                                                                           : ""));
            QCOMPARE(Child<QLineEdit>(*editor, "editGenre")->text(), QString(brokenShown ? "" : "Rock"));
            QCOMPARE(Child<QLabel>(*editor, "fileLabel")->text(),
                     QString(everyFile ? "Audio file:" : "The following file has incomplete/invalid tags:"));
            QCOMPARE(Get<QLabel>("textProgress")->text(), QString("Processing..."));
            if (!automatic && button == "buttonOK") {
                Type(*editor, "editArtist", "New");
                Type(*editor, "editTitle", "Typed");
            }
            if (!button.isEmpty())
                Click(*editor, button);
            else
                editor->close();
        });
        QList<Answer> answers{answer};
        if (everyFile)
            answers += answer;
        if (everyFile) { // skipped without artist and title
            const QString report = "Could not copy the following:\n\n" + broken + "\n";
            answers += Warning(report + "\nOrvanto could not fix the invalid tags. For better results try to manually "
                                        "edit the tags or try a different organize/rename pattern.",
                               "Log");
        } else {
            answers += Success();
        }
        Run(answers + QList<Answer>{Social()});
        QCOMPARE(editors, everyFile ? 2 : 1);
        QCOMPARE(Tree("out"), tree);
        QCOMPARE(Rows().size(), 2);
        QCOMPARE(tags.ReadFile(broken).Genre, QString());
    }

    void logsEveryRun()
    {
        const QString refused = PutSample("full.mp3", Home("in/An Unknown é.mp3"));
        Drop({"in"});
        Type(*window, "editOutputFolder", Home("out"));
        OpenSettings().setValue("SkipSocial", 1);
        Run({Success()});
        Choose(*window, "comboRename", 0);
        const QString report = "Could not copy the following:\n\n" + refused + "\n";
        Run({Warning(report + "\nOrvanto could not fix the invalid tags. For better results try to manually edit the "
                              "tags or try a different organize/rename pattern.",
                     "Log")});
        QString log = QString::fromUtf8(Bytes(Home("Documents/Orvanto/Orvanto.log")));
        log.replace(QRegularExpression("\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d"), "TIME");
        const QString dashes = "--------------------------------------------------------------\n";
        QCOMPARE(log, dashes + "TIME\n\nOperation finished successfully!\n" + dashes + '\n' + dashes + "TIME\n\n" +
                          report + dashes + '\n');

        // A folder in the log's place: the run itself is not affected, and neither are the controls.
        QVERIFY(QFile::remove(Home("Documents/Orvanto/Orvanto.log")) &&
                QDir().mkdir(Home("Documents/Orvanto/Orvanto.log")));
        Run({Warning("Could not save log.")});
        QCOMPARE(Rows(), QStringList("in/An Unknown é.mp3"));
    }

    void deletesOriginals_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("skip");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("copied elsewhere") << "out/" << false << QStringList();
        QTest::newRow("in place") << "in//" << false << QStringList{"1.mp3", "2.ogg"};
        QTest::newRow("only tags") << "out" << true << QStringList{"1.mp3", "2.ogg"};
    }
    void deletesOriginals()
    {
        QFETCH(QString, output);
        QFETCH(bool, skip);
        PutSample("full.mp3", Home("in/1.mp3"));
        PutSample("full.ogg", Home("in/2.ogg"));
        Drop({"in"});
        OpenSettings().setValue("SkipSocial", 1);
        Type(*window, "editOutputFolder", Home(output));
        Choose(*window, "comboOrganizeBy", 0);
        Choose(*window, "comboRename", 0);
        Click(*window, "checkDeleteOriginal");
        if (skip) {
            Click(*window, "checkSkipOrganize");
            Run({Success()});
        } else {
            Run({Question(deleteOriginals, QMessageBox::No)});
            QCOMPARE(Rows().size(), 2);
            Run({Question(deleteOriginals, QMessageBox::Yes), Success()});
        }
        QTEST(Tree("in"), "left");
        QCOMPARE(Rows().size(), skip ? 2 : 0);
        QCOMPARE(Tree("out").size(), output.startsWith("out") && !skip ? 2 : 0);
        QCOMPARE(Info(), clearedInfo);
    }

    void quitsInMidRun()
    {
        const QString path = PutSample("bare.mp3", Home("in/x.mp3"));
        Drop({"in"});
        Answers dialogs({Dialog("Edit Tags", [this](QWidget*) {
            QVERIFY(!IsIdle());
            Drop({"in"}); // adds nothing during a run
            Get<QAction>("actionExit")->trigger();
        })});
        QTimer::singleShot(0, [this] { Click(*window, "buttonOrganize"); });
        QCOMPARE(QCoreApplication::exec(), 0);
        window.reset();
        dialogs.Finish();
        QVERIFY(QFile::exists(path) && Tree("Music").isEmpty());
    }

    void quitsWhileFilesAreAdded()
    {
        for (int i = 0; i < 200; ++i)
            PutSample("bare.spx", Home("in/" + QString::number(i) + ".spx"));
        Click(*window, "checkDeleteOriginal");
        QTimer watch;
        int turns = 0;
        connect(&watch, &QTimer::timeout, [this, &turns] {
            if (!IsIdle() && ++turns == 20)
                window->close();
        });
        watch.start(0);
        Answers dialogs({Box(QMessageBox::Question, saveSettings,
                             QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::No)});
        QTimer::singleShot(0, [this] { Drop({"in"}); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY2(turns < 150, "the adding went on");
        QVERIFY(OpenSettings().allKeys().isEmpty());
    }
};

ORVANTO_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
