#include "app/MainWindow.h"
#include "app/NativeLookingApplication.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "files/FilePath.h"
#include "naming/ProfileText.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QListWidget>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QRandomGenerator>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTextStream>

#include <csignal>
#include <sys/resource.h>

/// Tries at length what must never happen to anybody's music. Each property is shown from outside: real programs run
/// on real files, in children that may be killed, and what is left on disk is compared with what was there.

using Wishes = QMap<QString, QString>;

namespace
{
void Say(const QString& line)
{
    QTextStream(stdout) << QString(line).replace('\n', '|') << '\n';
}

void Put(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(FolderOf(path));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot make %s", qPrintable(path));
}

QByteArray Sample(const char* name, const QString& extension)
{
    return Bytes(QStringLiteral(TEST_DATA_DIR "/") + name + extension);
}

/// The audio of a sample, which no tag edit may touch: the longer of what the tagged and the untagged file share behind
/// their first header, which holds the length of the file in some types, and before their end.
QByteArray Audio(const QString& extension)
{
    constexpr int header = 12;
    const QByteArray bare = Sample("bare.", extension).mid(header);
    const QByteArray full = Sample("full.", extension).mid(header);
    const auto front = std::mismatch(bare.begin(), bare.end(), full.begin(), full.end()).first - bare.begin();
    const auto back = std::mismatch(bare.rbegin(), bare.rend(), full.rbegin(), full.rend()).first - bare.rbegin();
    return front > back ? bare.left(static_cast<int>(front)) : bare.right(static_cast<int>(back));
}

constexpr int idSize = 4;

/// Makes a tagged file whose audio is like no other's: its number replaces some bytes in the middle.
void PutPiece(const QString& path, int id, SAudioFile tags)
{
    const QByteArray audio = Audio(ExtensionOf(path));
    QByteArray file = Sample("full.", ExtensionOf(path));
    const int begin = file.indexOf(audio);
    if (begin < 0 || audio.size() < 200)
        qFatal("no audio in the sample for %s", qPrintable(path));
    Put(path, file.replace(begin + audio.size() / 2, idSize, QByteArray::number(id).rightJustified(idSize, '0')));
    tags.Path = path;
    TagManager().WriteFile(tags);
}

/// The number of the piece of music in @p path; -1 unless its audio is whole.
int PieceIn(const QString& path)
{
    const QByteArray audio = Audio(ExtensionOf(path));
    const QByteArray file = Bytes(path);
    const int half = audio.size() / 2;
    const int begin = file.indexOf(audio.left(half));
    const bool whole = !audio.isEmpty() && begin >= 0 &&
                       file.mid(begin + half + idSize, audio.size() - half - idSize) == audio.mid(half + idSize);
    return whole ? file.mid(begin + half, idSize).toInt() : -1;
}

/// Everything of a file that a copy has to keep.
QByteArray State(const QString& path)
{
    const QFileInfo file(path);
    return Bytes(path) + QByteArray::number(file.lastModified().toMSecsSinceEpoch()) +
           QByteArray::number(static_cast<int>(file.permissions()));
}
} // namespace

/// The program in a child process, with a user who adds a folder, starts one thing, answers every dialog, and at one
/// chosen stage leaves or lets something happen to the files.
class User : public QObject
{
    Q_OBJECT

public:
    explicit User(const Wishes& what)
        : wishes(what), window(nullptr), list(Child<QListWidget>(window, "listAudioFiles"))
    {
        QTimer::singleShot(0, this, &User::Begin);
        connect(&timer, &QTimer::timeout, this, &User::Tick);
    }

private:
    const Wishes wishes;
    MainWindow window;
    QListWidget* const list;
    QTimer timer;
    QString first; ///< the file that would be deleted first
    int ticks = 0; ///< spent at the stage that is waited for
    bool acted = false;
    bool leaving = false;
    bool listed = false;
    bool started = false;

    void Begin()
    {
        window.show();
        {
            Answers dialogs({Files("Load profile", {wishes["profile"]})});
            Child<QAction>(window, "actionLoad_Profile")->trigger();
            dialogs.Finish();
        }
        Say("started");
        timer.start(0);
        DropOn(window, {wishes["add"]});
        Say(QString("listed %1").arg(list->count()));
        listed = true;
        first = list->count() ? list->item(0)->text() : QString();
        Reach("listed");
        if (leaving)
            return;
        if (list->count())
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        const QString slot = wishes.value("call");
        if (slot.isEmpty())
            Click(window, "buttonOrganize");
        else if (!QMetaObject::invokeMethod(&window, qPrintable(slot)))
            qFatal("no slot %s", qPrintable(slot));
        started = true;
    }

