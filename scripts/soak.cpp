#include "app/MainWindow.h"
#include "app/NativeLookingApplication.h"
#include "app/ProfileFile.h"
#include "support/AudioSamples.h"
#include "support/Driver.h"
#include "tags/FilePath.h"

#include <QApplication>
#include <QDirIterator>
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
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

/// Tries at length what must never happen to anybody's music. Each property is shown from outside: real programs run
/// on real files, in children that may be killed, and what is left on disk is compared with what was there.

using Wishes = QMap<QString, QString>;

namespace
{
void Say(const QString& line)
{
    QTextStream(stdout) << QString(line).replace('\n', '|') << '\n';
}

/// The audio of the samples in tests/data: where it lies in the untagged one. No tag edit may touch it.
struct SAudio
{
    const char* extension;
    int begin;
    int size; ///< -1: all the rest
};
constexpr SAudio audios[] = {{"mp3", 0, -1}, {"mp4", 0, 930},  {"wav", 12, -1}, {"flac", 86, -1}, {"aif", 12, -1},
                             {"asf", 0, -1}, {"ogg", 164, -1}, {"mpc", 0, -1},  {"spx", 168, -1}, {"wv", 0, -1}};

QByteArray Audio(const QString& extension)
{
    const QByteArray bare = Bytes(QStringLiteral(TEST_DATA_DIR "/bare.") + extension);
    for (const SAudio& audio : audios) {
        if (extension == audio.extension)
            // Behind this name, the type with a header of changing length keeps its packets.
            return bare.mid(extension == "asf" ? bare.indexOf("\x36\x26\xb2\x75") : audio.begin, audio.size);
    }
    return {};
}

constexpr int idSize = 4;

/// Makes a tagged file whose audio is like no other's: its number replaces some bytes in the middle.
QString PutPiece(const QString& path, int id, const SAudioFile& tags = {})
{
    const QByteArray audio = Audio(ExtensionOf(path));
    QByteArray file = Bytes(QStringLiteral(TEST_DATA_DIR "/full.") + ExtensionOf(path));
    file.replace(file.indexOf(audio) + audio.size() / 2, idSize, QByteArray::number(id).rightJustified(idSize, '0'));
    QDir().mkpath(FolderOf(path));
    QFile out(path);
    if (!file.contains(audio.left(audio.size() / 2)) || !out.open(QIODevice::WriteOnly) || out.write(file) < 0)
        qFatal("cannot make %s", qPrintable(path));
    out.close();
    if (!tags.Path.isEmpty()) {
        SAudioFile record = tags;
        record.Path = path;
        TagManager().WriteFile(record);
    }
    return path;
}

/// The number of the piece of music in @p path; -1 unless its audio is whole.
int PieceIn(const QString& path)
{
    const QByteArray audio = Audio(ExtensionOf(path));
    const QByteArray file = Bytes(path);
    const int half = audio.size() / 2;
    const int begin = file.indexOf(audio.left(half));
    if (audio.isEmpty() || begin < 0 ||
        file.mid(begin + half + idSize, audio.size() - half - idSize) != audio.mid(half + idSize))
        return -1;
    return file.mid(begin + half, idSize).toInt();
}

QStringList FilesBelow(const QString& folder)
{
    QStringList paths;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        if (entries.fileInfo().isFile()) // reading a pipe or a device would not end
            paths += entries.filePath();
    }
    paths.sort();
    return paths;
}

bool IsMusic(const QString& path)
{
    return AudioExtensions().contains(ExtensionOf(path));
}

