#include "app/MainWindow.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "files/FilePath.h"
#include "platform/UserSettings.h"
#include "tags/AudioTypes.h"
#ifdef Q_OS_LINUX
#include "benchmarks/Openings.h"
#endif

#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QThread>
#include <QtEndian>

#include <fileref.h>
#include <tag.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

/// Measures the main job against what it cannot do without: each row has its counterpart, which runs in turn with it on
/// the same files. Times are medians. Small files lie in the folder for temporary files, files of real size in the
/// folder that this is started in.

namespace
{
int shortfalls = 0;

void Print(const QString& work, const QString& against, const QString& figures, double measured, double bound)
{
    const bool holds = measured <= bound;
    shortfalls += !holds;
    std::printf("| %-46s | %-44s | %15s | %6.2f | %6.2f | %s |\n", qPrintable(work), qPrintable(against),
                qPrintable(figures), measured, bound, holds ? "yes" : "NO ");
    std::fflush(stdout);
}

double Seconds(const std::function<void()>& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

/// The same in a thread of its own, where the worker copies, too: memory that one processor has freed may come slowly
/// to another one, which more than doubles the time of copying into it.
double SecondsInThread(const std::function<void()>& work)
{
    double seconds = 0;
    const std::unique_ptr<QThread> thread(QThread::create([&] { seconds = Seconds(work); }));
    thread->start();
    thread->wait();
    return seconds;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

using Timed = std::function<double()>; ///< prepares, works, and returns the seconds of the work

void Compare(const QString& work, const Timed& ours, const QString& against, const Timed& theirs, double bound,
             int rounds = 5)
{
    // The first of two may find cold memory: a round for nothing, and then each comes first in turn.
    ours();
    theirs();
    std::vector<double> ourTimes, theirTimes;
    for (int round = 0; round < rounds; ++round) {
        if (round % 2 == 0)
            ourTimes.push_back(ours());
        theirTimes.push_back(theirs());
        if (round % 2 != 0)
            ourTimes.push_back(ours());
    }
    const double our = Median(ourTimes), their = Median(theirTimes);
    Print(work, against, QString::asprintf("%.3f / %.3f s", our, their), our / their, bound);
}

/// The longest time between two turns of the event loop since it was made, in milliseconds.
class Freeze
{
public:
    Freeze()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { longest = qMax(longest, sinceLast.restart()); });
        sinceLast.start();
        timer.start(0);
    }
    qint64 Longest() const { return qMax(longest, sinceLast.elapsed()); }

private:
    QTimer timer;
    QElapsedTimer sinceLast;
    qint64 longest = 0;
};

/// Makes @p count small files of all types in @p folder, with complete tags. @return @p folder.
QString MakeLibrary(const QString& folder, int count)
{
    for (int i = 0; i < count; ++i) {
        const QString& extension = AudioExtensions().at(i % AudioExtensions().size());
        PutSample("full." + extension, QString("%1/%2.%3").arg(folder).arg(i).arg(extension));
    }
    return folder;
}

/// Gives each file an artist of its own.
void MakeArtistsDistinct(const QString& folder)
{
    TagManager tags;
    for (const QString& path : FilesBelow(folder)) {
        tags.path = path;
        tags.SetInfo(Tag::Artist, "Artist " + BaseNameOf(path));
    }
}

/// Makes @p count files of these types and of @p smallest megabytes or up to @p span - 1 more: the bytes of the sample
/// over and over. @return @p folder.
QString MakeMusic(const QString& folder, const QStringList& types, int count, int smallest, int span)
{
    constexpr int megabyte = 1 << 20;
    for (int i = 0; i < count; ++i) {
        const QString& type = types.at(i % types.size());
        const int size = (smallest + i % span) * megabyte;
        const QByteArray frames = Bytes(QStringLiteral(TEST_DATA_DIR "/bare.") + type);
        QFile file(PutSample("full." + type, QString("%1/%2.%3").arg(folder).arg(i).arg(type)));
        if (!file.open(QIODevice::Append) || file.write(frames.repeated(size / frames.size())) < 0)
            qFatal("cannot make %s", qPrintable(file.fileName()));
    }
    return folder;
}

void Empty(const QString& folder)
{
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
}

/// The real window, shown, and what its user does.
class Window
{
public:
    Window()
    {
        OpenSettings().setValue("SkipSocial", 1);
        window.show();
        QCoreApplication::processEvents();
    }