    QString Stage() const
    {
        if (const QWidget* const shown = QApplication::activeModalWidget()) {
            const auto* const box = qobject_cast<const QMessageBox*>(shown);
            return box ? box->text() : shown->windowTitle();
        }
        const QString text = Child<QLabel>(window, "textProgress")->text();
        if (text.startsWith("Updating"))
            return listed ? "rebuilding" : "adding";
        if (text != "Processing...")
            return text.startsWith("Erasing") ? "erasing" : "";
        if (!QFile::exists(first))
            return "deleting";
        return Child<QProgressBar>(window, "progressOrganize")->value() > 0 ? "copying" : "repairing";
    }

    void Reach(const QString& stage)
    {
        const QString awaited = wishes.value("at");
        if (acted || awaited.isEmpty() || !stage.startsWith(awaited) || ticks++ < wishes.value("after").toInt())
            return;
        acted = true;
        Say("reached");
        leaving = wishes.value("do") == "leave";
        if (leaving)
            Child<QAction>(window, "actionExit")->trigger();
        else if (QProcess::execute("sh", {"-c", wishes.value("do")}) != 0)
            qFatal("cannot %s", qPrintable(wishes.value("do")));
    }

    void Tick()
    {
        Reach(Stage());
        if (leaving)
            return;
        QWidget* const shown = QApplication::activeModalWidget();
        if (shown && shown->isVisible()) {
            Respond(shown);
        } else if (started && Child<QWidget>(window, "buttonOrganize")->isEnabled()) {
            Say("idle");
            leaving = true;
            QCoreApplication::quit();
        }
    }

    void Respond(QWidget* shown) const
    {
        if (auto* const box = qobject_cast<QMessageBox*>(shown)) {
            Say("shown " + box->text());
            QTest::mouseClick(box->defaultButton(), Qt::LeftButton);
        } else if (shown->windowTitle() != "Edit Tags") {
            shown->close();
        } else if (wishes.contains("abort")) {
            Click(*shown, "buttonAbort");
        } else {
            Type(*shown, "editYear", "1968");
            Click(*shown, "buttonOK");
        }
    }
};

/// The tries and what they have shown.
class Soak
{
public:
    explicit Soak(bool isShort) : brief(isShort) {}

    int tries = 0;
    QStringList failures;

    void FullDisk();
    void Killed();
    void Ended();
    void Hostile();
    void TwoThreads();
    void TrueCopies();
    void Mishaps();
    QString Keep()
    {
        folder.setAutoRemove(false);
        return folder.path();
    }

private:
    const bool brief;
    QTemporaryDir folder{QDir::tempPath() + "/orvanto-soak.XXXXXX"};
    QRandomGenerator random{20};
    const SAudioFile complete{"Tone", "Ann", "Found Tapes", "1968", "Folk", "3", {}};

    struct Outcome
    {
        bool exited = false;
        int code = -1;
        qint64 toEnd = 0;    ///< milliseconds since the list began to be filled
        qint64 toLeave = -1; ///< milliseconds since the wish to leave
        QString said;
        QString errors;
        bool Clean() const { return exited && code == 0 && errors.isEmpty(); }
        bool Complete() const { return Clean() && said.contains("idle"); } ///< with controls that work again
        QString Text() const
        {
            return QString(": code %1, left in %2 ms, said %3, errors %4").arg(code).arg(toLeave).arg(said, errors);
        }
    };

    void Check(bool ok, const QString& evidence)
    {
        if (!ok)
            failures += evidence;
    }
    QString At(const QString& name) const { return folder.path() + '/' + name; }
    void InHome(const QString& command) const
    {
        if (QProcess::execute("sh", {"-c", "cd '" + At("home") + "'; " + command}) != 0)
            qFatal("cannot %s", qPrintable(command));
    }

    /// Empties the home and starts a try in it.
    void NewTry()
    {
        ++tries;
        QDir(At("home")).removeRecursively();
        for (const char* name : {"home/Music", "home/Documents", "home/library", "home/out", "home/.config/Orvanto"})
            QDir().mkpath(At(name));
    }