/// What Qt says of the platform without a screen is no fault of the program.
QString WithoutRemarks(const QString& errors)
{
    QStringList lines;
    for (const QString& line : errors.split('\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith("This plugin does not support"))
            lines += line;
    }
    return lines.join('|');
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
        if (wishes.contains("profile")) {
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
        const QString slot = wishes.value("call");
        if (list->count())
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        if (slot.isEmpty())
            Click(window, "buttonOrganize");
        else if (slot != "nothing" && !QMetaObject::invokeMethod(&window, qPrintable(slot)))
            qFatal("no slot %s", qPrintable(slot));
        started = true;
    }

    QString Stage() const
    {
        if (QWidget* const shown = QApplication::activeModalWidget()) {
            auto* const box = qobject_cast<QMessageBox*>(shown);
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
        if (shown && shown->isVisible())
            Respond(shown);
        else if (started && Child<QWidget>(window, "buttonOrganize")->isEnabled()) {
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
        } else if (wishes.value("editor") == "abort") {
            Click(*shown, "buttonAbort");
        } else {
            Type(*shown, "editYear", "1968");
            Click(*shown, "buttonOK");
        }
    }
};

namespace
{
/// The child process that reads and writes every file of a folder, saying which one is next.
int EditAll(const QString& folder)
{
    TagManager tags;
    for (const QString& path : FilesBelow(folder)) {
        Say(path);
        tags.WriteFile({tags.ReadFile(path).Title + "!", "A", "L", "1968", "G", "3", path});
        tags.ReadFile(path);
    }
    return 0;
}
} // namespace

/// The tries and what they have shown.
class Soak
{
public:
    explicit Soak(bool isShort) : brief(isShort) {}

    int tries = 0;
    QStringList failures;
    QString skipped;

    void FullDisk();
    void Killed();
    void Ended();
    void Hostile();
    void TwoThreads();
    void TrueCopies();
    void InPlace();
    void Moved();
    void Settings();
    QString Folder() const { return folder.path(); }
    void Keep() { folder.setAutoRemove(false); }

private:
    const bool brief;
    QTemporaryDir folder{QDir::tempPath() + "/orvanto-soak.XXXXXX"};
    QRandomGenerator random{20};
    const SAudioFile complete{"Tone", "Ann", "Found Tapes", "1968", "Folk", "3", "-"};

    struct Outcome
    {
        bool exited = false;
        int code = -1;
        qint64 toStart = 0;  ///< milliseconds until the list was being filled
        qint64 toEnd = 0;    ///< from then on
        qint64 toLeave = -1; ///< from the wish to leave on
        QString said;
        QString errors;
        /// Nothing but an ordinary end after the stage was reached, with controls that work.
        bool Clean() const { return exited && code == 0 && errors.isEmpty(); }
        QString Text() const
        {
            return QString("code %1 after %2 ms, said %3, errors %4").arg(code).arg(toLeave).arg(said, errors);
        }
    };

    void Check(bool ok, const QString& evidence)
    {
        if (!ok)
            failures += evidence;
    }
    QString At(const QString& name) const { return folder.path() + '/' + name; }

    /// Empties the home and starts a try in it.
    void NewTry()
    {
        ++tries;
        QDir(At("home")).removeRecursively();
        for (const char* name : {"home/Music", "home/Documents", "home/library", "home/.config/Orvanto"})
            QDir().mkpath(At(name));
    }

    Outcome Start(const QStringList& arguments, qint64 killAfter = -1, const QString& home = "home",
                  const QString& variable = {}) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "HOME"})
            environment.remove(name);
        if (!home.isNull())
            environment.insert("HOME", At(home));
        if (!variable.isEmpty())
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        environment.insert("XDG_RUNTIME_DIR", folder.path());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), arguments);
        Outcome outcome;
        QElapsedTimer clock, leaveClock;
        clock.start();
        while (process.state() != QProcess::NotRunning && clock.elapsed() < 30000) {
            process.waitForReadyRead(20);
            outcome.said += QString::fromUtf8(process.readAllStandardOutput());
            if (!outcome.toStart && outcome.said.contains("started")) {
                outcome.toStart = clock.restart();
                if (killAfter >= 0) {
                    QThread::usleep(static_cast<unsigned long>(killAfter));
                    process.kill();
                }
            }
            if (!leaveClock.isValid() && outcome.said.contains("reached"))
                leaveClock.start();
        }
        outcome.toEnd = clock.elapsed();
        outcome.toLeave = leaveClock.isValid() ? leaveClock.elapsed() : -1;
        process.kill();
        process.waitForFinished();
        outcome.said += QString::fromUtf8(process.readAllStandardOutput());
        outcome.said.replace('\n', " / ");
        outcome.errors = WithoutRemarks(QString::fromLocal8Bit(process.readAllStandardError()));
        outcome.exited = process.exitStatus() == QProcess::NormalExit;
        outcome.code = process.exitCode();
        return outcome;
    }

    /// Runs the program on home/library with these settings.
    Outcome Run(const SRunSettings& settings, const Wishes& wishes = {}, qint64 killAfter = -1) const
    {
        QFile profile(At("home/p.ovp"));
        profile.open(QIODevice::WriteOnly);
        profile.write(ProfileText(settings));
        profile.close();
        QStringList arguments{"child", "add=" + At("home/library"), "profile=" + profile.fileName()};
        for (auto wish = wishes.begin(); wish != wishes.end(); ++wish)
            arguments += wish.key() + '=' + wish.value();
        return Start(arguments, killAfter);
    }

    SRunSettings OrganiseInto(const QString& output, int organizeBy = 1, int rename = 2) const
    {
        return {organizeBy, rename, "[Track] [Title]", false, false, true, output, true};
    }

    QString Name(int id, const char* prefix = "home/library/Ann") const
    {
        return At(QString("%1 %2-Song %2.%3").arg(prefix).arg(id).arg(AudioExtensions().at(id % 10)));
    }
    /// A library of the ten types, of which some files need erasing and repairing.
    void FillLibrary(int count, bool asks = false)
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
    void CheckNothingLost(int count, const QStringList& folders, const QString& where, const QSet<int>& gone = {})
    {
        QSet<int> there = gone;
        for (const QString& place : folders) {
            for (const QString& path : FilesBelow(place))
                there.insert(PieceIn(path));
        }
        for (int id = 0; id < count; ++id)
            Check(there.contains(id), where + ": piece " + Name(id) + " is lost");
    }
};

