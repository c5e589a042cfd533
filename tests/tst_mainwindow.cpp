#include "app/MainWindow.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "platform/UserSettings.h"
#include "tags/TagManager.h"
#include "tests/Rows.h"

#include <QtWidgets>

#include <sys/stat.h>

namespace
{
const QString cleared = "textInfo=Artist:|Title:|Album:|Year:|Genre:|Track:; editOutputPreview=";
const QString bareInfo = "textInfo=Artist: |Title: |Album: |Year: 0|Genre: |Track: 0";
const QString advice = "\nOrvanto could not fix the invalid tags. For better results try to manually edit the tags or "
                       "try a different organize/rename pattern.";
const QString deleteOriginals =
    "You have chosen to delete the original files after processing. The files with processing errors will not be "
    "deleted. Even so, we advise you to make backup copies of the original files before proceeding. Continue?";
const QString applyTags = "Are you sure you want to apply these tags to all the audio files in the list?";
const QString removeFile = "Are you sure you want to remove the selected file?";
const QString overwrite = "This will overwrite your current settings. Continue?";
const QString loseSettings = "Loading a profile will overwrite your current settings. Continue?";

void Put(const QString& sample, const QString& paths)
{
    for (const QString& path : Paths(paths)) {
        PutSample(sample, path);
        if (sample.startsWith("full"))
            TagManager().WriteFile({"T", "A", "L", "1999", "G", "7", path});
    }
}
} // namespace

/// The steps of a story, which ends at the first that fails. DO(ACTS) does one thing after another, STEP(ACTS, ANSWERS,
/// CHANGES) compares afterwards all that changed by the last, LOOK(CHANGES) what has changed since the last look.
#define DO(...) TELL(Do(__LINE__, __VA_ARGS__))
#define STEP(...) TELL(Step(__LINE__, __VA_ARGS__))
#define LOOK(...) TELL(Look(__VA_ARGS__))
#define ENDS(...) TELL(Ends(__LINE__, __VA_ARGS__))
#define TELL(step)                                                                                                     \
    do {                                                                                                               \
        step;                                                                                                          \
        if (QTest::currentTestFailed())                                                                                \
            return;                                                                                                    \
    } while (false)

/// Stories through the real window. A step names what it changes of all that is to be seen; everything else must stay.
class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<Outside> outside;
    QStringList before;
    QStringList moves; ///< of the progress bar

    static QString Home(const QString& path) { return Paths(path).value(0); }
    static QString Artist(const QString& path) { return TagManager().ReadFile(path).Artist; }
    static Answer Yes(const QString& question) { return Question(question, QMessageBox::Yes); }
    static Answer No(const QString& question) { return Question(question, QMessageBox::No); }
    static Answer Unsaved(QMessageBox::StandardButton answer)
    {
        return Box(QMessageBox::Question, "You have unsaved changes. Do you want to save your settings?",
                   QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, answer);
    }
    QString ArtistAt(int row) const { return List().item(row) ? Artist(List().item(row)->text()) : QString(); }
    QListWidget& List() const { return *Child<QListWidget>(*window, "listAudioFiles"); }
    QString Focus() const { return window->focusWidget()->objectName(); }
    QString Status() const { return Child<QLabel>(*window, "textProgress")->text(); }

    void Open()
    {
        AtStep("opening the window", __FILE__, __LINE__);
        window = std::make_unique<MainWindow>(nullptr);
        window->move(10, 150); // from where the system puts windows
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        connect(Child<QProgressBar>(*window, "progressOrganize"), &QProgressBar::valueChanged, this,
                &TestMainWindow::KeepMove);
        connect(qApp, &QApplication::focusChanged, window.get(), [](QWidget*, QWidget* now) {
            Demand(!now || now->accessibleName() != "Progress",
                   "the bar has the focus before a screen reader can tell why");
        });
    }

    /// Keeps "Status percent percent...", with "!" for each control that could change the list meanwhile, or that would
    /// take the next key.
    void KeepMove(int value)
    {
        QString status = Status().section(' ', 0, 0).remove("...");
        const QWidget* const focused = window->focusWidget(); // whose name is what a screen reader says
        status += focused->objectName() == "progressOrganize" && focused->accessibleName() == Status() ? "" : "!";
        for (const char* name : {"buttonOrganize", "buttonAdd", "buttonRemove", "listAudioFiles"})
            status += Child<QWidget>(*window, name)->isEnabled() ? "!" : "";
        if (value > 0 && moves.filter(status).isEmpty())
            moves += status;
        if (value > 0)
            moves.last() += ' ' + Child<QProgressBar>(*window, "progressOrganize")->text();
    }

    /// The window, the stored settings, the files in each folder of the home.
    QStringList Now() const
    {
        QStringList seen = Visible(*window);
        auto store = OpenSettings();
        store.setFallbacksEnabled(false);
        for (const QString& key : store.allKeys())
            seen += '[' + key + "]=" + store.value(key).toString().replace(Sandbox::Home(), "~");
        for (const QString& folder : QDir::home().entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            seen += "~/" + folder + '=' + FilesBelow(Home(folder)).join('|').remove(Home(folder) + '/');
        return seen;
    }

    /// Compares what is new since the last look.
    void Look(const QString& expected)
    {
        QStringList now = Now();
        now.swap(before);
        QStringList seen = before + moves + outside->Take().replaceInStrings(QRegularExpression("^"), "opened=");
        for (const QString& line : now)
            seen.removeOne(line);
        moves.clear();
        DemandSeen(seen.replaceInStrings(Sandbox::Home(), "~"), expected);
    }

    /// Does one thing after another, "ACT; ACT", as Act() does it.
    void Do(int line, const QString& acts, const QList<Answer>& answers = {})
    {
        for (const QString& act : acts.split("; ")) {
            if (QTest::currentTestFailed())
                return;
            AtStep(act, __FILE__, line);
            if (QFile store(OpenSettings().fileName()); store.fileName().endsWith(".conf") && store.open(QFile::Append))
                store.write("\n"); // so that the file is read again: there, everything is text
            before = Now();
            moves.clear();
            Act(*window, act, answers);
        }
    }
    void Step(int line, const QString& acts, const QList<Answer>& answers, const QString& changes)
    {
        Do(line, acts, answers);
        Look(changes);
    }

    /// A hundred files, which some work takes long enough for to be stopped.
    static void PutHundred()
    {
        for (int i = 0; i < 100; ++i) {
            const QString path = PutSample("bare.spx", Home(QString("in/%1.spx").arg(i)));
            TagManager().WriteFile({"", "www.", "", "", "", "", path});
        }
    }
    bool IsAdding() const { return Status() == "Updating audio file list..."; }
    /// Does something once, at the first turn of the event loop at which @p when, if the timer still lives then.
    static std::unique_ptr<QTimer> Once(const std::function<bool()>& when, const std::function<void()>& action)
    {
        auto timer = std::make_unique<QTimer>();
        timer->callOnTimeout([=, timer = timer.get()] {
            if (!when())
                return;
            timer->stop();
            action();
        });
        timer->start(0);
        return timer;
    }
    std::unique_ptr<QTimer> EscapeOnce(const std::function<bool()>& when) const
    {
        return Once(when, [this] { QTest::keyClick(window->focusWidget(), Qt::Key_Escape); });
    }

    /// Types Escape before the worker of the run that is started next can be heard; @p closed once its question is.
    void EscapeAtStart(bool* closed = nullptr)
    {
        auto* const bar = Child<QProgressBar>(*window, "progressOrganize");
        bar->setValue(1); // goes back before the worker starts
        auto* const once = new QObject(window.get());
        const auto type = [=] {
            delete once;
            QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, {}, QString(), true); // since before the run: asks nothing
            QApplication::sendEvent(bar, &held);
            QTest::keyClick(bar, Qt::Key_Escape);
            if (closed)
                *closed = true;
        };
        connect(bar, &QProgressBar::valueChanged, once, type, Qt::QueuedConnection);
    }

    /// Answers the question whether to stop; what waits for the answer has changed nothing by then.
    Answer Stop(QMessageBox::StandardButton answer)
    {
        return [=](QWidget* question) {
            const QStringList asked = Now();
            for (int turn = 0; turn < 20; ++turn)
                QCoreApplication::processEvents();
            DemandSeen(Now(), asked.join("; ")); // a failure says what went on
            Question("Do you want to stop?", answer)(question);
        };
    }

    /// Demands that the program ends by @p act, or else that it goes on.
    void Ends(int line, const QString& act, const QList<Answer>& answers, bool ends = true)
    {
        QObject context;
        QTimer::singleShot(0, &context, [&] {
            Do(line, act, answers);
            QTimer::singleShot(window->isVisible() ? 0 : 2000, &context, [] { QCoreApplication::exit(1); });
        });
        Demand((QCoreApplication::exec() == 0) == ends, ends ? "the program goes on" : "the program ends");
    }