    /// Runs this program as a child whose HOME is @p home; null for none.
    Outcome Start(const QStringList& arguments, qint64 killAfter = -1, const QString& home = "home") const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "HOME"})
            environment.remove(name);
        if (!home.isNull())
            environment.insert("HOME", home.isEmpty() ? home : At(home));
        environment.insert("XDG_RUNTIME_DIR", folder.path());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
        process.start(QCoreApplication::applicationFilePath(), arguments);
        Outcome outcome;
        QElapsedTimer clock, sinceStart, sinceLeave;
        clock.start();
        while (process.state() != QProcess::NotRunning && clock.elapsed() < 60000) {
            process.waitForReadyRead(20);
            outcome.said += QString::fromUtf8(process.readAllStandardOutput());
            if (!sinceStart.isValid() && outcome.said.contains("started")) {
                sinceStart.start();
                if (killAfter >= 0) {
                    QThread::usleep(static_cast<unsigned long>(killAfter));
                    process.kill();
                }
            }
            if (!sinceLeave.isValid() && outcome.said.contains("reached"))
                sinceLeave.start();
        }
        outcome.toEnd = sinceStart.isValid() ? sinceStart.elapsed() : 0;
        outcome.toLeave = sinceLeave.isValid() ? sinceLeave.elapsed() : -1;
        process.kill();
        process.waitForFinished();
        outcome.said += QString::fromUtf8(process.readAllStandardOutput());
        outcome.said.replace('\n', " / ");
        // What Qt says of the platform without a screen is no fault of the program.
        const QStringList errors = QString::fromLocal8Bit(process.readAllStandardError()).split('\n');
        for (const QString& line : errors) {
            if (!line.isEmpty() && !line.startsWith("This plugin does not support"))
                outcome.errors += line + '|';
        }
        outcome.exited = process.exitStatus() == QProcess::NormalExit;
        outcome.code = process.exitCode();
        return outcome;
    }

    /// Lets the user organise home/library with these settings.
    Outcome Run(const SRunSettings& settings, Wishes wishes = {}, qint64 killAfter = -1,
                const QString& home = "home") const
    {
        Put(At("p.ovp"), ProfileText(settings));
        wishes["add"] = At("home/library");
        wishes["profile"] = At("p.ovp");
        QStringList arguments{"child"};
        for (auto wish = wishes.begin(); wish != wishes.end(); ++wish)
            arguments += wish.key() + '=' + wish.value();
        return Start(arguments, killAfter, home);
    }

    SRunSettings OrganiseInto(const QString& output, int organizeBy = 1, int rename = 2, bool deletes = true) const
    {
        return {organizeBy, rename, "[Track] [Title]", false, false, true, output, deletes};
    }

    QString Name(int id) const
    {
        return At(QString("home/library/Ann %1-Song %1.%2").arg(id).arg(AudioExtensions().at(id % 10)));
    }

    /// A library of the ten types, of which some files need erasing and repairing.
    void FillLibrary(int count, bool asks = false) const
    {
        for (int id = 0; id < count; ++id) {
            SAudioFile tags = complete;
            tags.Artist = id % 3 ? "" : "Ann";
            tags.Title = id % 2 ? "www.tone.com" : "Tone " + QString::number(id);
            tags.Year = asks && id % 4 == 0 ? "0" : "1968";
            PutPiece(Name(id), id, tags);
        }
    }

    /// Fails unless each of the first @p count pieces is whole in some file below one of these folders.
    void CheckNothingLost(int count, const QStringList& folders, const QString& where, QSet<int> gone = {})
    {
        for (const QString& place : folders) {
            for (const QString& path : FilesBelow(place))
                gone.insert(PieceIn(path));
        }
        for (int id = 0; id < count; ++id)
            Check(gone.contains(id), where + ": lost " + Name(id));
    }
};