void Soak::FullDisk()
{
    const QString disk = qEnvironmentVariable("ORVANTO_SOAK_DISK");
    const auto leave = [&disk](qint64 room) {
        QFile filler(disk + "/filler");
        filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        while (QStorageInfo(disk).bytesAvailable() > room &&
               filler.write(QByteArray(
                   static_cast<int>(qMin<qint64>(QStorageInfo(disk).bytesAvailable() - room, 1 << 16)), 'x')) > 0) {
        }
    };
    const QString title(10000, 't');
    signal(SIGXFSZ, SIG_IGN); // the writes that go too far shall fail instead
    // First a disk with room (as the last of a disk's rooms shows that the edit works at all), then a limited file.
    const QList<qint64> rooms{0, 4096, 16384, 1 << 18, 6 << 20};
    for (const QString& extension : AudioExtensions()) {
        NewTry();
        TagManager tags;
        tags.path = PutPiece(At("home/x." + extension), tries);
        const QByteArray before = Bytes(tags.path);
        tags.SetInfo(Tag::Title, title);
        const QByteArray after = Bytes(tags.path);
        Check(before != after, tags.path + " takes no tag on a roomy disk");
        const auto compare = [&](const QString& place, bool mustFit) {
            const bool added = tags.SetInfo(Tag::Title, title);
            const struct rlimit all = {RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &all);
            const QByteArray now = Bytes(tags.path);
            Check(added && (now == after || (now == before && !mustFit)),
                  QString("%1 in %2: neither as before nor as meant, %3 bytes").arg(extension, place).arg(now.size()));
        };
        for (const qint64 room : disk.isEmpty() ? QList<qint64>() : rooms) {
            ++tries;
            QDir(disk + "/d").removeRecursively();
            QFile::remove(disk + "/filler");
            tags.path = disk + "/d/x." + extension;
            QDir().mkpath(disk + "/d");
            QFile file(tags.path);
            file.open(QIODevice::WriteOnly);
            file.write(before);
            file.close();
            leave(room);
            compare(QString("%1 free bytes").arg(QStorageInfo(disk).bytesAvailable()), room == rooms.last());
            Check(FilesBelow(disk + "/d").size() == 1, FilesBelow(disk + "/d").join(' ') + " is left over");
        }
        for (const qint64 growth : {-500, 0, 1, 2000, 9000, 20000, 40000}) {
            ++tries;
            QFile file(At("home/x." + extension));
            file.open(QIODevice::WriteOnly);
            file.write(before);
            file.close();
            tags.path = file.fileName();
            const rlim_t most = static_cast<rlim_t>(before.size() + growth);
            const struct rlimit limit = {most, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limit);
            compare(QString("a file of at most %1").arg(most), growth == 40000);
            Check(FilesBelow(At("home")).size() == 1, FilesBelow(At("home")).join(' ') + " is left over");
        }
    }
    for (int i = 0; i < (brief ? 3 : 15) && !disk.isEmpty(); ++i) {
        NewTry();
        FillLibrary(20);
        QDir(disk + "/d").removeRecursively();
        QFile::remove(disk + "/filler");
        QDir().mkpath(disk + "/d");
        leave(i * 5000);
        const Outcome outcome = Run(OrganiseInto(disk + "/d"));
        const QString where = QString("%1 free pages").arg(i);
        CheckNothingLost(20, {At("home/library"), disk}, where);
        for (const QString& path : FilesBelow(disk + "/d"))
            Check(PieceIn(path) >= 0, where + ": " + path + " is partial");
        for (const QString& path : FilesBelow(At("home/library")))
            Check(outcome.said.contains(path), where + ": no report of " + path);
        Check(outcome.Clean() && outcome.said.contains("idle"), where + ": " + outcome.Text());
    }
    QFile::remove(disk + "/filler");
    if (disk.isEmpty())
        skipped = "no small disk could be mounted, only files were limited";
}

