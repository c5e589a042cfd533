#include "demo/AudioSamples.h"
#include "files/CopyGroup.h"
#include "files/EditedFile.h"
#include "files/FailureLog.h"
#include "files/FileNames.h"
#include "files/TextFile.h"
#include "processing/ProcessThread.h"
#include "tags/TagManager.h"
#include "tests/Rows.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>

namespace
{
/// What a system call does instead of its work: it fails with the error that this returns, unless that is 0, or does
/// half of what it was asked to.
std::function<int(const QByteArray& call)> onCall;
constexpr int half = -1;

size_t Half(size_t size) // of what is read or written
{
    return (size + 1) / 2;
}

template <class Argument>
Argument Half(Argument other)
{
    return other;
}

template <class... Arguments>
long Call(const char* name, long number, Arguments... arguments)
{
    const int error = onCall ? onCall(name) : 0;
    if (error == 0)
        return syscall(number, arguments...);
    if (error == half)
        return syscall(number, Half(arguments)...);
    errno = error;
    return -1;
}
} // namespace

/// Puts a function in front of the system's own.
#define REPLACE(type, name, parameters, ...)                                                                           \
    extern "C" type name parameters                                                                                    \
    {                                                                                                                  \
        return static_cast<type>(Call(#name, __VA_ARGS__));                                                            \
    }
REPLACE(int, fsync, (int file), SYS_fsync, file)
REPLACE(int, fchmod, (int file, mode_t mode) noexcept, SYS_fchmod, file, mode)
REPLACE(int, rename, (const char* from, const char* to) noexcept, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0)
REPLACE(int, renameat2, (int from, const char* old, int to, const char* name, unsigned int flags) noexcept,
        SYS_renameat2, from, old, to, name, flags)
REPLACE(ssize_t, copy_file_range, (int from, off64_t* start, int to, off64_t* end, size_t size, unsigned int flags),
        SYS_copy_file_range, from, start, to, end, size, flags)
REPLACE(ssize_t, sendfile, (int to, int from, off_t* start, size_t size) noexcept, SYS_sendfile, to, from, start, size)
REPLACE(int, fchown, (int file, uid_t owner, gid_t group) noexcept, SYS_fchown, file, owner, group)
REPLACE(int, sync_file_range, (int file, off64_t start, off64_t size, unsigned int flags), SYS_sync_file_range, file,
        start, size, flags)
REPLACE(int, ftruncate, (int file, off_t size) noexcept, SYS_ftruncate, file, size)
REPLACE(int, close, (int file), SYS_close, file)
REPLACE(int, link, (const char* from, const char* to) noexcept, SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0)
REPLACE(int, unlink, (const char* name) noexcept, SYS_unlinkat, AT_FDCWD, name, 0)
REPLACE(ssize_t, pread, (int file, void* bytes, size_t size, off_t at), SYS_pread64, file, bytes, size, at)
REPLACE(ssize_t, pwrite, (int file, const void* bytes, size_t size, off_t at), SYS_pwrite64, file, bytes, size, at)
extern "C" int open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const bool makesFile = flags & O_CREAT || (flags & O_TMPFILE) == O_TMPFILE;
    const mode_t mode = makesFile ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const char* const call = !(flags & O_CLOEXEC) ? "leak"
                             : flags & O_EXCL     ? "create"
                             : flags & O_NONBLOCK ? "open"
                                                  : "wait";
    return static_cast<int>(Call(call, SYS_openat, AT_FDCWD, name, flags, mode));
}

/// The layer that writes: whatever the disk does, a file is as it was or as it was meant to be.
class TestFiles : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    const bool isRoot = geteuid() == 0;
    bool happened = true; ///< what At() was told

    QString In(const QString& name) const { return folder->filePath(name); }
    QByteArray Path(const QString& name) const { return QFile::encodeName(In(name)); }
    QStringList Names() const { return FilesBelow(folder->path()).replaceInStrings(folder->path() + '/', ""); }

    /// For onCall: at "CALL NTH WHAT", such as "fsync 2 EIO", the call fails with that error, or does "half" of its
    /// work; else "stop" calls @p stop, "sleep" takes a second, and "a.mp3 goes" does that to the file. NTH may be
    /// "each", or "twice" for the first two. After "; ", another may follow; the test fails unless the last call is
    /// made.
    std::function<int(const QByteArray& call)> At(const QString& events, const std::function<void()>& stop = {})
    {
        happened = events.isEmpty();
        return [=, counts = QMap<QByteArray, int>()](const QByteArray& call) mutable {
            const QString number = QString::number(++counts[call]);
            for (const QString& event : events.split("; ")) {
                const QString nth = event.section(' ', 1, 1), what = event.section(' ', 2);
                const bool isTime = nth == "each" || nth == number || (nth == "twice" && counts[call] <= 2);
                if (!isTime || event.section(' ', 0, 0) != call)
                    continue;
                happened = happened || events.endsWith(event);
                return Happen(what, stop);
            }
            return 0;
        };
    }
    int Happen(const QString& what, const std::function<void()>& stop)
    {
        static const QMap<QString, int> errors{{"EACCES", EACCES},           {"EEXIST", EEXIST}, {"EINTR", EINTR},
                                               {"EINVAL", EINVAL},           {"EIO", EIO},       {"ENOSPC", ENOSPC},
                                               {"ENOSYS", ENOSYS},           {"EPERM", EPERM},   {"EXDEV", EXDEV},
                                               {"EWOULDBLOCK", EWOULDBLOCK}, {"half", half}};
        const QString path = In(what.section(' ', 0, 0));
        if (what == "stop")
            stop();
        else if (what == "sleep")
            usleep(1100000);
        else if (what.endsWith(" is cut"))
            QFile::resize(path, 100);
        else if (what.endsWith(" is edited"))
            EditAsSomebody(path);
        else if (!errors.contains(what))
            QFile::remove(path);
        if (what.endsWith(" appears"))
            PutBytes(path, "another");
        else if (what.endsWith(" is a folder"))
            QDir().mkdir(path);
        else if (what.endsWith(" is the original"))
            link(Path(Names().constFirst()), QFile::encodeName(path));
        return errors.value(what);
    }

    /// Only the time of any change betrays this edit.
    static void EditAsSomebody(const QString& path)
    {
        const timespec times[] = {{0, UTIME_OMIT}, FactsOf(path)->modified};
        TagManager tags;
        tags.path = path;
        tags.SetInfo(Tag::Artist, "Somebody");
        utimensat(AT_FDCWD, QFile::encodeName(path), times, 0);
    }

    /// Copies files of folder @p from to the folder "out", in one group. @return what became of them.
    QString Copy(const QString& from, const QStringList& names, const std::function<bool()>& goOn) const
    {
        QVector<const char*> results(names.size(), "nothing");
        CopyGroup group(goOn, [&results](int row, const SCopy& copy) {
            const char* const words[] = {"copied", "failed", "stopped"};
            results[row] = words[static_cast<int>(copy.result)];
        });
        for (int row = 0; row < names.size(); ++row) {
            group.FinishBefore(In("out/" + names.at(row)));
            group.Add(row, In(from + names.at(row)), In("out/" + names.at(row)));
        }
        group.Finish();
        return QStringList(results.begin(), results.end()).join(' ');
    }

    /// Copies "a.mp3" to "out", edits its title, saves it as a profile, or removes it because there is "b.mp3". @return
    /// what the call says.
    bool Work(const QString& what) const
    {
        if (what == "copy")
            return Copy("", {"a.mp3"}, [] { return true; }) == "copied";
        if (what == "remove")
            return RemoveFile(In("a.mp3"), In("b.mp3"));
        if (what == "profile")
            return WriteWholeFile(In("a.mp3"), "profile");
        TagManager tags;
        tags.path = In("a.mp3");
        return tags.SetInfo(Tag::Title, what.startsWith("moves") ? QString(9999, 'm') : "Title with " + what);
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        PutSample("full.mp3", In("a.mp3"));
        QVERIFY(QDir().mkdir(In("out")) && (!isRoot || chown(Path("a.mp3"), 4711, 4712) == 0));
        Work("room");
    }
    void cleanup()
    {
        onCall = nullptr;
        QVERIFY2(std::exchange(happened, true), "the last call of the row is not made");
    }

    void readErrorsHarmNothing()
    {
        // Long enough for several readings.
        const QByteArray zeros(0xFFF8, '\0'), atom = QByteArray("\0\1\0\0free", 8) + zeros,
                                              chunk = QByteArray("junk\xF8\xFF\0\0", 8) + zeros;
        QByteArray wave = SampleBytes("bare.wav") + chunk + chunk;
        qToLittleEndian(static_cast<quint32>(wave.size() - 8), wave.data() + 4);
        for (const QByteArray& content : {SampleBytes("bare.mp4") + atom + atom, wave}) {
            for (int nth = 1; nth < 9; ++nth) {
                PutBytes(In("a.mp3"), content);
                onCall = At(QString("pread %1 EIO").arg(nth));
                Work("moves");
                QVERIFY2(Bytes(In("a.mp3")) == content, qPrintable(QString("reading %1").arg(nth)));
            }
        }
    }

    void failingCalls_data()
    {
        // What is there afterwards, with "*" for another content, and the reason that is logged.
        const QString copied = "a.mp3 out/a.mp3", failed = "fails a.mp3", edited = "a.mp3*", kept = "a.mp3",
                      byHand = "copy copy_file_range each ENOSYS; sendfile each ENOSYS; ",
                      ioError = "Input/output error", diskFull = "No space left on device";
        AddRows({"then", "reason"},
                {{"copy fsync 1 EIO", failed, ioError},
                 {"copy create 1 ENOSPC", failed, diskFull},
                 {"copy fsync each EINVAL", copied}, // no such call on this disk
                 {"copy fsync twice EINTR", copied},
                 {"copy open each EWOULDBLOCK", copied}, // under a lease
                 {byHand + "pread each half", copied},
                 {byHand + "pread each EIO", failed, ioError},
                 {byHand + "pwrite each half", copied},
                 {byHand + "pwrite twice EINTR", copied},
                 {byHand + "pwrite 1 ENOSPC", failed, diskFull},
                 {"copy renameat2 1 EINVAL", copied},
                 {"copy renameat2 1 EINVAL; unlink 1 EIO", failed, ioError},
                 {"copy renameat2 1 EINVAL; link 1 EPERM", copied}, // exFAT
                 {"copy close each EIO", failed, ioError},
                 {"copy copy_file_range each EXDEV", copied},
                 {"copy copy_file_range each half", copied},
                 {"copy copy_file_range each ENOSYS; sendfile each half", copied},
                 {"copy fchmod each EPERM", copied},
                 {"fits pwrite 2 EIO", kept, ioError},
                 {"fits pwrite each half", edited},
                 {"fits pread twice EINTR", edited},
                 {"fits open each EWOULDBLOCK", edited},
                 {"fits open twice EINTR", edited},
                 {"fits open 2 EACCES", kept, "Permission denied"},
                 {"fits fsync 1 EIO", kept, ioError},
                 {"moves create 1 ENOSPC", kept, diskFull},
                 {"moves create 1 EEXIST", edited}, // the hidden name is taken
                 {"moves pwrite 1 ENOSPC", kept, diskFull},
                 {"moves fsync 1 EIO", kept, ioError},
                 {"moves rename 1 EACCES", kept, "Permission denied"},
                 {"moves fchmod each EPERM", edited},
                 {"moves-604 fchown each EPERM", edited},
                 {"moves-644 fchown each EPERM", edited},
                 {"moves-664 fchown 1 EPERM", edited},                             // the group can be kept
                 {"moves-664 fchown each EPERM", kept, "Operation not permitted"}, // the group may do more
                 // The first two readings are those of the tags, to the end.
                 {"fits pread 3 a.mp3 is edited", "a.mp3* by Somebody, Title with fits"},
                 {"fits pread 3 a.mp3 goes", "fails"},
                 {"moves fsync 1 a.mp3 is edited", "a.mp3* by Somebody, mmmmmmmmmmmmmmm"},
                 {"copy fsync 1 a.mp3 is edited", "fails a.mp3* by Somebody, Title with room",
                  "Another program has changed it meanwhile"},
                 {"profile rename 1 EIO", kept, ioError},
                 {"profile wait 1 EACCES", edited}, // in a folder that takes no other file
                 {"profile wait each EACCES", failed, "Permission denied"},
                 {"remove", "b.mp3*"},
                 {"remove renameat2 1 b.mp3 goes", failed},                    // the same file, mounted twice
                 {"remove open 1 b.mp3 is the original", "fails a.mp3 b.mp3"}, // on a server that opens it all the same
                 {"remove renameat2 1 b.mp3 is a folder", failed},
                 {"remove open 1 EIO", "fails a.mp3 b.mp3*"},
                 {"remove renameat2 1 EACCES", "fails a.mp3 b.mp3*"},
                 {"remove renameat2 1 EEXIST", "b.mp3*"}, // the hidden name is taken
                 {"remove renameat2 1 EINVAL", "b.mp3*"}, // no renaming without replacing on this disk
                 {"remove unlink 1 EACCES", "fails a.mp3 b.mp3*"}});
    }
    void failingCalls()
    {
        QFETCH(QString, reason);
        const QString row = QTest::currentDataTag(), work = row.section(' ', 0, 0);
        const QByteArray before = Bytes(In("a.mp3"));
        if (work == "remove")
            PutBytes(In("b.mp3"), "another");
        if (const uint mode = work.section('-', 1).toUInt(nullptr, 8)) {
            if (!isRoot)
                QSKIP("only root can give a file away");
            QVERIFY(chmod(Path("a.mp3"), mode) == 0);
        }
        onCall = At(row.section(' ', 1));
        if (!reason.isEmpty()) { // which must be logged
            const char* const notDone = work == "copy" ? notCopied : work == "profile" ? "Could not write" : notSaved;
            QTest::ignoreMessage(QtWarningMsg, qPrintable(QString("%1 %2: %3").arg(notDone, In("a.mp3"), reason)));
        }
        QStringList then(Work(work) ? QStringList() : QStringList("fails"));
        onCall = nullptr;
        for (const QString& name : Names())
            then += name + (Bytes(In(name)) == before ? "" : "*");
        const SAudioFile file = TagManager().ReadFile(In("a.mp3"));
        if (row.endsWith("is edited"))
            then += "by " + file.Artist + ", " + file.Title.left(15);
        QTEST(then.join(' '), "then");
    }

    void keepsWhatBelongsToAFile()
    {
        const QByteArray path = Path("a.mp3");
        QCOMPARE(link(path, Path("linked.mp3")), 0);
        QCOMPARE(chmod(path, isRoot ? 06604 : 0604), 0);
        setxattr(path, "user.mood", "calm", 4, 0); // which not every disk can keep
        const auto belongings = [&](const QString& name) {
            char mood[5] = {};
            getxattr(Path(name), "user.mood", mood, sizeof mood);
            const auto facts = FactsOf(In(name));
            return facts ? QString("%1 %2 %3 %4").arg(facts->mode).arg(facts->owner).arg(facts->group).arg(mood) : "";
        };
        const QString before = belongings("a.mp3");
        Work("fits");
        QVERIFY(Bytes(In("a.mp3")) == Bytes(In("linked.mp3")));
        const timespec times[] = {{981173105, 123000000}, {981173106, 789000000}};
        QVERIFY(utimensat(AT_FDCWD, path, times, 0) == 0);
        QVERIFY(Work("copy"));
        QCOMPARE(FactsOf(In("out/a.mp3"))->accessed.tv_sec, times[0].tv_sec);
        const QString copy = belongings("out/a.mp3"); // but for the owner, as whom nobody may run it then
        QCOMPARE(copy.section(' ', 0, 0).toUInt(), before.section(' ', 0, 0).toUInt() & ~06000u);
        QCOMPARE(copy.section(' ', 3), before.section(' ', 3));
        QCOMPARE(QFileInfo(In("out/a.mp3")).lastModified().toMSecsSinceEpoch(), 981173106789);
        QVERIFY(!Work("copy")); // what is there stays
        Work("moves");
        QCOMPARE(belongings("a.mp3"), before);
        QVERIFY(Bytes(In("a.mp3")) != Bytes(In("linked.mp3")));
        QCOMPARE(Names(), QStringList({"a.mp3", "linked.mp3", "out/a.mp3"}));
    }

    void replacesFilesThatAreClosed()
    {
        QStringList open, names;
        const auto look = [&] {
            for (const QFileInfo& file : QDir("/proc/self/fd").entryInfoList(QDir::Files))
                open += file.symLinkTarget();
            names += Names();
        };
        onCall = At("rename 1 stop", look);
        Work("moves");
        look();
        QCOMPARE(open.filter(folder->path()), QStringList());
        static const QRegularExpression hidden("^\\.orvanto-\\w{6} a\\.mp3 a\\.mp3$");
        QVERIFY2(hidden.match(names.join(' ')).hasMatch(), qPrintable(names.join(' ')));
    }

    void edits_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 0; seed < 200; ++seed)
            QTest::addRow("%u", seed) << seed;
    }
    void edits()
    {
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        const auto pick = [&random](qint64 limit) { return random.bounded(static_cast<int>(limit)); };
        const bool keepsPlaces = pick(2), isDamaged = pick(20) == 0, isStopped = pick(20) == 0;
        QByteArray wanted(pick(2) ? 3000 : 3 << 20, '\0');
        random.generate(wanted.begin(), wanted.end());
        const QByteArray before = wanted;
        PutBytes(In("b"), before);
        const quint64 inode = FactsOf(In("b"))->inode;

        EditedFile file(In("b"));
        const auto replace = [&](qint64 start, int count, const QByteArray& bytes) {
            file.Replace(start, count, bytes);
            wanted.replace(static_cast<int>(start), count, bytes);
        };
        for (int edit = 0; edit < 20; ++edit) { // most of them over each other
            const int start = pick(pick(5) ? 200 : wanted.size() - 40), count = pick(40);
            replace(start, count, QByteArray(keepsPlaces ? count : pick(40), static_cast<char>('a' + edit)));
            const int at = pick(wanted.size()), length = pick(pick(2) ? 100 : 100000);
            QVERIFY(file.Read(at, length) == wanted.mid(at, length));
        }
        const int end = pick(3); // which an edit may move, where nothing is behind it
        replace(wanted.size() - end, end, QByteArray(pick(3), 'z'));
        EditedFile::SKept last{-1, 0, 0};
        for (const EditedFile::SKept& kept : file.KeptRanges()) {
            const char* const bytes = before.constData() + kept.start;
            QVERIFY(std::equal(bytes, bytes + kept.size, wanted.constData() + kept.now));
            QVERIFY(kept.start != last.start + last.size || kept.now != last.now + last.size); // or they are one
            last = kept;
        }
        const std::pair<qint64, qint64> beyond[] = {{file.Size() - 1, 2}, {file.Size() + 1, 0}, {-1, 1}, {1, -1}};
        if (isDamaged) // which leads a parser to such places
            file.Replace(beyond[seed % 4].first, beyond[seed % 4].second, "x");
        const QString calls[] = {"fsync 1 EIO", "ftruncate 1 EIO", QString("pwrite %1 ENOSPC").arg(pick(40))};
        onCall = At(calls[seed % 3]);
        const EditedFile::Saved saved = file.Save([&] { return !isStopped; });
        const bool isRefused = std::exchange(happened, true) || isDamaged || isStopped;
        QCOMPARE(saved, isRefused ? EditedFile::Saved::NotAtAll : EditedFile::Saved::Whole);
        QVERIFY(Bytes(In("b")) == (isRefused ? before : wanted));
        QCOMPARE(FactsOf(In("b"))->inode == inode, isRefused || keepsPlaces);
        QCOMPARE(Names(), QStringList({"a.mp3", "b"}));
    }

    void groups_data()
    {
        QString many = "0";
        for (int i = 1; i < 33; ++i)
            many += QString(" %1").arg(i);
        // An event is what happens at a call; the calls make a file, flush it, and give it its name.
        AddRows(
            {"names", "event", "results", "calls"},
            {{"together", "1 2 3", "", "copied copied copied", "mmmfffnnn"},
             {"a refused flush", "1 2 3", "fsync 2 EIO", "copied failed copied", "mmmfffnn"},
             {"a name that is taken meanwhile", "1 2 3", "fsync 3 out/2 appears", "copied failed copied", "mmmfffnnn"},
             {"the same where nothing else can be asked", "1 2 3",
              "fsync 3 out/2 appears; renameat2 each EINVAL; link each EPERM", "copied failed copied", "mmmfffnnn"},
             {"a refused name", "1 2 3", "renameat2 2 EIO", "copied failed copied", "mmmfffnnn"},
             {"a changed source", "1 2 3", "fsync 3 in/2 is cut", "copied failed copied", "mmmfffnn"},
             {"a stop with two waiting", "1 2 3", "create 3 stop", "stopped stopped stopped", "mmm"},
             {"a stop while they are flushed", "1 2 3", "fsync 1 stop", "stopped stopped stopped", "mmmf"},
             {"a stop while they are named", "1 2 3", "renameat2 2 stop", "copied copied stopped", "mmmfffnn"},
             {"equal names", "1 2 1", "", "copied copied failed", "mmffnnmfn"},
             {"letter case", "a A", "", "copied copied", "mfnmfn"},
             {"normal form", "\u00e9 e\u0301", "", "copied copied", "mfnmfn"},
             {"by way of a link", "f/1 l/1", "", "copied failed", "mfnmfn"},
             {"too large together", "1 65MB 40MB 2 39MB", "", "copied copied copied copied copied", "mmfnfnmmmffnnfn"},
             {"a second is over", "1 2MB", "create 2 sleep", "copied copied", "mmfnfn"},
             {"33", many, "", QString("copied ").repeated(33).chopped(1),
              QString(32, 'm') + QString(32, 'f') + QString(32, 'n') + "mfn"}});
    }
    void groups()
    {
        QFETCH(QString, names);
        QFETCH(QString, event);
        for (const QString place : {"in", "out"}) {
            QVERIFY(QDir().mkpath(In(place + "/f")));
            QVERIFY(QFile::link(In(place + "/f"), In(place + "/l")));
        }
        for (const QString& name : names.split(' ')) {
            PutBytes(In("in/" + name), name.toUtf8());
            if (name.endsWith("MB"))
                QVERIFY(QFile::resize(In("in/" + name), name.chopped(2).toInt() << 20));
        }
        QString calls;
        bool stopped = false;
        onCall = [&, happens = At(event, [&] { stopped = true; })](const QByteArray& call) {
            const QMap<QByteArray, QString> letters{{"create", "m"}, {"fsync", "f"}, {"renameat2", "n"}};
            calls += letters.value(call);
            return happens(call);
        };
        const QString results = Copy("in/", names.split(' '), [&] { return !stopped; });
        onCall = nullptr;
        QTEST(results, "results");
        QTEST(calls, "calls");
        const bool isTaken = event.contains("appears");
        QVERIFY(!isTaken || Bytes(In("out/2")) == "another");
        QCOMPARE(FilesBelow(In("out")).size(), results.count("copied") + (isTaken ? 1 : 0));
    }

    void originalsGoWhenAllIsProven_data()
    {
        QList<QStringList> rows{{"copied", "out", "", ""},
                                {"no opening of the output folder", "out", "open 2 EIO", "a.mp3"},
                                {"a folder that may not be read", "out", "open 2 EACCES", ""},
                                {"written while names are flushed", "out", "fsync 2 a.mp3 is cut", "a.mp3"},
                                {"the copy goes meanwhile", "out", "fsync 2 out/G/A/L/T.mp3 goes", "a.mp3"},
                                {"a folder takes its place", "out", "fsync 2 out/G/A/L/T.mp3 is a folder", "a.mp3"},
                                {"no writing of a large file", "out", "sync_file_range 1 EIO", "a.mp3"},
                                {"no early writing on this disk", "out", "sync_file_range each EINVAL", ""},
                                {"a stop within the file", "out", "copy_file_range 1 stop", "a.mp3"},
                                {"a stop while it waits", "out", "fsync 1 stop", "a.mp3"},
                                {"a stop between two originals", "out", "unlink 1 stop", "b.mp3"},
                                {"there, on another volume", "other", "", ""},
                                {"there, and itself", "other", "renameat2 1 other/G/A/L/T.mp3 goes", "a.mp3"}};
        // After that of the copy: the three levels, the output folder, the two above it, and where these were made.
        for (int flush = 2; flush < 9; ++flush)
            rows += {QString("no flush %1").arg(flush), "new/upper/out", QString("fsync %1 EIO").arg(flush), "a.mp3"};
        AddRows({"out", "event", "left"}, rows);
    }
    void originalsGoWhenAllIsProven()
    {
        QFETCH(QString, out);
        QFETCH(QString, event);
        QFETCH(QString, left);
        const QTemporaryDir other("/dev/shm/orvanto-XXXXXX");
        QVERIFY(QFile::link(other.path(), In("other")));
        if (out == "other") {
            const auto here = FactsOf(folder->path()), there = FactsOf(other.path());
            if (!there || here->device == there->device)
                QSKIP("there is no second file system");
            PutSample("bare.mp3", In("other/G/A/L/T.mp3"));
        }
        ProcessThread worker(nullptr);
        worker.files += {"T", "A", "L", "1999", "G", "7", In("a.mp3")};
        worker.settings = {10, 1, {}, false, false, true, In(out), true};
        if (event.startsWith("unlink"))
            worker.files += {"U", "A", "L", "1999", "G", "7", PutSample("full.mp3", In("b.mp3"))};
        QVERIFY(QFile::resize(In("a.mp3"), 3 << 20));
        onCall = At(event, [&worker] { worker.requestInterruption(); });
        worker.start();
        worker.wait();
        onCall = nullptr;
        const bool isStopped = event.endsWith("stop");
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files).join(' '), left);
        QCOMPARE(worker.failedPaths.size(), left.isEmpty() || isStopped ? 0 : 1);
        QCOMPARE(worker.end, isStopped ? RunEnd::Interrupted : RunEnd::Complete);
        if (isStopped && left == "a.mp3")
            QCOMPARE(Names().join(' '), left);
    }

    void profilesStayWhatTheyAre()
    {
        QVERIFY(chmod(Path("a.mp3"), 0640) == 0 && QDir(folder->path()).mkdir("full"));
        QVERIFY(QFile::link(In("a.mp3"), In("link")) && QFile::link(In("link"), In("chain")));
        QVERIFY(QFile::link(In("full/new"), In("dangling")) && mkfifo(Path("pipe"), 0600) == 0);
        QVERIFY(!WriteWholeFile(In("pipe"), "x")); // that nobody reads, and nobody waits for
        QFile pipe;
        QVERIFY(pipe.open(::open(Path("pipe"), O_RDONLY | O_NONBLOCK), QIODevice::ReadOnly));
        for (const char* const name : {"chain", "dangling", "pipe"})
            QVERIFY2(WriteWholeFile(In(name), name), name);
        QCOMPARE(Bytes(In("a.mp3")), QByteArray("chain"));
        QCOMPARE(FactsOf(In("a.mp3"))->mode & 0777, 0640u);
        QCOMPARE(Bytes(In("full/new")), QByteArray("dangling"));
        QCOMPARE(pipe.read(9), QByteArray("pipe"));
        for (const char* const name : {"link", "chain", "dangling"})
            QVERIFY2(QFileInfo(In(name)).isSymLink(), name);
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_files.moc"