void Soak::FullDisk()
{
    const QString disk = qEnvironmentVariable("ORVANTO_SOAK_DISK");
    const auto leave = [&disk](qint64 room) {
        const qint64 surplus = QStorageInfo(disk).bytesAvailable() - room;
        Put(disk + "/filler", QByteArray(static_cast<int>(qMax<qint64>(surplus, 0)), 'x'));
    };
    signal(SIGXFSZ, SIG_IGN); // the writes that go too far shall fail instead
    for (const QString& extension : AudioExtensions()) {
        NewTry();
        const QString title(10000, 't');
        TagManager tags;
        tags.path = At("home/x." + extension);
        PutPiece(tags.path, tries, complete);
        const QByteArray before = Bytes(tags.path);
        tags.SetInfo(Tag::Title, title);
        const QByteArray after = Bytes(tags.path);
        Check(before != after, tags.path + " takes no tag on a roomy disk");

        const auto edit = [&](const QString& place, const std::function<void()>& restrict, bool fits) {
            ++tries;
            QFile::remove(disk + "/filler");
            QDir(place).removeRecursively();
            tags.path = place + "/x." + extension;
            Put(tags.path, before);
            restrict();
            tags.SetInfo(Tag::Title, title);
            const struct rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &none);
            const QByteArray now = Bytes(tags.path);
            Check(now == after || (now == before && !fits),
                  QString("%1 has %2 bytes, neither those before nor those meant").arg(tags.path).arg(now.size()));
            Check(FilesBelow(place).size() == 1, "left over: " + FilesBelow(place).join(' '));
        };
        for (const qint64 room : {0, 4096, 16384, 1 << 18, 6 << 20}) {
            if (!disk.isEmpty())
                edit(
                    disk + "/d", [&] { leave(room); }, room == 6 << 20);
        }
        for (const int growth : {-500, 0, 1, 2000, 9000, 20000, 40000}) {
            const struct rlimit limit = {static_cast<rlim_t>(before.size() + growth), RLIM_INFINITY};
            edit(
                At("home/d"), [&limit] { setrlimit(RLIMIT_FSIZE, &limit); }, growth == 40000);
        }
    }
    for (int i = 0; i < (brief ? 3 : 15) && !disk.isEmpty(); ++i) {
        NewTry();
        FillLibrary(20);
        const QString where = QString("run with %1 bytes left").arg(i * 5000);
        QFile::remove(disk + "/filler");
        QDir(disk + "/d").removeRecursively();
        QDir().mkpath(disk + "/d");
        leave(i * 5000);
        const Outcome outcome = Run(OrganiseInto(disk + "/d"));
        Check(outcome.Complete(), where + outcome.Text());
        CheckNothingLost(20, {At("home/library"), disk}, where);
        for (const QString& path : FilesBelow(disk + "/d"))
            Check(PieceIn(path) >= 0, where + ": partial " + path);
        for (const QString& path : FilesBelow(At("home/library")))
            Check(outcome.said.contains(path), where + ": not reported: " + path);
    }
    if (disk.isEmpty())
        Say("full disk: none could be mounted, only files are limited");
}

void Soak::Killed()
{
    constexpr int count = 60;
    NewTry();
    FillLibrary(count);
    InHome("cp -a library ../master");
    const Outcome whole = Run(OrganiseInto(At("home/out")));
    Check(whole.Complete(), "undisturbed" + whole.Text());
    QMap<int, QByteArray> copies;
    for (const QString& path : FilesBelow(At("home/out")))
        copies[PieceIn(path)] = Bytes(path);
    Check(copies.size() == count && !copies.contains(-1), QString("only %1 whole copies").arg(copies.size()));

    int early = 0;
    while (tries <= (brief ? 10 : 50)) {
        NewTry();
        InHome("rmdir library && cp -a ../master library");
        const int moment = random.bounded(static_cast<int>(whole.toEnd) * 900); // microseconds
        early += !Run(OrganiseInto(At("home/out")), {}, moment).exited;
        const QString where = QString("killed after %1 us").arg(moment);
        CheckNothingLost(count, {At("home/library"), At("home/out")}, where);
        for (const QString& path : FilesBelow(At("home/out")))
            Check(Bytes(path) == copies.value(PieceIn(path), "none"), where + ": wrong " + path);
        for (const QString& path : FilesBelow(At("home/library"))) {
            const int id = PieceIn(path);
            const SAudioFile file = TagManager().ReadFile(path);
            const QStringList titles{"www.tone.com", "", QString("Tone %1").arg(id), QString("Song %1").arg(id)};
            // What was being written is a hidden file whose name never joins a list.
            Check(path.contains("/.orvanto-") ||
                      (path == Name(id) && titles.contains(file.Title) && file.Album == complete.Album),
                  where + ": changed " + path);
        }
    }
    Check(early * 3 > tries, QString("only %1 kills came in time").arg(early));
}