void Soak::Killed()
{
    constexpr int count = 60;
    NewTry();
    FillLibrary(count);
    const QString copyBack =
        "rm -rf '" + At("home/library") + "' && cp -a '" + At("master") + "' '" + At("home/library") + "'";
    QProcess::execute("cp", {"-a", At("home/library"), At("master")});
    const Outcome whole = Run(OrganiseInto(At("home/out")));
    Check(whole.Clean(), "undisturbed: " + whole.Text());
    QMap<int, QByteArray> copies;
    for (const QString& path : FilesBelow(At("home/out")))
        copies[PieceIn(path)] = Bytes(path);
    Check(copies.size() == count && !copies.contains(-1), QString("only %1 whole copies").arg(copies.size()));

    int early = 0;
    while (tries <= (brief ? 10 : 50)) {
        NewTry();
        QProcess::execute("sh", {"-c", copyBack});
        const qint64 moment = random.bounded(static_cast<int>(whole.toEnd) * 900);
        early += !Run(OrganiseInto(At("home/out")), {}, moment).exited;
        const QString where = QString("killed after %1 us").arg(moment);
        CheckNothingLost(count, {At("home/library"), At("home/out")}, where);
        for (const QString& path : FilesBelow(At("home/out")))
            Check(!IsMusic(path) || Bytes(path) == copies.value(PieceIn(path), "none"), where + ": wrong " + path);
        for (const QString& path : FilesBelow(At("home/library"))) {
            const int id = PieceIn(path);
            const SAudioFile file = TagManager().ReadFile(path);
            const QStringList titles{"www.tone.com", "", QString("Tone %1").arg(id), QString("Song %1").arg(id)};
            // What was being written lies in a hidden folder, which never joins a list.
            Check(!IsMusic(path) || path.contains("/.orvanto-") ||
                      (path == Name(id) && titles.contains(file.Title) && file.Album == complete.Album),
                  where + ": " + path + " is not what it was: " + file.Title);
        }
    }
    Check(early * 3 > tries, QString("only %1 kills came in time").arg(early));
}