private slots:
    void init()
    {
        Sandbox::Reset();
        QApplication::setFont(QFont(QApplication::font().family(), 14)); // every caption has to fit
        outside = std::make_unique<Outside>();
        before.clear();
        moves.clear();
        Open();
    }

    void cleanup()
    {
        window.reset();
        outside.reset();
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(Sandbox::TakeWarnings(), QStringList()); // a slot that is bound to nothing shows only so
    }

    void listsFiles()
    {
        LOOK("title=Orvanto; listAudioFiles=; buttonAdd=Add; buttonRemove=Remove; buttonOrganize=Start      ; "
             "comboOrganizeBy=Artist; comboRename=Artist-Title; checkSkipOrganize=false; radioFixAuto=true; "
             "radioFixMan=false; checkOnlyEditInvalid=true (off); editOutputFolder=~/Music; "
             "checkDeleteOriginal=false; buttonBrowseOutFold=Browse; textOutputPreview=Output Preview; "
             "progressOrganize=0% (off); textProgress=; ~/Documents=; ~/Music=; ring=Files|Add|Remove|Organize by|"
             "Rename|Skip organizing (Only edit tags)|Incomplete/invalid tags will be fixed: Automatically (where "
             "possible)|"
             "Incomplete/invalid tags will be fixed: Manually|Only edit incomplete/invalid tags|Output Folder|"
             "Browse|Output Preview|Delete original files|Start; " +
             cleared);
        STEP("buttonOrganize", {Warning("There are no audio files to process.")}, "");

        Put("full.mp3", "lib/b.mp3|lib/b2.mp3|lib/notes.txt|lib/b.mp3.bak|lib/nodot|lib/.hidden/e.wv|late/l.mp3");
        Put("full.wav", "lib/a.MP3");
        Put("bare.ogg", "lib/.h.ogg");
        Put("full.flac", "lib/sub/d.flac");
        Put("full.spx", "other/f.spx");
        QVERIFY(QFile::link(Home("other"), Home("lib/sub/link")));
        QVERIFY(QFile::link(Home("lib/b.mp3"), Home("lib/l.mp3")));
        QCOMPARE(mkfifo(QFile::encodeName(Home("lib/pipe.mp3")), 0600), 0);
        const auto drop = Once([this] { return IsAdding(); }, // at its start, and nothing is added then
                               [this] { DropOn(*window, {Home("late")}); });
        // The smallest first, of equals the last name.
        const QString folder = "listAudioFiles=~/lib/b2.mp3|~/lib/b.mp3|~/lib/.h.ogg|~/lib/a.MP3";
        const QString all = folder + "|~/lib/sub/d.flac|~/lib/sub/link/f.spx", seven = " 14% 28% 42% 57% 71% 85%";
        const QString files = "Select one or more files to open";
        STEP("buttonAdd Folder", {Files("Select folder", {}, "Music")}, "");
        STEP("buttonAdd Folder", {Files("Select folder", "lib", "Music")},
             folder + "; [AddFolderPath]=~/lib; Updating 25% 50% 75%");
        STEP("buttonAdd Folder with Subfolders", {Files("Select folder", {}, "lib")}, "");
        STEP("buttonAdd Folder with Subfolders", {Files("Select folder", "lib", "lib")},
             all + "; Updating 16% 33% 50% 66% 83%");
        STEP("buttonAdd File(s)", {Files(files, "lib/notes.txt|lib/b.mp3|other/f.spx|other/f.spx", "Music")},
             all + "|~/other/f.spx; [AddFilesPath]=~/lib; Updating" + seven);
        STEP("buttonAdd File(s)", {Files(files, "lib/pipe.mp3", "lib")},
             all + "|~/other/f.spx|~/lib/pipe.mp3; Updating 12% 25% 37% 50% 62% 75% 87%");

        const QString removeAll = "Are you sure you want to remove all the files in the list?";
        DO("press 0");
        STEP("buttonRemove All", {No(removeAll)}, "");
        STEP("buttonRemove All", {Yes(removeAll)}, "listAudioFiles=; " + cleared);
        STEP("buttonRemove All", {}, "");
        STEP("buttonAdd Folder with Subfolders", {Files("Select folder", "other", "lib")},
             "listAudioFiles=~/other/f.spx; [AddFolderPath]=~/other");
        DO("buttonRemove All", {Yes(removeAll)});
        window->setLayoutDirection(Qt::RightToLeft);
        STEP("drop lib/l.mp3|lib|lib/b.mp3|lib/notes.txt", {}, all + "|~/lib/l.mp3; Updating" + seven);
    }

    void searches()
    {
        Put("full.mp3", "lib/1.mp3|lib/süb/4.mp3");
        Put("full.flac", "lib/2.FLAC|lib/süb/3.flac");
        const QString buttons = "title=Search; ring=Search path|Browse|Search in subfolders|Search mask|OK|Cancel; "
                                "buttonBrowse=Browse; buttonOK=OK; buttonCancel=Cancel; ";
        const QString path = Home("lib").replace('/', '\\');
        for (const char* key : {"OutputFolderPath", "AddFilesPath", "SearchFolderPath"})
            OpenSettings().setValue(key, QStringList{"a", "b"}); // garbage reads as the default
        OpenSettings().setValue("SearchMask", 10);
        STEP("buttonAdd File(s)", {Files("Select one or more files to open", {}, "Music")}, "");
        STEP("buttonAdd Search",
             {Shows(buttons + "editSearchPath=~/Music; focus=editSearchPath|~/Music; checkSearchSubfolders=false; "
                              "comboSearchMask=*.mp3",
                    Fill("comboSearchMask 3; checkSearchSubfolders; editSearchPath " + path + "; buttonCancel"))},
             "[SearchFolderPath]=~/lib; [SearchSubfolders]=true; [SearchMask]=3");
        STEP("buttonAdd Search", {Fill("checkSearchSubfolders; buttonOK")},
             "listAudioFiles=~/lib/2.FLAC; [SearchSubfolders]=false");
        const auto browse = [this](QWidget* search) {
            window->OpenPaths(Paths("lib")); // adds nothing while a dialog is open
            Fill("buttonBrowse; buttonBrowse; checkSearchSubfolders")(search);
            DemandSeen(Visible(*search).filter("Path"), "editSearchPath=~/lib/süb");
            Fill("comboSearchMask 0; buttonOK")(search);
        };
        STEP("buttonAdd Search",
             {browse, Files("Select folder", "lib/süb", "lib"), Files("Select folder", {}, "lib/süb")},
             "listAudioFiles=~/lib/2.FLAC|~/lib/süb/4.mp3; [SearchFolderPath]=~/lib/süb; [SearchSubfolders]=true; "
             "[SearchMask]=0; Updating 50%");
        const QString store = OpenSettings().fileName();
        QVERIFY(!store.endsWith(".conf") || Bytes(store).contains("/süb")); // which every version of Qt reads
        STEP("buttonAdd Search", {Fill("editSearchPath; buttonOK")}, "[SearchFolderPath]=");
        // Every type is accepted again.
        STEP("drop lib/1.mp3", {}, "listAudioFiles=~/lib/2.FLAC|~/lib/süb/4.mp3|~/lib/1.mp3; Updating 33% 66%");
    }

    void selectsAndRemoves()
    {
        Put("full.mp3", "x/1.mp3");
        Put("bare.ogg", "x/2.ogg");
        Put("bare.wv", "x/3.wv");
        const QString preview = "editOutputPreview=~/Music/Artist/Artist-Title.";
        STEP("drop x/1.mp3|x/2.ogg|x/3.wv", {}, "listAudioFiles=~/x/1.mp3|~/x/2.ogg|~/x/3.wv; Updating 33% 66%");
        STEP("hover 3", {}, ""); // below the rows
        STEP("hover 1", {}, "tip=~/x/2.ogg");
        STEP("press 0", {},
             "listAudioFiles=>~/x/1.mp3|~/x/2.ogg|~/x/3.wv; editOutputPreview=~/Music/A/A-T.mp3; textInfo=Artist: "
             "A|Title: T|Album: L|Year: 1999|Genre: G|Track: 7");
        STEP("keys Down", {}, "listAudioFiles=~/x/1.mp3|>~/x/2.ogg|~/x/3.wv; " + bareInfo + "; " + preview + "ogg");
        STEP("drag 2 0", {}, "listAudioFiles=~/x/1.mp3|~/x/2.ogg|>~/x/3.wv; " + preview + "wv");
        STEP("press 1", {}, "listAudioFiles=~/x/1.mp3|>~/x/2.ogg|~/x/3.wv; " + preview + "ogg");
        STEP("double 1", {}, "opened=file://~/x/2.ogg");

        STEP("buttonRemove Selected", {No(removeFile)}, "");
        const auto drop = Once([this] { return List().count() == 2; }, // while the rows are being rebuilt
                               [this] { DropOn(*window, Paths("x/1.mp3")); });
        STEP("row 0 Remove", {Yes(removeFile)}, "listAudioFiles=~/x/2.ogg|~/x/3.wv; " + cleared);
        // Rows still find their records.
        STEP("press 1", {}, "listAudioFiles=~/x/2.ogg|>~/x/3.wv; " + bareInfo + "; " + preview + "wv");
        STEP("press 0", {}, "listAudioFiles=>~/x/2.ogg|~/x/3.wv; " + preview + "ogg");
        STEP("buttonRemove Selected", {Yes(removeFile)}, "listAudioFiles=~/x/3.wv; " + cleared);
        // Without a new press, the file that moved up is next; past the end, nothing goes.
        STEP("buttonRemove Selected", {Yes(removeFile)}, "listAudioFiles=");
        STEP("buttonRemove Selected", {Yes(removeFile)}, "");
        STEP("drop x/3.wv", {}, "listAudioFiles=~/x/3.wv");
        STEP("row 1", {}, ""); // below the rows
    }

    void keys_data()
    {
        // What opens: the first entry of a menu and the row at it, or a question.
        AddRows({"files", "keys", "opens", "selects"},
                {{"the only row, Down", "in/0.mp3", "Down", "", "0"},
                 {"the only row, End", "in/0.mp3", "End", "", "0"},
                 {"Ctrl and Space keep it", "in", "End Ctrl+Space", "", "2"},
                 {"the menu of the second row", "in", "Down Down Menu", "Edit Tags 1", "1"},
                 {"the menu of the last row", "in", "End Shift+F10", "Edit Tags 2", "2"},
                 {"nothing without a row", "in", "Menu Shift+F10 Del", "", "-1"},
                 {"the menu belongs to the list", "in", "Down Tab Menu Shift+F10", "", "0"},
                 {"the first Down makes it current", "in", "Down Del", removeFile, "-1"},
                 {"Del asks, and no key goes on", "in", "Down Down Del Down", removeFile, "1"},
                 {"the menu bar", "", "F10", "New -1", "-1"}});
    }
    void keys()
    {
        QFETCH(QString, files);
        QFETCH(QString, keys);
        QFETCH(QString, opens);
        Put("bare.mp3", "in/0.mp3|in/1.mp3|in/2.mp3");
        DO("drop " + files);
        QCursor::setPos(0, 0); // the pointer has no say
        const Answer look = [&](QWidget* shown) {
            const auto* const menu = qobject_cast<QMenu*>(shown);
            const int at = List().row(List().itemAt(List().viewport()->mapFromGlobal(shown->pos())));
            QTEST(menu ? menu->actions().first()->text() + ' ' + QString::number(at)
                       : shown->property("text").toString(),
                  "opens");
            QTest::keyClick(shown, menu ? Qt::Key_Escape : Qt::Key_Return);
        };
        DO("keys " + keys, opens.isEmpty() ? QList<Answer>() : QList<Answer>{look});
        QTEST(QString::number(List().row(List().selectedItems().value(0))), "selects");
    }

    void takesPathsFromOutside()
    {
        for (const char* edit : {"editOutputFolder", "editOutputPreview"})
            QVERIFY2(!Child<QLineEdit>(*window, edit)->acceptDrops(), edit);
        connect(static_cast<NativeLookingApplication*>(qApp), &NativeLookingApplication::OpenRequested, window.get(),
                &MainWindow::OpenPaths);
        Put("full.mp3", "in/1.mp3|2\\.mp3");
        PutBytes(Home("p.ovp"), "");
        DO("focus editOutputFolder");
        STEP("open missing.mp3|/dev/null|2\\.mp3|in", {}, "listAudioFiles=~/in/1.mp3|~/2\\.mp3; Updating 50%");
        STEP("open p.ovp|2\\.mp3", {}, "Updating 50%"); // a profile among files
        STEP("open p.ovp", {},
             "title=Orvanto - p; comboOrganizeBy=Don't organize; comboRename=Original name; editOutputFolder=; "
             "checkOnlyEditInvalid=false (off)");
        STEP("open missing.ovp", {Warning("Could not load profile.")}, "");
        QCOMPARE(Focus(), QString("editOutputFolder"));
        DO("open p.ovp; checkDeleteOriginal"); // from here on, changes are marked again
        STEP("open p.ovp", {No(loseSettings)}, "");
    }

    void keepsSettingsInProfiles()
    {
        const QString folder = "Documents/Orvanto/Profiles", profile = "Documents/my.set.ovp";
        Child<QProgressBar>(*window, "progressOrganize")->setValue(50);
        STEP("actionNew", {}, "[OutputFolderPath]=~/Music; progressOrganize=0% (off)");
        STEP("wheel comboRename", {}, ""); // without the focus, the wheel was meant for something else
        STEP("focus comboRename; wheel comboRename", {}, "title=Orvanto*; comboRename=Artist-Title (Year)");
        Put("full.mp3", "x/1.mp3");
        DO("drop x/1.mp3; press 0; comboOrganizeBy 1");
        STEP("actionSave_Profile", {Files("Save profile", profile, folder)},
             "title=Orvanto - my.set; ~/Documents=my.set.ovp");
        const auto change = [this](int line, const char* act, const QString& changes,
                                   const QList<Answer>& answers = {}) {
            Step(line, act, answers, "title=Orvanto - my.set*; " + changes);
            Step(line, "actionSave_Profile", {}, "title=Orvanto - my.set");
        };
        const QString scheme = "[Track] [Artist]-[Title] ([Album], [Year], [Genre])";
        const Answer cancels =
            Shows("title=Custom Rename; ring=Rename scheme|OK|Cancel; buttonOK=OK; buttonCancel=Cancel; "
                  "editRenameScheme=" +
                      scheme + "; focus=editRenameScheme|" + scheme,
                  Fill("editRenameScheme [Title].; buttonCancel"));
        change(__LINE__, "comboOrganizeBy 10",
               "comboOrganizeBy=Genre/Artist/Album; editOutputPreview=~/Music/G/A/L/A-T (1999).mp3");
        change(__LINE__, "comboRename 6", "comboRename=Custom; editOutputPreview=~/Music/G/A/L/7 A-T (L, 1999, G).mp3",
               {cancels});
        QApplication::clipboard()->setText("[Title]\r\n [x]\n");
        change(__LINE__, "comboRename 6", "editOutputPreview=~/Music/G/A/L/T [x].mp3",
               {Fill("focus editRenameScheme; keys Ctrl+A Ctrl+V; buttonOK")});
        change(__LINE__, "editOutputFolder C:\\a=b\\",
               "editOutputFolder=C:\\a=b\\; [OutputFolderPath]=C:/a=b/; editOutputPreview=C:/a=b/G/A/L/T [x].mp3");
        QApplication::clipboard()->setText("/p\r\n/q\n");
        change(__LINE__, "focus editOutputFolder; keys Ctrl+A Ctrl+V Home Ctrl+V Backspace",
               "editOutputFolder=/p//p/q; [OutputFolderPath]=/p//p/q; editOutputPreview=/p/p/q/G/A/L/T [x].mp3");
        change(__LINE__, "buttonBrowseOutFold",
               "editOutputFolder=~/x; [OutputFolderPath]=~/x; editOutputPreview=~/x/G/A/L/T [x].mp3",
               {Files("Select folder", "x")});
        change(__LINE__, "buttonBrowseOutFold", "", {Files("Select folder", {}, "x")});
        const QString outputs =
            "comboOrganizeBy=Genre/Artist/Album; comboRename=Custom; editOutputFolder=~/x; "
            "buttonBrowseOutFold=Browse; checkDeleteOriginal=false; editOutputPreview=~/x/G/A/L/T [x].mp3; ";
        change(__LINE__, "checkSkipOrganize", QString(outputs).replace("; ", " (off); ") + "checkSkipOrganize=true");
        change(__LINE__, "checkSkipOrganize", outputs + "checkSkipOrganize=false");
        change(__LINE__, "radioFixMan", "radioFixAuto=false; radioFixMan=true; checkOnlyEditInvalid=true");
        change(__LINE__, "checkDeleteOriginal", "checkDeleteOriginal=true");
        change(__LINE__, "checkOnlyEditInvalid", "checkOnlyEditInvalid=false");
        STEP("actionNew", {No(overwrite)}, "");
        STEP("actionNew", {Yes(overwrite)},
             "title=Orvanto; comboOrganizeBy=Artist; comboRename=Artist-Title; radioFixAuto=true; radioFixMan=false; "
             "checkOnlyEditInvalid=true (off); checkDeleteOriginal=false; " +
                 cleared + "~/x/A/A-T.mp3");
        QCOMPARE(Focus(), QString("radioFixAuto")); // its neighbour takes no input any more
        STEP("actionSave_Profile_As", {Files("Save profile", "Documents/n.ovp", folder)},
             "title=Orvanto - n; ~/Documents=my.set.ovp|n.ovp");
        DO("comboOrganizeBy 4");
        STEP("actionLoad_Profile", {Yes(loseSettings), Files("Load profile", profile, folder)},
             "title=Orvanto - my.set; radioFixAuto=false; radioFixMan=true; checkOnlyEditInvalid=false; "
             "checkDeleteOriginal=true; comboOrganizeBy=Genre/Artist/Album; comboRename=Custom; "
             "editOutputPreview=~/x/G/A/L/T [x].mp3");
        // One that cannot be written is tried again, and saved into.
        DO("checkDeleteOriginal");
        QVERIFY(QFile::remove(Home(profile)) && QDir().mkdir(Home(profile)));
        STEP("actionSave_Profile", {Warning("Could not save profile.")}, "");
        QVERIFY(QDir().rmdir(Home(profile)));
        STEP("actionSave_Profile", {}, "title=Orvanto - my.set; ~/Documents=my.set.ovp|n.ovp");
        QVERIFY(Bytes(Home(profile)).endsWith("\ndeleteOriginal=0\n"));

        // After a dialog that was cancelled, changes are not marked until a profile is loaded.
        STEP("actionLoad_Profile", {Files("Load profile", {}, folder)}, "");
        STEP("radioFixAuto", {}, "radioFixAuto=true; radioFixMan=false; checkOnlyEditInvalid=false (off)");
        // Indices outside the tables are kept and harm nobody, and a custom scheme is not asked for.
        PutBytes(Home(profile), "o=99\nr=6\n=[Title]\n1\n2\n\n=/o=\r\n1");
        DO("focus editOutputFolder");
        STEP("actionLoad_Profile", {Files("Load profile", profile)},
             "comboOrganizeBy= (off); comboRename=Custom (off); checkSkipOrganize=true; editOutputFolder=/o=\r (off); "
             "checkDeleteOriginal=true (off); buttonBrowseOutFold=Browse (off); editOutputPreview=/o=\r/T.mp3 (off); "
             "radioFixAuto=false; radioFixMan=true; checkOnlyEditInvalid=false");
        QCOMPARE(Focus(), QString("checkSkipOrganize"));
    }

    void editsTags()
    {
        const QString first = Home("x/1<i>.mp3");
        Put("full.mp3", "x/1<i>.mp3|late/l.mp3"); // no markup
        Put("bare.spx", "x/0.spx");
        Put("bare.wav", "x/a.wav|x/b.wav|x/c.wav|x/d.wav|x/e.wav|x/f.wav|x/g.wav|x/h.wav");
        DO("drop x; press 1");
        const QString one = "title=Edit Tags; ring=Online Tag Search|Artist|Title|Album|Year|Genre|Track|OK|Cancel|"
                            "Play in iTunes; fileLabel=Audio file:; textFilePath=~/x/1<i>.mp3; buttonPlay=Play in "
                            "iTunes; buttonOnlineSearch=Online Tag Search; buttonOK=OK; buttonAbort=Cancel; "
                            "editArtist=A; editTitle=T; editAlbum=L; editYear=1999; editGenre=G; editTrack=7; "
                            "focus=editArtist|A";
        STEP("row 1 Edit Tags", {Shows(one, Fill("editTitle New; buttonAbort"))}, "");
        const QString texts =
            "editArtist Ann; editTitle New; editAlbum LP ; editYear MCM; editGenre Pop; editTrack 8; buttonOK";
        STEP("row 1 Edit Tags", {Fill(texts)},
             "editOutputPreview=~/Music/Ann/Ann-New.mp3; textInfo=Artist: Ann|Title: New|Album: LP |Year: MCM|Genre: "
             "Pop|Track: 8");

        const Answer fill =
            Shows("title=Batch Edit Tags; ring=Artist|Title|Album|Year|Genre|Track|OK|Cancel; actionLabel=Edit the "
                  "tags of all the files in the list:; buttonOK=OK; buttonAbort=Cancel; editArtist=[Original]; "
                  "editTitle=[Original]; editAlbum=[Original]; editYear=[Original]; editGenre=[Original]; "
                  "editTrack=[Original]; focus=editArtist|[Original]",
                  Fill("editGenre; editArtist All; buttonOK"));
        STEP("row 1 Batch Edit Tags", {Fill("editArtist All; buttonAbort")}, "");
        STEP("row 1 Batch Edit Tags", {fill, No(applyTags)}, "");
        const auto middle = [&] { return Artist(first) == "All"; }; // of the change: the window takes nothing
        const auto drop = Once(middle, [this] {
            DropOn(*window, Paths("late"));
            Click(*window, "checkSkipOrganize");
        });
        STEP("row 1 Batch Edit Tags", {fill, Yes(applyTags)},
             "editOutputPreview=~/Music/All/All-New.mp3; textInfo=Artist: All|Title: New|Album: LP |Year: MCM|Genre: "
             "|Track: 8; Writing 10% 20% 30% 40% 50% 60% 70% 80% 90% 100%");
        QVERIFY(!drop->isActive());
    }

    void runs()
    {
        const QString path = PutSample("bare.mp3", Home("in/Ann - Song.mp3"));
        TagManager().WriteFile({"", "", "", "", "www.spam.com", "", path}); // is erased before the editor shows it
        Put("full.mp3", "late/l.mp3");
        Put("full.ogg", "in/z.ogg");
        DO("drop in/Ann - Song.mp3|in/z.ogg; editOutputFolder " + Home("out/"));

        const QString every =
            "title=Edit Tags; ring=Online Tag Search|Artist|Title|Album|Year|Genre|Track|OK|Skip|Abort|Play in iTunes; "
            "buttonOnlineSearch=Online Tag Search; buttonPlay=Play in iTunes; buttonOK=OK; buttonSkip=Skip; "
            "buttonAbort=Abort; fileLabel=Audio file:; ";
        const QString song = "textFilePath=~/in/Ann - Song.mp3; editAlbum=; editYear=0; editGenre=; editTrack=0; ";
        const QString whole =
            "textFilePath=~/in/z.ogg; editArtist=A; editTitle=T; editAlbum=L; editYear=1999; editGenre=G; editTrack=7; "
            "focus=editArtist|A";
        const QString repaired =
            song + "editArtist=Ann; editTitle= Song; focus=editAlbum|; " +
            QString(every).replace("Audio file:", "The following file has incomplete/invalid tags:; actionLabel=Please "
                                                  "edit the incomplete/invalid tags.");
        const QString busy =
            "listAudioFiles=~/in/Ann - Song.mp3|>~/in/z.ogg (off); buttonOrganize=Start       (off); buttonAdd=Add "
            "(off); buttonRemove=Remove (off); progressOrganize=0%; textProgress=Processing...";
        const QString idle = "listAudioFiles=~/in/Ann - Song.mp3|~/in/z.ogg; buttonOrganize=Start      ; "
                             "buttonAdd=Add; buttonRemove=Remove; progressOrganize=0% (off); textProgress=; " +
                             cleared + "; Updating 50%; ";
        const auto asks = [this](const QString& shown, const QString& changes, const Answer& then) {
            return Shows(shown, [=](QWidget* editor) {
                Look(changes);
                DropOn(*window, Paths("late")); // adds nothing during a run
                then(editor);
            });
        };
        const auto run = [&](int line, const QList<Answer>& answers, const QString& changes, const QString& info) {
            QDir(Home("out")).removeRecursively();
            Do(line, "press 1");
            Step(line, "buttonOrganize", answers, idle + changes);
            Do(line, "press 0");
            DemandSeen(Now().filter("textInfo"), info); // as it is in the file
        };
        const QString copied = "Processing 50% 100%; ~/out=", ogg = "A/A-T.ogg";
        const auto click = Once([this] { return Status().startsWith("Erasing"); }, // which takes no clicks
                                [this] { Click(*window, "checkDeleteOriginal"); });
        // An erased tag is in the file even if nothing else happens.
        DO("radioFixMan; checkOnlyEditInvalid");
        const QString untagged = every + song + "editArtist=; editTitle=; focus=editArtist|";
        run(__LINE__, {asks(untagged, busy, Fill("editArtist Lost; buttonAbort")), Success(), CloseSocial()},
            "~/Documents=Orvanto/Orvanto.log", bareInfo);
        // Each file is asked about; what is skipped without artist and title is not copied.
        run(__LINE__,
            {asks(untagged, busy, Fill("editArtist Lost; buttonSkip")), asks(every + whole, "", Fill("close")),
             Warning("Could not copy the following:\n\n" + path + '\n' + advice, "Log"), CloseSocial()},
            copied + ogg, bareInfo);
        DO("checkOnlyEditInvalid; radioFixAuto");
        OpenSettings().setValue("SkipSocial", 1);
        run(__LINE__, {asks(repaired, busy, Fill("editArtist New; buttonOK")), Success()},
            copied + ogg + "|New/New- Song.mp3", "textInfo=Artist: New|Title:  Song|Album: |Year: 0|Genre: |Track: 0");
    }

    void reportsRuns()
    {
        STEP("actionShow_Log",
             {Warning("Could not open log. The log file will be created after the first processing session.")}, "");
        Put("full.mp3", "in/1.mp3|in/An Unknown é.mp3");
        DO("drop in/1.mp3; comboOrganizeBy 0; editOutputFolder " + Home("out"));
        const qint64 start = QDateTime::currentSecsSinceEpoch();
        STEP("buttonOrganize", {Success(), CloseSocial()},
             "~/Documents=Orvanto/Orvanto.log; ~/out=A-T.mp3; Processing 100%");
        STEP("buttonOrganize",
             {Success(), Shows("title=Give Us a Like; ring=Facebook|Google+; buttonFacebook=; buttonGoogle=",
                               Fill("buttonFacebook; buttonGoogle; close"))},
             "[SkipSocial]=1; Processing 100%; opened=http://www.facebook.example/orvanto; "
             "opened=http://plus.google.example/orvanto");
        DO("comboRename 0; drop in/An Unknown é.mp3");
        QString report = "Could not copy the following:\n\n" + Home("in/An Unknown é.mp3") + "\n";
        STEP("buttonOrganize", {Warning(report + advice, "Log")}, "~/out=1.mp3|A-T.mp3; Processing 50%; Updating 50%");

        const QString path = Home("Documents/Orvanto/Orvanto.log"), dashes = QString(62, '-') + '|';
        QString log = QString::fromUtf8(Bytes(path)).replace('\n', '|');
        const QString time = log.section('|', 1, 1);
        const qint64 logged = QDateTime::fromString(time, "dd.MM.yyyy hh:mm:ss").toSecsSinceEpoch();
        QVERIFY2(qAbs(logged - start) < 60, qPrintable(time));
        log.replace(QRegularExpression("\\|\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d:\\d\\d\\|"), "|TIME|");
        const QString done = dashes + "TIME||Operation finished successfully!|" + dashes + '|';
        QCOMPARE(log, done + done + dashes + "TIME||" + QString(report).replace('\n', '|') + dashes + '|');
        STEP("actionShow_Log", {}, "opened=file://~/Documents/Orvanto/Orvanto.log");

        QString more = "in/Unknown 1.mp3";
        for (int i = 2; i < 10; ++i)
            more += QString("|in/Unknown %1.mp3").arg(i);
        const auto scrolls = [&](QWidget* box) {
            auto& text = *box->findChild<QPlainTextEdit*>();
            DemandSame("text", text.toPlainText(), report + advice);
            QTest::keyClick(&text, Qt::Key_End, Qt::ControlModifier);
            Demand(text.textCursor().atEnd(), "the caret does not move");
            Demand(!Child<QLabel>(*box, "qt_msgbox_label")->isVisible(), "the text is there twice");
            DemandSeen(Visible(*box).filter(QRegularExpression("^(ring|unreadable)=")), "ring=OK|Report");
            QTest::keyClick(box, Qt::Key_Return);
        };
        for (const QString& names : {"in/Unknown " + QString(200, 'x') + ".mp3", more}) { // too wide, and too high
            Put("full.mp3", names);
            report += Paths(names).join('\n') + '\n';
            DO("drop " + names);
            DO("buttonOrganize", {Dialog("Log", scrolls)});
        }
        window->move(-500, 300);                            // partly off the screen
        QVERIFY(QFile::remove(path) && QDir().mkdir(path)); // a folder in its place
        DO("buttonOrganize", {Warning("Could not save log.")});
    }

    void deletesOriginals()
    {
        OpenSettings().setValue("SkipSocial", 1);
        Put("full.mp3", "in/1.mp3|in/2.mp3");
        DO("comboRename 0; comboOrganizeBy 0; checkDeleteOriginal; checkSkipOrganize; drop in");
        STEP("buttonOrganize", {Success()}, "~/Documents=Orvanto/Orvanto.log; Processing 100%; Updating 50%");
        DO("checkSkipOrganize; editOutputFolder " + Home("in//")); // they are their own copies
        STEP("buttonOrganize", {No(deleteOriginals)}, "");
        STEP("buttonOrganize", {Yes(deleteOriginals), Success()}, "listAudioFiles=; Processing 50% 100%");
        DO("drop in; editOutputFolder " + Home("out"));
        STEP("buttonOrganize", {Yes(deleteOriginals), Success()},
             "listAudioFiles=; ~/in=; ~/out=1.mp3|2.mp3; Processing 50% 100%");
    }

    void asksBeforeItEnds()
    {
        DO("checkDeleteOriginal");
        ENDS("close", {Unsaved(QMessageBox::Escape)}, false);
        LOOK("");
        ENDS("close", {Unsaved(QMessageBox::No)});
        window->show();
        ENDS("close", {Unsaved(QMessageBox::Yes), Files("Save profile")}); // cancelling that does not keep us
        LOOK("title=Orvanto* (closed)");
        window->showMinimized(); // its dialogs come up all the same
        ENDS("actionExit", {Unsaved(QMessageBox::Yes), Files("Save profile", "Documents/p.ovp")});
        LOOK("title=Orvanto - p (closed); ~/Documents=p.ovp");
        ENDS("close", {});
    }

    void stopsInTheMiddle()
    {
        PutHundred();
        QVERIFY(QDir().mkpath(Home("empty/sub")));
        int turns = 0;

        auto escape = EscapeOnce([this] { return IsAdding(); });
        STEP("drop empty|in/1.spx", {Stop(QMessageBox::Yes)}, ""); // while folders are read
        escape = EscapeOnce([&] { return IsAdding() && ++turns > 20; });
        DO("drop in", {Stop(QMessageBox::Yes)});
        QVERIFY(List().count() > 0 && List().count() < 100);
        escape = EscapeOnce([this] { return IsAdding(); });
        DO("drop in", {Stop(QMessageBox::No)});
        QCOMPARE(List().count(), 100);

        const auto edit = [&](int line, const char* typed, QMessageBox::StandardButton answer, const char* last) {
            escape = EscapeOnce([=] { return ArtistAt(0) == typed; });
            Do(line, "row 0 Batch Edit Tags",
               {Fill("editArtist " + QString(typed) + "; buttonOK"), Yes(applyTags), Stop(answer)});
            DemandSame("the artist of the last file", ArtistAt(99), QString(last));
            Do(line, "keys End");
            DemandSame("the artist in the list", Now().filter("textInfo=Artist: " + QString(last)).size(), 1);
        };
        DO("press 0");
        TELL(edit(__LINE__, "www.1", QMessageBox::No, "www.1"));
        TELL(edit(__LINE__, "www.2", QMessageBox::Yes, "www.1"));

        DO("comboRename 0; comboOrganizeBy 0; editOutputFolder " + Home("out"));
        escape = EscapeOnce([=] { return ArtistAt(50).isEmpty(); });
        const auto escapeAgain = EscapeOnce([this] { return IsAdding(); }); // what was not read again stays listed
        DO("buttonOrganize", {Stop(QMessageBox::Yes), Information("Operation stopped."), Stop(QMessageBox::Yes)});
        QCOMPARE(List().count(), 100);
        QCOMPARE(ArtistAt(99), QString("www.1"));
        QVERIFY(!QFile::exists(Home("out")));
    }

    void stopsInOneFile()
    {
        const QByteArray sound = SampleBytes("bare.mp3").repeated(10000);
        PutBytes(Home("in/1.mp3"), sound);
        DO("drop in; press 0");
        const auto escape = EscapeOnce([] { return FilesBelow(Home("in")).size() > 1; });
        DO("row 0 Batch Edit Tags", {Fill("editArtist New; buttonOK"), Yes(applyTags), Stop(QMessageBox::Yes)});
        QVERIFY(Bytes(Home("in/1.mp3")) == sound);
        DemandSeen(Now().filter("textInfo"), bareInfo); // as it is in the file
    }

    void stopsRuns()
    {
        OpenSettings().setValue("SkipSocial", 1);
        auto* const bar = QAccessible::queryAccessibleInterface(Child<QProgressBar>(*window, "progressOrganize"));
        QCOMPARE(bar->text(QAccessible::Description), QString("Escape stops"));
        Put("full.mp3", "in/1.mp3");
        Put("bare.mp3", "in/2.mp3|in/3.mp3");
        // Asked manually, the worker changes no file before it waits for the tag editor.
        DO("radioFixMan; drop in; comboRename 0; comboOrganizeBy 0; editOutputFolder " + Home("out"));
        const Answer loses = [this](QWidget* question) {
            QVERIFY(QFile::remove(Home("in/2.mp3")));
            Stop(QMessageBox::Yes)(question);
        };
        EscapeAtStart();
        DO("buttonOrganize", {loses, Information("Operation stopped.")});
        QVERIFY(!QFile::exists(Home("out")));
        QCOMPARE(List().count(), 2); // the files that are still there
        // The tag editor waits for the answer.
        EscapeAtStart();
        const QString tags = "editArtist A; editTitle T; editAlbum L; editYear 1; editGenre G; editTrack 2; ";
        DO("buttonOrganize", {Stop(QMessageBox::No), Fill(tags + "buttonOK"), Success()});
        QCOMPARE(FilesBelow(Home("out")).size(), 2);
        // A run that ends first takes the question with it.
        QDir(Home("out")).removeRecursively();
        bool closed = false;
        EscapeAtStart(&closed);
        Click(*window, "buttonOrganize");
        QVERIFY(QTest::qWaitFor([&] { return closed; }));
        QCOMPARE(FilesBelow(Home("out")).size(), 2);
        Answers({Success()}).Finish();
    }

    void endsInTheMiddle()
    {
        PutHundred();
        for (const int turn : {1, 5, 50}) { // while the folder is being looked through, or its files read
            int turns = 0;
            const auto close = Once([&] { return IsAdding() && ++turns == turn; }, [&] { window->close(); });
            ENDS("drop in", {});
            QVERIFY2(List().count() < turn, qPrintable(QString::number(List().count())));
            Open();
        }
        const auto stops = [&](int line, const QString& acts, int row, const char* until,
                               const QList<Answer>& answers) {
            Do(line, "drop in; press 0; " + acts.section("; ", 0, -2));
            const auto middle = [&] { return ArtistAt(row) == until; };
            const auto close = Once(middle, [&] { window->close(); });
            Ends(line, acts.section("; ", -1), answers);
            DemandSame("the artist of the last file", ArtistAt(99), QString("www."));
        };
        TELL(stops(__LINE__, "comboOrganizeBy 1; row 0 Batch Edit Tags", 0, "All",
                   {Fill("editArtist All; buttonOK"), Yes(applyTags), Unsaved(QMessageBox::No)}));
        Open();
        TELL(stops(__LINE__, "press 0; buttonOrganize", 9, "", {}));
        Open();
        DO("drop in/0.spx");
        const Answer leaves = [this](QWidget*) { Child<QAction>(*window, "actionExit")->trigger(); };
        ENDS("buttonOrganize", {leaves});
        // The desktop may end the program while it asks whether to stop.
        Open();
        const auto escape = EscapeOnce([this] { return IsAdding(); });
        ENDS("drop in", {leaves});
        Open();
        DO("drop in");
        EscapeAtStart();
        ENDS("buttonOrganize", {leaves});
    }

    void opensPagesAndPrograms()
    {
        const QString name = "x/50% #1? é \"x\".[2].mp3";
        Put("full.mp3", name);
        DO("drop " + name + "; press 0");
        const QStringList hosts{"discogs.com", "allmusic.com"};
        // Digits and separators go, and nothing is escaped: what follows "#" is the browser's affair.
        STEP("row 0 Edit Tags",
             {Fill("buttonPlay; buttonOnlineSearch; buttonOnlineSearch; close"), Entry(hosts, hosts.first()),
              Entry(hosts, hosts.last())},
             "opened=file://~/x/50%25%20%231%3F%20%C3%A9%20%22x%22.[2].mp3; "
             "opened=http://www.discogs.com/search/?q=%25+#?+%C3%A9+%22x%22+++; "
             "opened=http://www.allmusic.com/search/all/%25+#?+%C3%A9+%22x%22+++");
        STEP("actionOnline_Help", {}, "opened=http://www.orvanto.example/help-mac.html");
        STEP("actionVideo_Tutorial", {}, "opened=http://www.orvanto.example/feature.html");
        STEP("actionOnline_Support", {}, "opened=http://www.orvanto.example/contact.html");
        STEP("actionVisit_Our_Website", {}, "opened=http://www.orvanto.example");
        STEP("actionAbout", {Shows("title=About Us; ring=; textVersion=Orvanto Version 2.1.0", Fill("label_2; close"))},
             "opened=http://www.orvanto.example");
    }
};

ORVANTO_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