void Soak::Ended()
{
#ifdef __SANITIZE_ADDRESS__
    constexpr qint64 timeToLeave = 10000; // milliseconds; it looks for leaks at the end
#else
    constexpr qint64 timeToLeave = 2000;
#endif
    const struct
    {
        const char* stage;
        const char* call = "";
        const char* prepare = ":";
    } rows[] = {
        {"adding"},
        {"listed"},
        {"You have chosen to delete"},
        {"erasing"},
        {"Edit Tags"},
        {"copying"},
        {"deleting"},
        {"rebuilding", "", "true keep"},
        {"Operation finished"},
        {"Could not copy", "", "rmdir out; touch out"},
        {"Could not save log", "", "touch Documents/Orvanto"},
        {"Give Us a Like"},
        {"There are no audio files", "", "rm library/*"},
        {"Are you sure you want to remove the", "OnRemoveSelected"},
        {"Are you sure you want to remove all", "OnRemoveAll"},
        {"Edit Tags", "OnEditTags"},
        {"Batch Edit Tags", "OnBatchEditTags"},
        {"Select folder", "OnAddFolder"},
        {"Select one or more", "OnAddFiles"},
        {"Search", "OnSearch"},
        {"This will overwrite", "on_actionNew_triggered"},
        {"Save profile", "on_actionSave_Profile_As_triggered"},
        {"About", "on_actionAbout_triggered"},
    };
    for (const auto& row : rows) {
        int reached = 0;
        for (int i = 0; i < (brief ? 1 : 4); ++i) {
            NewTry();
            const QString stage = row.stage;
            const int count = stage == "deleting" || stage == "copying" ? 400 : 40;
            FillLibrary(count, stage == "Edit Tags");
            InHome(row.prepare);
            const int left = FilesBelow(At("home/library")).isEmpty() ? 0 : count;
            const Outcome outcome =
                Run(OrganiseInto(At("home/out"), 1, 2, stage != "rebuilding"),
                    {{"at", stage}, {"after", QString::number(i * 5)}, {"do", "leave"}, {"call", row.call}});
            reached += outcome.said.contains("reached");
            Check(outcome.Clean() && outcome.toLeave < timeToLeave, stage + outcome.Text());
            CheckNothingLost(left, {At("home/library"), At("home/out")}, stage);
        }
        Check(reached > 0, QString("never met: ") + row.stage);
    }
}

void Soak::Hostile()
{
    constexpr int batch = 100;
    const QStringList samples = QDir(TEST_DATA_DIR).entryList({"bare.*", "full.*"});
    while (tries < (brief ? 300 : 5000)) {
        NewTry();
        for (int i = 0; i < batch; ++i) {
            const QString& sample = samples.at(i % samples.size());
            QByteArray bytes = Bytes(QStringLiteral(TEST_DATA_DIR "/") + sample);
            if (random.bounded(3) == 0)
                bytes.truncate(random.bounded(bytes.size()));
            // The headers are what is read; most bits shall fall there.
            const int reach = qMin(bytes.size(), random.bounded(2) ? 256 : bytes.size());
            for (int flip = reach ? random.bounded(12) : 0; flip > 0; --flip) {
                const int at = random.bounded(2) ? random.bounded(reach) : bytes.size() - 1 - random.bounded(reach);
                bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << random.bounded(8)));
            }
            for (const char* place : {"home/library/%1.%2", "home/edited/%1.%2"})
                Put(At(QString(place).arg(tries + i).arg(ExtensionOf(sample))), bytes);
        }
        tries += batch - 1;
        const Outcome edit = Start({"edit", At("home/edited")}); // names each file before it touches it
        Check(edit.Clean(), "edit" + edit.Text().right(3000));
        const Outcome run = Run(OrganiseInto(At("home/out"), 2, 0, false));
        Check(run.Complete(), "run" + run.Text());
        if (!failures.isEmpty())
            return; // with these files kept
    }
}

void Soak::TwoThreads()
{
    const Wishes ways[] = {{},
                           {{"abort", {}}},
                           {{"at", "repairing"}, {"do", "leave"}},
                           {{"at", "Edit Tags"}, {"do", "leave"}, {"after", "2"}},
                           {{"at", "copying"}, {"do", "leave"}},
                           {{"at", "deleting"}, {"do", "leave"}},
                           {{"at", "rebuilding"}, {"do", "leave"}}};
    while (tries < (brief ? 10 : 200)) {
        const Wishes& way = ways[static_cast<std::size_t>(tries) % std::size(ways)];
        NewTry();
        FillLibrary(10, true);
        SRunSettings settings = OrganiseInto(At("home/out"), 1, 2, way.value("at") != "rebuilding");
        settings.fixManually = tries % 2;
        const Outcome outcome = Run(settings, way);
        Check(outcome.Clean(), QString("try %1").arg(tries) + outcome.Text());
        CheckNothingLost(10, {At("home/library"), At("home/out")}, QString("try %1").arg(tries));
    }
}