void Soak::Ended()
{
    const struct
    {
        const char* stage;
        const char* call;
        const char* prepare;
    } rows[] = {
        {"adding", "", ""},
        {"listed", "", ""},
        {"You have chosen to delete", "", ""},
        {"erasing", "", ""},
        {"Edit Tags", "", ""},
        {"copying", "", ""},
        {"deleting", "", ""},
        {"rebuilding", "", "keep"},
        {"Operation finished", "", ""},
        {"Could not copy", "", "rmdir out; touch out"},
        {"Could not save log", "", "touch Documents/Orvanto"},
        {"Give Us a Like", "", ""},
        {"There are no audio files", "", "rm library/*"},
        {"Are you sure you want to remove the", "OnRemoveSelected", ""},
        {"Are you sure you want to remove all", "OnRemoveAll", ""},
        {"Edit Tags", "OnEditTags", ""},
        {"Batch Edit Tags", "OnBatchEditTags", ""},
        {"Select folder", "OnAddFolder", ""},
        {"Select one or more", "OnAddFiles", ""},
        {"Search", "OnSearch", ""},
        {"This will overwrite", "on_actionNew_triggered", ""},
        {"Save profile", "on_actionSave_Profile_As_triggered", ""},
        {"About", "on_actionAbout_triggered", ""},
    };
    for (const auto& row : rows) {
        int reached = 0;
        for (int i = 0; i < (brief ? 1 : 4); ++i) {
            NewTry();
            const QString stage = row.stage;
            const int count = stage == "deleting" || stage == "copying" ? 400 : 40;
            FillLibrary(count, stage == "Edit Tags");
            QDir().mkpath(At("home/out"));
            SRunSettings settings = OrganiseInto(At("home/out"));
            settings.deleteOriginal = QString(row.prepare) != "keep";
            if (settings.deleteOriginal)
                QProcess::execute("sh", {"-c", "cd '" + At("home") + "'; " + row.prepare});
            const bool emptied = FilesBelow(At("home/library")).isEmpty();
            const Outcome outcome =
                Run(settings, {{"at", stage}, {"after", QString::number(i * 5)}, {"do", "leave"}, {"call", row.call}});
            reached += outcome.said.contains("reached");
            Check(outcome.Clean() && outcome.toLeave < 2000, stage + ": " + outcome.Text());
            CheckNothingLost(emptied ? 0 : count, {At("home/library"), At("home/out")}, stage);
        }
        Check(reached > 0, QString("the stage %1 was never met").arg(row.stage));
    }
}

void Soak::Hostile()
{
    constexpr int batch = 100;
    QStringList samples = QDir(TEST_DATA_DIR).entryList({"bare.*", "full.*"});
    for (int made = 0; made < (brief ? 300 : 5000); made += batch) {
        NewTry();
        tries += batch - 1;
        QDir().mkpath(At("home/edited"));
        for (int i = made; i < made + batch; ++i) {
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
            for (const char* place : {"home/library/%1.%2", "home/edited/%1.%2"}) {
                QFile file(At(QString(place).arg(i).arg(ExtensionOf(sample))));
                file.open(QIODevice::WriteOnly);
                file.write(bytes);
            }
        }
        while (true) {
            const Outcome outcome = Start({"edit", At("home/edited")});
            if (outcome.Clean())
                break;
            // The one that was named last is put aside, then the others get their turn.
            const QString culprit = outcome.said.section(" / ", -2, -2);
            const QString kept = At("crashed-" + culprit.section('/', -1));
            Check(false, "kept " + kept + ": " + outcome.errors.left(1500));
            if (!QFile::rename(At("home/library/" + culprit.section('/', -1)), kept) || !QFile::remove(culprit))
                return;
        }
        SRunSettings settings = OrganiseInto(At("home/out"), 2, 0);
        settings.deleteOriginal = false;
        const Outcome outcome = Run(settings);
        Check(outcome.Clean() && outcome.said.contains("idle"), QString("run %1: ").arg(made) + outcome.Text());
    }
}