    double Add(const QStringList& folders)
    {
        return Seconds([&] { DropOn(window, folders); });
    }

    /// Removing the first row rebuilds all others.
    double Rebuild()
    {
        Act(window, "press 0");
        QElapsedTimer clock;
        Answers answers({Entry({"Selected", "All"}, "Selected"), StartingClock(clock)});
        Click(window, "buttonRemove");
        return static_cast<double>(clock.nsecsElapsed()) / 1e9;
    }

    /// Fills the list again, with no more turns of the event loop than the list needs to lay its rows out.
    double RebuildWithoutPumping()
    {
        QStringList texts;
        for (int row = 0; row < list->count(); ++row)
            texts += list->item(row)->text();
        return Seconds([&] { Fill(texts); });
    }

    void Fill(const QStringList& texts) const
    {
        const QIcon icon(QStringLiteral(":/res/ListIcon.png"));
        list->clear();
        for (const QString& text : texts)
            list->addItem(new QListWidgetItem(icon, text));
        while (!list->visualItemRect(list->item(list->count() - 1)).isValid())
            QCoreApplication::processEvents();
    }

    /// Opens each file once and fills the list.
    double AddBare(const QString& folder) const
    {
        const QStringList paths = FilesBelow(folder);
        return Seconds([&] {
            TagManager tags;
            for (const QString& path : paths)
                tags.ReadFile(path);
            Fill(paths);
        });
    }