void Soak::TrueCopies()
{
    // Outside the library and, in every spelling, in it. "LIBRARY" is that, too, where letter case is ignored.
    const char* const outputs[] = {"out",       "library",        "library/", "library//",
                                   "library/.", "library/sub/..", "link",     "LIBRARY"};
    const QFile::Permissions allPermissions[] = {QFile::Permissions(0x6644), QFile::Permissions(0x6600),
                                                 QFile::Permissions(0x4444)};
    QList<int> layouts{2, 0, 1, 7, 10, 15};
    QList<int> renames{2, 0, 1, 6};
    for (const int layout : layouts.mid(0, brief ? 2 : -1)) {
        for (const int rename : renames.mid(0, brief ? 1 : -1)) {
            for (const char* output : outputs) {
                NewTry();
                QFile::link(At("home/library"), At("home/link"));
                ProcessThread worker(nullptr);
                QMap<int, QByteArray> states;
                for (int id = 0; id < 10; ++id) {
                    SAudioFile tags = complete;
                    tags.Title = QString("Tone %1").arg(id);
                    tags.Track = QString::number(id + 1);
                    // Some lie where they belong already, some elsewhere, some bear the name of another one.
                    const QString names[] = {"Ann/Found Tapes/Ann-Tone %1.", "Ann/Tone %1.", "Ann-Tone %1.", "sub/x%1.",
                                             "Tone %1."};
                    tags.Path = At("home/library/" + names[id % 5].arg(id) + AudioExtensions().at(id));
                    PutPiece(tags.Path, id, tags);
                    QFile file(tags.Path);
                    file.open(QIODevice::Append);
                    file.setFileTime(QDateTime(QDate(2001, 2, 3 + id), QTime(4, 5, 6, 789)),
                                     QFileDevice::FileModificationTime);
                    file.close();
                    file.setPermissions(allPermissions[id % 3]);
                    states[id] = State(tags.Path);
                }
                worker.settings = OrganiseInto(At("home/") + output, layout, rename);
                for (int again = 0; again < 2; ++again) {
                    worker.files.clear();
                    for (const QString& path : FilesBelow(At("home/library")))
                        worker.files += TagManager().ReadFile(path);
                    worker.start();
                    worker.wait();
                }
                const QString where = QString("layout %1, rename %2, %3: ").arg(layout).arg(rename).arg(output);
                CheckNothingLost(10, {At("home")}, where);
                for (const QString& path : FilesBelow(At("home")))
                    Check(State(path) == states.value(PieceIn(path)), where + path + " is no true copy");
            }
        }
    }
}