void Soak::TwoThreads()
{
    const Wishes ways[] = {{},
                           {{"editor", "abort"}},
                           {{"at", "repairing"}, {"do", "leave"}},
                           {{"at", "Edit Tags"}, {"do", "leave"}, {"after", "2"}},
                           {{"at", "copying"}, {"do", "leave"}},
                           {{"at", "deleting"}, {"do", "leave"}},
                           {{"at", "rebuilding"}, {"do", "leave"}}};
    while (tries < (brief ? 10 : 200)) {
        const Wishes& way = ways[static_cast<std::size_t>(tries) % std::size(ways)];
        NewTry();
        FillLibrary(10, true);
        SRunSettings settings = OrganiseInto(At("home/out"));
        settings.deleteOriginal = way.value("at") != "rebuilding";
        settings.fixManually = tries % 2;
        const Outcome outcome = Run(settings, way);
        Check(outcome.Clean(), QString("try %1: ").arg(tries) + outcome.Text());
        CheckNothingLost(10, {At("home/library"), At("home/out")}, QString("try %1").arg(tries));
    }
}

void Soak::TrueCopies()
{
    const mode_t modes[] = {0644, 0600, 0444, 0755};
    for (int round = 0; round < (brief ? 1 : 4); ++round) {
        NewTry();
        QMap<int, QByteArray> bytes;
        QMap<int, struct stat> states;
        for (int id = 0; id < 20; ++id) {
            const char* const artists[] = {"Ann", "Folder Link", "File Link", "Dangling Link", "There"};
            SAudioFile tags = complete;
            tags.Artist = artists[id / 10 ? 1 + id % 4 : 0];
            tags.Title = "Tone " + QString::number(id);
            const QByteArray path = QFile::encodeName(PutPiece(Name(id), id, tags));
            const struct timespec old[] = {{1000000000 + id, 0}, {1000000000 + id, 123456789}};
            chmod(path, modes[(id + round) % 4]);
            utimensat(AT_FDCWD, path, old, 0);
            bytes[id] = Bytes(path);
            stat(path, &states[id]);
        }
        QDir().mkpath(At("home/outside"));
        QFile(At("home/outside/victim")).open(QIODevice::WriteOnly);
        for (const char* name : {"home/out/File Link", "home/out/Dangling Link", "home/out/There"})
            QDir().mkpath(At(name));
        QFile::link(At("home/outside"), At("home/out/Folder Link"));
        for (int id = 10; id < 20; ++id) {
            const QString name = QString("Tone %1.%2").arg(id).arg(AudioExtensions().at(id % 10));
            QFile::link(At("home/outside/victim"), At("home/out/File Link/" + name));
            QFile::link(At("home/outside/nowhere-" + name), At("home/out/Dangling Link/" + name));
            PutPiece(At("home/out/There/" + name), 100 + id);
        }
        SRunSettings settings = OrganiseInto(At("home/out"), 1, 1);
        settings.deleteOriginal = round % 2;
        const Outcome outcome = Run(settings);
        Check(outcome.Clean() && outcome.said.contains("idle"), outcome.Text());
        for (int id = 0; id < 10; ++id) {
            const QString path = At(QString("home/out/Ann/Tone %1.%2").arg(id).arg(AudioExtensions().at(id)));
            struct stat now = {};
            stat(QFile::encodeName(path), &now);
            Check(Bytes(path) == bytes[id] && now.st_mode == states[id].st_mode, path + " is no true copy");
            Check(now.st_mtim.tv_sec == states[id].st_mtim.tv_sec, path + " is of another time");
        }
        const QStringList outside = FilesBelow(At("home/outside"));
        Check(outside == QStringList(At("home/outside/victim")) && Bytes(outside.first()).isEmpty(),
              "written outside: " + outside.join(' '));
        for (int id = 10; id < 20; ++id) {
            const QString name = QString("Tone %1.%2").arg(id).arg(AudioExtensions().at(id % 10));
            Check(PieceIn(At("home/out/There/" + name)) == 100 + id, name + " was replaced");
            for (const char* linked : {"home/out/File Link/", "home/out/Dangling Link/"})
                Check(QFileInfo(At(linked + name)).isSymLink(), At(linked + name) + " was replaced");
            // A link to a file is an existing destination, like a file: it is kept, and its source may go.
            const bool mayGo = settings.deleteOriginal && id % 2;
            Check(Bytes(Name(id)) == bytes[id] || mayGo, Name(id) + " went without a copy");
        }
    }
}