    /// From Start to the list being back.
    double Process(const QString& output, int organizeBy = 1)
    {
        Empty(output);
        Type(window, "editOutputFolder", output);
        Choose(window, "comboRename", 0);
        Choose(window, "comboOrganizeBy", organizeBy);
        Answers answers({Success()});
        return Seconds([&] {
            Click(window, "buttonOrganize");
            while (!Child<QWidget>(window, "buttonOrganize")->isEnabled())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
    }

    /// Empties the title of every file, which the click on Start does before it returns; the run gives it a new one.
    double Erase(const QString& output)
    {
        Answers answers({Success()});
        Empty(output);
        Type(window, "editOutputFolder", output);
        const double seconds = Seconds([&] { Click(window, "buttonOrganize"); });
        while (!Child<QWidget>(window, "buttonOrganize")->isEnabled())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return seconds;
    }

    double BatchEdit(const char* field, const QString& text)
    {
        Act(window, "press 0");
        QElapsedTimer clock;
        Answers answers({Dialog("Batch Edit Tags",
                                [&](QWidget* editor) {
                                    Child<QLineEdit>(*editor, field)->setText(text); // typing long ones takes long
                                    Click(*editor, "buttonOK");
                                }),
                         StartingClock(clock)});
        QMetaObject::invokeMethod(&window, "OnBatchEditTags");
        return static_cast<double>(clock.nsecsElapsed()) / 1e9;
    }

private:
    MainWindow window{nullptr};
    QListWidget* const list = Child<QListWidget>(window, "listAudioFiles");

    /// Says Yes, after which the work begins.
    static Answer StartingClock(QElapsedTimer& clock)
    {
        return [&clock](QWidget* shown) {
            QWidget* const yes = qobject_cast<QMessageBox*>(shown)->button(QMessageBox::Yes);
            clock.start();
            QTest::mouseClick(yes, Qt::LeftButton);
        };
    }
};

/// Does by hand what a run cannot do without: opens each file once and copies it into its artist's folder.
double ProcessBare(const QString& folder, const QString& output)
{
    Empty(output);
    const QStringList paths = FilesBelow(folder);
    return SecondsInThread([&] {
        TagManager tags;
        QSet<QString> made;
        for (const QString& path : paths) {
            const QString target = output + '/' + tags.ReadFile(path).Artist;
            if (!made.contains(target))
                QDir().mkpath(target);
            made.insert(target);
            QFile::copy(path, target + '/' + QFileInfo(path).fileName());
        }
    });
}

double CopyBare(const QString& folder, const QString& output)
{
    Empty(output);
    const QStringList paths = FilesBelow(folder);
    return SecondsInThread([&] {
        for (const QString& path : paths)
            QFile::copy(path, output + '/' + QFileInfo(path).fileName());
    });
}

/// Makes an ogg file of @p pages pages of sound, of 4 kB each. @return @p path.
QString MakeLongOgg(const QString& path, int pages)
{
    const QByteArray sample = Bytes(QStringLiteral(TEST_DATA_DIR "/bare.ogg"));
    const auto lastPage = sample.lastIndexOf("OggS");
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(sample.left(lastPage));
    QByteArray page = sample.mid(lastPage, 26) + char(17) + QByteArray(16, '\xff') + char(0);
    page += QByteArray(16 * 255, '\x55');
    for (int i = 1; i <= pages; ++i) {
        page[5] = i == pages ? 4 : 0; // the last one of its stream
        qToLittleEndian(i, page.data() + 6);
        qToLittleEndian(i + 1, page.data() + 18);
        file.write(page);
    }
    if (!file.flush())
        qFatal("cannot make %s", qPrintable(path));
    return path;
}

/// Opens and saves each file once, where it is.
double SaveBare(const QString& folder, const char* text)
{
    const QStringList paths = FilesBelow(folder);
    return Seconds([&] {
        for (const QString& path : paths) {
            TagLib::FileRef file(QFile::encodeName(path).constData(), false);
            file.tag()->setAlbum(text);
            file.save();
        }
    });
}

void Flush(QFile& file)
{
    if (!file.isOpen() || !file.flush() || fsync(file.handle()) != 0)
        qFatal("cannot flush %s", qPrintable(file.fileName()));
}

/// The same, and waits until each file is on the disk.
double SaveFlushed(const QString& folder, const char* text)
{
    const QStringList paths = FilesBelow(folder);
    return Seconds([&] {
        for (const QString& path : paths) {
            {
                TagLib::FileRef reference(QFile::encodeName(path).constData(), false);
                reference.tag()->setAlbum(text);
                reference.save();
            }
            QFile file(path);
            file.open(QIODevice::ReadWrite);
            Flush(file);
        }
    });
}

/// Reads each file, writes it once to a new one, flushed, and puts that in its place, as whoever moves the sound has
/// to.
double RewriteFlushed(const QString& folder)
{
    const QStringList paths = FilesBelow(folder);
    return Seconds([&] {
        for (const QString& path : paths) {
            QFile source(path), copy(path + ".new");
            copy.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
            if (!source.open(QIODevice::ReadOnly) || copy.write(source.readAll()) != source.size())
                qFatal("cannot write %s", qPrintable(copy.fileName()));
            Flush(copy);
            std::rename(QFile::encodeName(copy.fileName()).constData(), QFile::encodeName(path).constData());
        }
    });
}

/// The megabytes that this process has handed to the system to write so far, in-kernel copies among them.
double MegabytesWritten()
{
    for (const QByteArray& line : Bytes("/proc/self/io").split('\n')) {
        if (line.startsWith("wchar:"))
            return line.mid(6).toDouble() / 1e6;
    }
    return 0;
}

/// What a flush does: its work, nothing, or what a slow disk does. That waits for its next commit when anything was
/// written since the last one, and for a tenth of that otherwise.
enum class Flushing { Real, None, Slow } flushing = Flushing::Real;
int commits = 0;

[[maybe_unused]] int FlushPretended()
{
    static double flushed = 0;
    constexpr useconds_t commitTime = 20000; // microseconds
    if (flushing == Flushing::None)
        return 0;
    const double written = MegabytesWritten();
    const bool isCommit = written > flushed;
    flushed = written;
    commits += isCommit;
    return usleep(isCommit ? commitTime : commitTime / 10);
}

/// The three steps of the worker: until the first file is copied, until the last one is, and deleting if wanted.
std::array<double, 3> Steps(const QString& folder, const QString& output, bool deletes)
{
    Empty(output);
    ProcessThread worker(nullptr);
    TagManager tags;
    for (const QString& path : FilesBelow(folder))
        worker.files += tags.ReadFile(path);
    worker.settings = {1, 0, {}, false, false, true, output, deletes};
    const auto count = worker.files.size();
    QElapsedTimer clock;
    std::array<qint64, 3> ends{};
    QObject::connect(
        &worker, &ProcessThread::SetProgress, &worker,
        [&](int handled) {
            if (handled == 1 || handled == count)
                ends[handled == 1 ? 0 : 1] = clock.nsecsElapsed();
        },
        Qt::DirectConnection);
    clock.start();
    worker.start();
    worker.wait();
    ends[2] = clock.nsecsElapsed();
    const auto seconds = [](qint64 nanoseconds) { return static_cast<double>(nanoseconds) / 1e9; };
    return {seconds(ends[0]), seconds(ends[1] - ends[0]), seconds(ends[2] - ends[1])};
}

/// From the first file on, the last flush included.
double Copying(const QString& folder, const QString& output)
{
    const auto steps = Steps(folder, output, false);
    return steps[1] + steps[2];
}

/// The peak of a child's memory that does @p what, in megabytes.
double ChildMegabytes(const QStringList& what)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), what);
    child.waitForFinished(-1);
    const double megabytes = child.readAllStandardOutput().trimmed().toDouble();
    if (megabytes <= 0)
        qFatal("a child that lists files failed");
    return megabytes;
}