void Soak::Mishaps()
{
    const struct
    {
        const char* what;
        const char* stage;
        const char* command;    ///< in the home; $f is the file of piece 7
        const char* shown = ""; ///< by some message box
        bool gone = false;      ///< the command itself destroys that piece
        const char* home = "home";
    } rows[] = {
        {"file renamed", "listed", "mv \"$f\" library/other.mpc", "Could not copy"},
        {"file deleted", "listed", "rm \"$f\"", "Could not copy", true},
        {"file made a folder", "listed", "rm \"$f\" && mkdir \"$f\"", "Could not copy", true},
        {"file made a dangling link", "listed", "rm \"$f\" && ln -s nowhere \"$f\"", "Could not copy", true},
        {"file made a pipe", "listed", "rm \"$f\" && mkfifo \"$f\"", "Could not copy", true},
        {"file made a device", "listed", "rm \"$f\" && ln -s /dev/zero \"$f\"", "Could not copy", true},
        {"file emptied", "listed", ": >\"$f\"", "", true},
        {"library gone", "listed", "mv library elsewhere", "Could not copy"},
        {"library gone in mid-run", "copying", "mv library elsewhere"},
        {"output is a file", "listed", "rmdir out && touch out", "Could not copy"},
        {"output moved in mid-run", "copying", "mv out elsewhere"},
        {"log folder is a file", "listed", "rm -rf Documents/Orvanto; touch Documents/Orvanto", "Could not save log"},
        {"log is a folder", "listed", "mkdir -p Documents/Orvanto/Orvanto.log", "Could not save log"},
        {"documents are gone", "listed", "rm -r Documents; ln -s nowhere Documents", "Could not save log"},
        {"store as usual", "", ":"},
        {"store corrupt", "", "head -c 5000 /dev/urandom >.config/Orvanto/Orvanto.conf"},
        {"store of other types", "",
         "printf '[General]\\nAddFilesPath=@ByteArray(y)\\nSkipSocial=@ByteArray(x)\\n"
         "OutputFolderPath=a, b\\n[' >.config/Orvanto/Orvanto.conf"},
        {"store is a folder", "", "mkdir .config/Orvanto/Orvanto.conf"},
        {"no place for the store", "", "rm -r .config; touch .config"},
        {"store is read-only", "", "touch .config/Orvanto/Orvanto.conf; chmod -R a-w .config"},
        {"no HOME", "", ":", "", false, nullptr},
        {"empty HOME", "", ":", "", false, ""},
        {"no such HOME", "", ":", "", false, "home/nowhere"},
        {"HOME is a file", "", "touch nowhere", "", false, "home/nowhere"},
        {"no music, no documents", "",
         "rm -r Music Documents; printf 'XDG_MUSIC_DIR=\"\"\\nXDG_DOCUMENTS_DIR=\"x\"\\n' "
         ">.config/user-dirs.dirs"},
    };
    for (const auto& row : rows) {
        for (int i = 0; i < (brief ? 1 : 3); ++i) {
            NewTry();
            FillLibrary(30);
            const QString stage = row.stage;
            const QString command = QString("f='%1'; %2").arg(Name(7), row.command);
            Wishes wishes;
            if (stage.isEmpty())
                InHome(command);
            else
                wishes = {{"at", stage}, {"do", "cd '" + At("home") + "'; " + command}};
            const Outcome outcome = Run(OrganiseInto(At("home/out")), wishes, -1, row.home);
            Check(outcome.Complete() && outcome.said.contains(row.shown) &&
                      (stage.isEmpty() || outcome.said.contains("reached")),
                  row.what + outcome.Text());
            CheckNothingLost(30, {At("home")}, row.what, row.gone ? QSet<int>{7} : QSet<int>());
            QProcess::execute("chmod", {"-R", "u+w", At("home")});
        }
    }
}

int main(int argc, char** argv)
{
    const struct
    {
        const char* name;
        void (Soak::*property)();
    } properties[] = {
        {"full disk", &Soak::FullDisk},    {"killed", &Soak::Killed},          {"ended", &Soak::Ended},
        {"hostile files", &Soak::Hostile}, {"two threads", &Soak::TwoThreads}, {"true copies", &Soak::TrueCopies},
        {"mishaps", &Soak::Mishaps},
    };
    const QString what = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (what == "edit" && argc > 2) {
        TagManager tags;
        for (const QString& path : FilesBelow(QString::fromLocal8Bit(argv[2]))) {
            Say(path);
            tags.WriteFile({tags.ReadFile(path).Title + "!", "A", "L", "1968", "G", "3", path});
            tags.ReadFile(path);
        }
        return 0;
    }
    if (what == "child") {
        NativeLookingApplication::Prepare();
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        NativeLookingApplication application(argc, argv);
        Wishes wishes;
        for (const QString& wish : application.arguments().mid(2))
            wishes[wish.section('=', 0, 0)] = wish.section('=', 1);
        const User user(wishes);
        const int code = application.exec();
        return QTest::currentTestFailed() ? 3 : code;
    }
    const QCoreApplication application(argc, argv);
    for (const auto& [name, property] : properties) {
        if (what != name)
            continue;
        Soak soak(application.arguments().contains("--short"));
        (soak.*property)();
        const bool ok = soak.failures.isEmpty();
        Say(QString("%1: %2 tries, %3").arg(what).arg(soak.tries).arg(ok ? "ok" : "failed, kept in " + soak.Keep()));
        for (const QString& failure : soak.failures.mid(0, 20))
            Say("  " + failure);
        return ok ? 0 : 1;
    }
    QTextStream(stderr) << "Usage: orvanto-soak PROPERTY [--short]\n";
    return 2;
}

#include "soak.moc"