void Soak::InPlace()
{
    const char* const spellings[] = {"library",        "library/", "library//", "library/.",
                                     "library/sub/..", "link",     "./link/"};
    QList<int> layouts{2, 0, 1, 7, 10, 15};
    QList<int> renames{2, 0, 1, 6};
    for (const int layout : brief ? layouts.mid(0, 2) : layouts) {
        for (const int rename : brief ? renames.mid(0, 1) : renames) {
            for (const char* spelling : spellings) {
                NewTry();
                QDir().mkpath(At("home/library/sub"));
                QFile::link(At("home/library"), At("home/link"));
                for (int id = 0; id < 10; ++id) {
                    SAudioFile tags = complete;
                    tags.Title = QString("Tone %1").arg(id);
                    tags.Track = QString::number(id + 1);
                    // Some lie where they belong already, some elsewhere, some bear the name of another one.
                    const QString names[] = {"library/Ann/Found Tapes/Ann-Tone %1.", "library/Ann/Tone %1.",
                                             "library/Ann-Tone %1.", "library/sub/x%1.", "library/Tone %1."};
                    PutPiece(At("home/" + names[id % 5].arg(id) + AudioExtensions().at(id)), id, tags);
                }
                const QString where = QString("layout %1, rename %2, %3").arg(layout).arg(rename).arg(spelling);
                for (int again = 0; again < 2; ++again) {
                    const Outcome outcome = Run(OrganiseInto(At(QString("home/") + spelling), layout, rename));
                    Check(outcome.Clean() && outcome.said.contains("idle"), where + ": " + outcome.Text());
                    CheckNothingLost(10, {At("home/library")}, where);
                }
            }
        }
    }
}

void Soak::Moved()
{
    const struct
    {
        const char* what;
        const char* stage;
        const char* command; ///< in the home; $f is the file of piece 7
        const char* shown;
        bool gone = false; ///< the command itself destroys that piece
    } rows[] = {
        {"renamed", "listed", "mv \"$f\" library/other.mpc", "Could not copy"},
        {"deleted", "listed", "rm \"$f\"", "Could not copy", true},
        {"made a folder", "listed", "rm \"$f\" && mkdir \"$f\"", "Could not copy", true},
        {"made a dangling link", "listed", "rm \"$f\" && ln -s nowhere \"$f\"", "Could not copy", true},
        {"made a pipe", "listed", "rm \"$f\" && mkfifo \"$f\"", "Could not copy", true},
        {"made a device", "listed", "rm \"$f\" && ln -s /dev/zero \"$f\"", "Could not copy", true},
        {"emptied", "listed", ": >\"$f\"", "", true},
        {"library gone", "listed", "mv library elsewhere", "Could not copy"},
        {"library gone in mid-run", "copying", "mv library elsewhere", ""},
        {"output is a file", "listed", "rmdir out && touch out", "Could not copy"},
        {"output moved in mid-run", "copying", "mv out elsewhere", ""},
        {"log folder is a file", "listed", "rm -rf Documents/Orvanto; touch Documents/Orvanto", "Could not save log"},
        {"log is a folder", "listed", "mkdir -p Documents/Orvanto/Orvanto.log", "Could not save log"},
        {"documents are gone", "listed", "rm -r Documents; ln -s nowhere Documents", "Could not save log"},
    };
    for (const auto& row : rows) {
        for (int i = 0; i < (brief ? 1 : 3); ++i) {
            NewTry();
            FillLibrary(30);
            QDir().mkpath(At("home/out"));
            const QString command = "cd '" + At("home") + "'; f='" + Name(7) + "'; " + row.command;
            const Outcome outcome = Run(OrganiseInto(At("home/out")), {{"at", row.stage}, {"do", command}});
            const QString where = QString(row.what) + ": ";
            Check(outcome.Clean() && outcome.said.contains("reached") && outcome.said.contains("idle") &&
                      outcome.said.contains(row.shown),
                  where + outcome.Text());
            CheckNothingLost(30, {At("home")}, where, row.gone ? QSet<int>{7} : QSet<int>());
        }
    }
}