/// A child's memory with an empty window, or with the files of a folder.
int ReportMemory(const QStringList& arguments)
{
    Window window;
    if (arguments.at(0) == "--list")
        window.Add({arguments.at(1)});
    // Not what getrusage() says: that begins with the parent's peak.
    for (const QByteArray& line : Bytes("/proc/self/status").split('\n')) {
        if (line.startsWith("VmHWM:"))
            std::printf("%.1f\n", line.simplified().split(' ').at(1).toDouble() / 1024); // of kilobytes
    }
    return 0;
}

/// A child that is a window until its first picture, in its parent's home.
int ShowWindow()
{
    MainWindow window(nullptr);
    window.show();
    const bool exposed = QTest::qWaitForWindowExposed(&window);
    window.repaint();
    return exposed ? 0 : 1;
}

std::unique_ptr<Window> Listed(const QString& folder)
{
    auto window = std::make_unique<Window>();
    window->Add({folder});
    return window;
}

Timed Adding(const QString& folder)
{
    return [folder] { return Window().Add({folder}); };
}

void MeasureStart(const QString&)
{
    const auto run = [](const QString& program, const QStringList& arguments) {
        return [=] {
            int code = 0;
            const double seconds = Seconds([&] { code = QProcess::execute(program, arguments); });
            if (code != 0)
                qFatal("%s failed", qPrintable(program));
            return seconds;
        };
    };
    // Ours loads Qt Multimedia, its 27 libraries, and a form with pictures. Qt 6 was seen to take up to 2.7 times as
    // long.
    constexpr double bound = QT_VERSION_MAJOR < 6 ? 2.25 : 3.25;
    Compare("start to the first painted window", run(QCoreApplication::applicationFilePath(), {"--start"}),
            "a bare window with a list", run(QCoreApplication::applicationDirPath() + "/orvanto-bare-window", {}),
            bound, 15);
}

void MeasureRebuild(const QString& place)
{
    const auto medium = Listed(MakeLibrary(place + "/10000", 10000));
    Compare(
        "rebuild 10,000 rows, pumping", [&] { return medium->Rebuild(); }, "the same loop without pumping",
        [&] { return medium->RebuildWithoutPumping(); }, 2);
}

void MeasureAdd(const QString& place)
{
    const QString medium = MakeLibrary(place + "/10000", 10000);
    Compare(
        "add 10,000 small files", Adding(medium), "one opening each, rows without pumping",
        [&] { return Window().AddBare(medium); }, 1.5);
    const QString large = MakeLibrary(place + "/20000", 20000), huge = MakeLibrary(place + "/40000", 40000);
    Compare("add 40,000", Adding(huge), "20,000", Adding(large), 2.5, 3);
#ifdef Q_OS_LINUX
    const QString few = MakeLibrary(place + "/1000", 1000);
    Window window;
    Openings openings(few);
    window.Add({few});
    const QMap<QString, int> counts = openings.Take();
    if (counts.size() != 1000)
        qFatal("openings are not counted");
    Print("openings of each file while it is added", "", QString("%1 files").arg(counts.size()),
          *std::max_element(counts.begin(), counts.end()), 1);
#endif
}

void MeasureDrop(const QString& place)
{
    QStringList folders;
    for (int i = 0; i < 200; ++i)
        folders += MakeLibrary(QString("%1/many/%2").arg(place).arg(i), 25);
    Compare(
        "drop 200 folders of 25 files", [&] { return Window().Add(folders); }, "one folder of 5,000",
        Adding(MakeLibrary(place + "/5000", 5000)), 2);
}

void MeasureProcess(const QString& place)
{
    const QString out = place + "/out";
    for (const int count : {1000, 10000}) {
        const QString folder = MakeLibrary(QString("%1/%2").arg(place).arg(count), count);
        const auto window = Listed(folder);
        // Painting the bar a hundred times and laying out the new list weigh more on the small run.
        Compare(
            QString("process %1 files").arg(count), [&] { return window->Process(out); },
            "one opening, QFile::copy, the same folders", [&] { return ProcessBare(folder, out); },
            count == 1000 ? 2 : 1.5);
    }
    const QString folder = place + "/10000";
    Compare(
        "worker: copy 10,000 small files", [&] { return Copying(folder, out); }, "QFile::copy",
        [&] { return CopyBare(folder, out); }, 1.15);
}

void MeasureSteps(const QString& place)
{
    std::array<std::array<std::vector<double>, 3>, 2> times;
    for (int round = 0; round < 3; ++round) {
        for (std::size_t size = 0; size < 2; ++size) {
            const QString folder = MakeLibrary(place + "/steps", size ? 20000 : 10000);
            MakeArtistsDistinct(folder);
            const auto seconds = Steps(folder, place + "/out", true);
            QDir(folder).removeRecursively();
            for (std::size_t step = 0; step < 3; ++step)
                times.at(size).at(step).push_back(seconds.at(step));
        }
    }
    const char* const names[] = {"folders", "copying", "deleting"};
    for (std::size_t step = 0; step < 3; ++step) {
        const double half = Median(times[0].at(step)), whole = Median(times[1].at(step));
        Print(QString("worker: %1, 20,000 artists").arg(names[step]), "10,000",
              QString::asprintf("%.3f / %.3f s", whole, half), whole / half, 3);
    }
}

void MeasureSaving(const QString& place)
{
    const QString folder = MakeLibrary(place + "/1000", 1000);
    const auto window = Listed(folder);
    int edit = 0;
    Compare(
        "batch-edit 1,000 small files, one field",
        [&] { return window->BatchEdit("editAlbum", QString("Album %1").arg(++edit)); },
        "one opening and one save each", [&] { return SaveBare(folder, ++edit % 2 ? "Even" : "Odd"); },
        3); // each edit is read once more before it is written, and the window shows how far it is

    // Each edit needs one page more or less for the tags, so that all pages behind get new numbers.
    const QString ogg = MakeLongOgg(place + "/long.ogg", 45000);
    const auto title = [&edit] { return QString(++edit % 2 ? 70000 : 7, 'x'); };
    TagManager tags;
    tags.path = ogg;
    Compare(
        "edit the title of an ogg of 45,000 pages", [&] { return Seconds([&] { tags.SetInfo(Tag::Title, title()); }); },
        "TagLib in place",
        [&] {
            return Seconds([&] {
                TagLib::FileRef file(QFile::encodeName(ogg).constData(), false);
                file.tag()->setTitle(qPrintable(title()));
                file.save();
            });
        },
        1.5);
}

/// Files of real size, on the disk.
void MeasureDisk(const QString&)
{
    const QTemporaryDir disk(QDir::current().filePath("bench-XXXXXX"));
    const QString album = disk.filePath("album"), large = disk.filePath("large"), out = disk.filePath("out");

    // TagLib keeps room for tags of up to one hundredth of a file: less than that, but more than the edits need.
    constexpr int count = 60, room = 3000;
    TagManager tags;
    for (const QString& path : FilesBelow(MakeMusic(album, {"flac", "mp3"}, count, 7, 9))) {
        tags.path = path;
        tags.SetInfo(Tag::Album, QString(room, 'x'));
        tags.SetInfo(Tag::Album, "Album");
    }
    const auto window = Listed(album);
    int edit = 0;
    const Timed ours = [&] { return window->BatchEdit("editAlbum", QString("Album %1").arg(++edit)); };
    sync();
    Compare(
        "batch-edit 60 files of 7 to 15 MB, texts fit", ours, "TagLib in place, flushed",
        [&] { return SaveFlushed(album, ++edit % 2 ? "Even" : "Odd"); }, 3); // the bar is painted for each
    const double before = MegabytesWritten();
    ours();
    const double written = MegabytesWritten() - before;
    Print("the same, MB written", "", QString("%1 files").arg(count), written, 2);
    // Each text is longer than the room that TagLib makes beyond the one before.
    int length = room;
    Compare(
        "batch-edit the same files, audio moves",
        [&] { return window->BatchEdit("editAlbum", QString(length += 7000, 'x')); },
        "reading and writing each once, flushed", [&] { return RewriteFlushed(album); }, 1.3, 3);

    MakeMusic(large, {"mp3"}, 200, 4, 9);
    const auto settled = [&out](const Timed& work) {
        return [&out, work] {
            Empty(out);
            sync();
            return work();
        };
    };
    Compare("worker: copy 200 files of 4 to 12 MB", settled([&] { return Copying(large, out); }), "QFile::copy",
            settled([&] { return CopyBare(large, out); }), 1.1, 3);
}