void Soak::Settings()
{
    const struct
    {
        const char* what;
        const char* command; ///< in the home
        const char* home = "home";
        const char* variable = "";
    } rows[] = {
        {"as usual", ":"},
        {"corrupt", "head -c 5000 /dev/urandom >.config/Orvanto/Orvanto.conf"},
        {"other types",
         "printf '[General]\\nAddFilesPath=@Variant(\\\\0\\\\0\\\\0\\\\x7f\\\\xff)\\nSkipSocial=@ByteArray(x)\\n"
         "OutputFolderPath=a, b\\n[' >.config/Orvanto/Orvanto.conf"},
        {"a folder", "mkdir .config/Orvanto/Orvanto.conf"},
        {"no place for it", "rm -r .config; touch .config"},
        {"read-only", "touch .config/Orvanto/Orvanto.conf; chmod 0444 .config/Orvanto/Orvanto.conf; chmod 0555 "
                      ".config/Orvanto .config"},
        {"no HOME", ":", nullptr},
        {"empty HOME", ":", "home", "HOME="},
        {"no such HOME", ":", "home/nowhere"},
        {"HOME is a file", ":", "home/library/Ann 0-Song 0.mp3"},
        {"no music, no documents", "rm -r Music Documents; printf 'XDG_MUSIC_DIR=\"\"\\nXDG_DOCUMENTS_DIR=\"x\"\\n' "
                                   ">.config/user-dirs.dirs"},
    };
    for (const auto& row : rows) {
        NewTry();
        FillLibrary(1);
        QProcess::execute("sh", {"-c", "cd '" + At("home") + "'; " + row.command});
        const QString home = row.home;
        const Outcome outcome = Start({"child", "add=" + At("home/library"), "call=nothing"}, -1, home, row.variable);
        Check(outcome.exited && outcome.code == 0 && outcome.said.contains("listed 1 ") &&
                  outcome.said.contains("idle"),
              QString(row.what) + ": " + outcome.Text());
        QProcess::execute("chmod", {"-R", "u+w", At("home")});
    }
}

int main(int argc, char** argv)
{
    const struct
    {
        const char* name;
        void (Soak::*property)();
    } properties[] = {
        {"full disk", &Soak::FullDisk},    {"killed", &Soak::Killed},           {"ended", &Soak::Ended},
        {"hostile files", &Soak::Hostile}, {"two threads", &Soak::TwoThreads},  {"true copies", &Soak::TrueCopies},
        {"in place", &Soak::InPlace},      {"a list that moved", &Soak::Moved}, {"settings", &Soak::Settings},
    };
    const QString what = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (what == "edit" && argc > 2)
        return EditAll(QString::fromLocal8Bit(argv[2]));
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
        if (soak.failures.isEmpty()) {
            Say(QString("%1: %2 tries ok%3")
                    .arg(what)
                    .arg(soak.tries)
                    .arg(soak.skipped.isEmpty() ? "" : ", " + soak.skipped));
            return 0;
        }
        soak.Keep();
        Say(QString("%1: %2 failures in %3 tries, kept in %4")
                .arg(what)
                .arg(soak.failures.size())
                .arg(soak.tries)
                .arg(soak.Folder()));
        for (const QString& failure : soak.failures.mid(0, 20))
            Say("  " + failure);
        return 1;
    }
    QTextStream(stderr) << "Usage: orvanto-soak PROPERTY [--short]\n";
    return 2;
}

#include "soak.moc"