void MeasureLargeLibrary(const QString& place)
{
    const QString library = MakeLibrary(place + "/50000", 50000);
    const double empty = ChildMegabytes({"--empty"}), full = ChildMegabytes({"--list", library});
    Print("memory with 50,000 files listed, MB", "above an empty window",
          QString::asprintf("%.1f / %.1f MB", full, empty), full - empty, 60);

    Window window;
    const auto freeze = [](const char* work, const std::function<void()>& perform) {
        const Freeze meter;
        const double seconds = Seconds(perform);
        Print(QString("longest freeze, ms: %1 50,000").arg(work), "", QString::asprintf("%.1f s in all", seconds),
              static_cast<double>(meter.Longest()), 100);
    };
    freeze("add", [&] { window.Add({library}); });
    freeze("rebuild", [&] { window.Rebuild(); });
    freeze("process", [&] { window.Process(place + "/out"); });
    freeze("batch-edit", [&] { window.BatchEdit("editTitle", "www.tone.com"); });
    Empty(place + "/out");
    freeze("erase, process", [&] { window.Erase(place + "/out"); });
}

/// Waiting for a disk that takes long for each flush.
void MeasureFlush([[maybe_unused]] const QString& place)
{
#ifdef Q_OS_LINUX
    const QTemporaryDir folder(QDir::current().filePath("bench-XXXXXX"));
    const auto measure = [](const char* work, const QString& music, const QString& out, int bound) {
        const auto seconds = [&](Flushing pretended) {
            flushing = pretended;
            commits = 0;
            const auto steps = Steps(music, out, false);
            flushing = Flushing::Real;
            return steps[0] + steps[1] + steps[2];
        };
        seconds(Flushing::None); // cold memory
        const double bare = seconds(Flushing::None), slow = seconds(Flushing::Slow);
        Print(QString("worker: commits, ") + work, "the same without flushes",
              QString::asprintf("%.3f / %.3f s", slow, bare), commits, bound);
    };
    measure("1,000 small files", MakeLibrary(place + "/1000", 1000), place + "/out", 1000 / 16);
    measure("60 files of 7 and 8 MB", MakeMusic(folder.filePath("music"), {"mp3"}, 60, 7, 2), folder.filePath("out"),
            (60 * 15 / 2 + 63) / 64);
#endif
}

constexpr std::pair<const char*, void (*)(const QString&)> sections[] = {
    {"start", MeasureStart},     {"rebuild", MeasureRebuild},    {"add", MeasureAdd},       {"drop", MeasureDrop},
    {"process", MeasureProcess}, {"steps", MeasureSteps},        {"saving", MeasureSaving}, {"disk", MeasureDisk},
    {"flush", MeasureFlush},     {"large", MeasureLargeLibrary},
};
} // namespace

#ifdef Q_OS_LINUX
/// In front of the system's own.
extern "C" int fsync(int file)
{
    return flushing == Flushing::Real ? static_cast<int>(syscall(SYS_fsync, file)) : FlushPretended();
}
#endif

int main(int argc, char** argv)
{
    NativeLookingApplication::Prepare();
    NativeLookingApplication application(argc, argv);
    const QStringList arguments = application.arguments().mid(1);
    if (arguments.value(0) == "--start")
        return ShowWindow();
    const Sandbox sandbox;
    if (arguments.value(0).startsWith("--"))
        return ReportMemory(arguments);
    for (const QString& argument : arguments) {
        const auto isNamed = [&argument](const auto& section) { return argument == section.first; };
        if (std::none_of(std::begin(sections), std::end(sections), isNamed))
            qFatal("there is no section %s", qPrintable(argument));
    }
    std::printf("| %-46s | %-44s | %15s | %6s | %6s | %s |\n", "work", "against", "measured", "ratio", "bound",
                "holds");
    std::printf("|---|---|---|---:|---:|---|\n");
    for (const auto& [name, measure] : sections) {
        const QTemporaryDir place;
        if (arguments.isEmpty() || arguments.contains(name))
            measure(place.path());
    }
    std::printf("\n%d rows fall short.\n", shortfalls);
    return shortfalls ? 1 : 0;
}
