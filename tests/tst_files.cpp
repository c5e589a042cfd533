#include "demo/AudioSamples.h"
#include "files/CopyGroup.h"
#include "files/FailureLog.h"
#include "files/FileNames.h"
#include "files/TextFile.h"
#include "processing/ProcessThread.h"
#include "tags/PieceStream.h"
#include "tags/TagManager.h"
#include "tests/Rows.h"

#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <fileref.h>
#include <tag.h>

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

template <class... Arguments>
long Call(const char* name, long number, Arguments... arguments)
{
    const int error = onCall ? onCall(name) : 0;
    if (error == 0)
        return syscall(number, arguments...);
    errno = error;
    return -1;
}

/// Reading and writing, which may do half of it.
template <class Bytes>
ssize_t Transfer(const char* name, long number, int file, Bytes* bytes, size_t size, off_t start)
{
    const int error = onCall ? onCall(name) : 0;
    if (error == 0 || error == half)
        return syscall(number, file, bytes, error == half && size > 1 ? size / 2 : size, start);
    errno = error;
    return -1;
}

/// A system call that fails during some work.
struct FailingCall
{
    const char *work, *call;
    int nth; ///< 0 for each of them, -2 for the first two
    int error;
    bool done = false; ///< all the same
};
} // namespace
Q_DECLARE_METATYPE(FailingCall)

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
REPLACE(int, ftruncate, (int file, off_t size) noexcept, SYS_ftruncate, file, size)
REPLACE(int, unlink, (const char* name) noexcept, SYS_unlinkat, AT_FDCWD, name, 0)
extern "C" ssize_t pread(int file, void* bytes, size_t size, off_t start)
{
    return Transfer("pread", SYS_pread64, file, bytes, size, start);
}
extern "C" ssize_t pwrite(int file, const void* bytes, size_t size, off_t start)
{
    return Transfer("pwrite", SYS_pwrite64, file, bytes, size, start);
}
extern "C" int open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const char* const call = flags & O_EXCL ? "open new" : flags & O_NONBLOCK ? "open" : "open, waiting";
    return static_cast<int>(Call(call, SYS_openat, AT_FDCWD, name, flags, mode));
}

/// The layer that writes: whatever the disk does, a file is as it was or as it was meant to be.
class TestFiles : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    QString In(const QString& name) const { return folder->filePath(name); }
    QStringList Names() const { return QDir(folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    QByteArray Path(const QString& name) const { return QFile::encodeName(In(name)); }

    /// Copies each file of "in/" to the folder "out", in one group. @return what became of them.
    QString Copy(const QStringList& names, const std::function<bool()>& goOn) const
    {
        QVector<const char*> results(names.size(), "nothing");
        CopyGroup group(goOn, [&results](int row, const SCopy& copy) {
            const char* const words[] = {"copied", "failed", "stopped"};
            results[row] = words[static_cast<int>(copy.result)];
        });
        for (int row = 0; row < names.size(); ++row) {
            group.FinishBefore(In("out/" + names.at(row)));
            group.Add(row, In("in/" + names.at(row)), In("out/" + names.at(row)));
        }
        group.Finish();
        return QStringList(results.begin(), results.end()).join(' ');
    }

    /// For onCall: does something at the call that the row names as its event, "fsync 2".
    static std::function<int(const QByteArray& call)> AtEvent(const std::function<int()>& action)
    {
        QFETCH(QString, event);
        return [=, counts = QMap<QByteArray, int>()](const QByteArray& call) mutable {
            return QString("%1 %2").arg(QString(call)).arg(++counts[call]) == event ? action() : 0;
        };
    }

    /// Makes "copy.mp3" of "a.mp3", edits the title of that, or saves it as a profile. @return what the call says.
    bool Work(const QString& what) const
    {
        if (what == "copy") {
            bool copied = false;
            CopyGroup group([] { return true; },
                            [&](int, const SCopy& copy) { copied = copy.result == CopyResult::Copied; });
            group.Add(0, In("a.mp3"), In("copy.mp3"));
            group.Finish();
            return copied;
        }
        if (what == "profile")
            return WriteWholeFile(In("a.mp3"), "profile");
        TagManager tags;
        tags.path = In("a.mp3");
        return tags.SetInfo(Tag::Title, what == "moves" ? QString(9999, 'm') : "Title with " + what);
    }

private slots:
    void init()
    {
        onCall = nullptr;
        folder = std::make_unique<QTemporaryDir>();
        PutSample("full.mp3", In("a.mp3"));
        Work("room");
    }

    void piecesBecomeWhatTagLibWritesInPlace_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString& name : QDir(TEST_DATA_DIR).entryList({"full.*", "bare.*", "rich.*"}))
            QTest::newRow(qPrintable(name)) << name;
    }
    void piecesBecomeWhatTagLibWritesInPlace()
    {
        QFETCH(QString, name);
        const QString ours = PutSample(name, In("ours-" + name)), theirs = PutSample(name, In("theirs-" + name));
        for (const int length : {4000, 3990, 40, 30000, 0}) { // moves the sound, fits, shrinks, and both again
            const std::string title(static_cast<std::size_t>(length), 't');
            PieceStream stream(ours);
            stream.SetName(QFile::encodeName(ours));
            TagLib::FileRef edited(&stream), inPlace(QFile::encodeName(theirs).constData());
            for (TagLib::FileRef* const file : {&edited, &inPlace}) {
                file->tag()->setTitle(title);
                file->tag()->setYear(length ? 2000 : 0);
                QVERIFY(file->save());
            }
            QCOMPARE(stream.File().Save([] { return true; }), EditedFile::Saved::Whole);
            edited = inPlace = TagLib::FileRef();
            QVERIFY2(Bytes(ours) == Bytes(theirs), qPrintable(QString("a title of %1").arg(length)));
        }
    }

    void readErrorsHarmNothing()
    {
        // Long enough for several readings.
        const QByteArray zeros(0xFFF8, '\0'), atom = QByteArray("\0\1\0\0free", 8) + zeros,
                                              chunk = QByteArray("junk\xF8\xFF\0\0", 8) + zeros;
        QByteArray wave = Bytes(TEST_DATA_DIR "/bare.wav") + chunk + chunk;
        qToLittleEndian(static_cast<quint32>(wave.size() - 8), wave.data() + 4);
        for (const QByteArray& content : {Bytes(TEST_DATA_DIR "/bare.mp4") + atom + atom, wave}) {
            for (int nth = 1; nth < 9; ++nth) {
                QFile file(In("a.mp3"));
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
                file.close();
                onCall = [nth, count = 0](const QByteArray& call) mutable {
                    return call == "pread" && ++count >= nth ? EIO : 0;
                };
                Work("moves");
                QVERIFY2(Bytes(In("a.mp3")) == content, qPrintable(QString("reading %1").arg(nth)));
            }
        }
    }

    void failingCalls_data()
    {
        const FailingCall rows[] = {
            {"copy", "fsync", 1, EIO},
            {"copy", "fsync", 0, EINVAL, true}, // no such call on this disk
            {"copy", "fsync", -2, EINTR, true},
            {"copy", "open", 0, EWOULDBLOCK, true}, // under a lease
            {"copy", "pread", 0, half, true},
            {"copy", "pwrite", 0, half, true},
            {"copy", "pwrite", -2, EINTR, true},
            {"copy", "renameat2", 1, EINVAL, true},
            {"copy", "copy_file_range", 0, EXDEV, true},
            {"copy", "fchmod", 0, EPERM, true},
            {"copy", "pread", 0, EIO},
            {"copy", "pwrite", 1, ENOSPC},
            {"fits", "pwrite", 2, EIO},
            {"fits", "pwrite", 0, half, true},
            {"fits", "pread", -2, EINTR, true},
            {"fits", "open", 0, EWOULDBLOCK, true},
            {"fits", "fsync", 1, EIO},
            {"moves", "open new", 1, ENOSPC},
            {"moves", "pwrite", 1, ENOSPC},
            {"moves", "fsync", 1, EIO},
            {"moves", "rename", 1, EACCES},
            {"moves", "fchmod", 0, EPERM, true},
            {"profile", "rename", 1, EIO},
        };
        QTest::addColumn<FailingCall>("row");
        for (const FailingCall& row : rows)
            QTest::addRow("%s: %s %d, %s", row.work, row.call, row.nth,
                          row.error == half ? "half" : strerror(row.error))
                << row;
    }
    void failingCalls()
    {
        QFETCH(FailingCall, row);
        const QByteArray before = Bytes(In("a.mp3"));
        const bool copies = !qstrcmp(row.work, "copy");
        int count = 0;
        onCall = [&](const QByteArray& name) {
            // Reading and writing are the last resort of copying.
            if (copies && *row.call == 'p' && (name == "copy_file_range" || name == "sendfile"))
                return ENOSYS;
            return name == row.call && (++count == row.nth || row.nth == 0 || count <= -row.nth) ? row.error : 0;
        };
        if (!row.done && qstrcmp(row.work, "profile"))
            QTest::ignoreMessage(QtWarningMsg, qPrintable(QString("%1 %2: %3")
                                                              .arg(copies ? notCopied : notSaved, In("a.mp3"),
                                                                   strerror(row.error)))); // which must come
        const bool success = Work(row.work);
        onCall = nullptr;
        QVERIFY2(count > 0, "the call is not made");
        QCOMPARE(success, !copies || row.done);
        QCOMPARE(Bytes(In("a.mp3")) != before, !copies && row.done);
        QCOMPARE(Names().join(' '), QString(copies && row.done ? "a.mp3 copy.mp3" : "a.mp3"));
        QVERIFY(!copies || !row.done || Bytes(In("copy.mp3")) == before);
    }

    void keepsWhatBelongsToAFile()
    {
        const QByteArray path = QFile::encodeName(In("a.mp3"));
        QCOMPARE(link(path, QFile::encodeName(In("linked.mp3"))), 0);
        const bool isRoot = getuid() == 0;
        if (isRoot)
            QVERIFY(chown(path, 4711, 4712) == 0);
        QCOMPARE(chmod(path, isRoot ? 06604 : 0604), 0);
        const bool hasAttributes = setxattr(path, "user.mood", "calm", 4, 0) == 0; // not every disk has
        const auto belongings = [&](const QString& name) {
            char mood[5] = {};
            if (hasAttributes)
                getxattr(QFile::encodeName(In(name)), "user.mood", mood, sizeof mood);
            const auto facts = FactsOf(In(name));
            return facts ? QString("%1 %2 %3 %4").arg(facts->mode).arg(facts->owner).arg(facts->group).arg(mood) : "";
        };
        const QString before = belongings("a.mp3");
        Work("fits");
        QVERIFY(Bytes(In("a.mp3")) == Bytes(In("linked.mp3")));
        const timespec times[] = {{981173105, 123000000}, {981173106, 789000000}};
        QVERIFY(utimensat(AT_FDCWD, path, times, 0) == 0);
        QVERIFY(Work("copy"));
        QCOMPARE(FactsOf(In("copy.mp3"))->accessed.tv_sec, times[0].tv_sec);
        const QString copy = belongings("copy.mp3"); // but for the owner, as whom nobody may run it then
        QCOMPARE(copy.section(' ', 0, 0).toUInt(), before.section(' ', 0, 0).toUInt() & ~06000u);
        QCOMPARE(copy.section(' ', 3), before.section(' ', 3));
        QCOMPARE(QFileInfo(In("copy.mp3")).lastModified().toMSecsSinceEpoch(), 981173106789);
        QVERIFY(!Work("copy")); // what is there stays
        Work("moves");
        QCOMPARE(belongings("a.mp3"), before);
        QVERIFY(Bytes(In("a.mp3")) != Bytes(In("linked.mp3")));
        QCOMPARE(Names(), QStringList({"a.mp3", "copy.mp3", "linked.mp3"}));
    }

    void somebodyElsesChangeWins_data()
    {
        AddRows({"title"}, {{"fits", "Title with fits"}, {"moves", QString(9999, 'm')}, {"copy", "Title with room"}});
    }
    void somebodyElsesChangeWins()
    {
        const QString work = QTest::currentDataTag();
        QStringList shown; // before the new file is whole
        int calls = 0;
        onCall = [&](const QByteArray& call) {
            // The first two readings are those of the tags, to the end.
            if (call == (work == "fits" ? "pread" : "fsync") && ++calls == (work == "fits" ? 3 : 1)) {
                shown = QDir(folder->path()).entryList(QDir::Files);
                // Only the time of any change betrays this one.
                const SFileFacts facts = *FactsOf(In("a.mp3"));
                TagManager tags;
                tags.path = In("a.mp3");
                tags.SetInfo(Tag::Artist, "Somebody");
                const timespec times[] = {{0, UTIME_OMIT}, facts.modified};
                utimensat(AT_FDCWD, QFile::encodeName(tags.path), times, 0);
            }
            return 0;
        };
        Work(work);
        QCOMPARE(shown, QStringList("a.mp3"));
        const SAudioFile file = TagManager().ReadFile(In("a.mp3"));
        QCOMPARE(file.Artist, QString("Somebody"));
        QTEST(file.Title, "title");
        QCOMPARE(Names(), QStringList("a.mp3")); // half of either version is no copy
    }

    void nothingIsOpenAnyMoreWhenAFileIsReplaced()
    {
        int renamed = 0;
        QStringList open;
        onCall = [&](const QByteArray& call) {
            renamed += call == "rename";
            for (const QFileInfo& file : QDir("/proc/self/fd").entryInfoList(QDir::Files))
                open += call == "rename" ? file.symLinkTarget() : QString();
            return 0;
        };
        Work("moves");
        QCOMPARE(renamed, 1);
        QCOMPARE(open.filter(folder->path()), QStringList());
    }

    void badEditsAreNotSaved()
    {
        const QByteArray before = Bytes(In("a.mp3"));
        EditedFile file(In("a.mp3"));
        QCOMPARE(file.Read(file.Size() + 1, 4), QByteArray()); // as damaged files make TagLib do
        file.Replace(file.Size() - 1, 2, "x");
        QCOMPARE(file.Save([] { return true; }), EditedFile::Saved::NotAtAll);
        QVERIFY(Bytes(In("a.mp3")) == before);
        EditedFile shorter(In("a.mp3"));
        shorter.Truncate(shorter.Size() - 9);
        onCall = [](const QByteArray& call) { return call == "ftruncate" ? EIO : 0; };
        QCOMPARE(shorter.Save([] { return true; }), EditedFile::Saved::NotAtAll);
        QVERIFY(Bytes(In("a.mp3")) == before);
    }

    void groups_data()
    {
        QString many = "0";
        for (int i = 1; i < 33; ++i)
            many += QString(" %1").arg(i);
        // An event is what happens at a call; the calls make a file, flush it, and give it its name.
        AddRows(
            {"names", "event", "what", "results", "calls"},
            {{"together", "1 2 3", "", "", "copied copied copied", "mmmfffnnn"},
             {"a refused flush", "1 2 3", "fsync 2", "fails", "copied failed copied", "mmmfffnn"},
             {"a name that is taken meanwhile", "1 2 3", "fsync 3", "2 appears", "copied failed copied", "mmmfffnnn"},
             {"a refused name", "1 2 3", "renameat2 2", "fails", "copied failed copied", "mmmfffnnn"},
             {"a changed source", "1 2 3", "fsync 3", "2 is written", "copied failed copied", "mmmfffnn"},
             {"a stop with two waiting", "1 2 3", "open new 3", "stop", "stopped stopped stopped", "mmm"},
             {"a stop while they are flushed", "1 2 3", "fsync 1", "stop", "stopped stopped stopped", "mmmf"},
             {"a stop while they are named", "1 2 3", "renameat2 2", "stop", "copied copied stopped", "mmmfffnn"},
             {"equal names", "1 2 1", "", "", "copied copied failed", "mmffnnmfn"},
             {"letter case", "a A", "", "", "copied copied", "mfnmfn"},
             {"normal form", "\u00e9 e\u0301", "", "", "copied copied", "mfnmfn"},
             {"by way of a link", "f/1 l/1", "", "", "copied failed", "mfnmfn"},
             {"too large together", "1 65MB 2 40MB 39MB", "", "", "copied copied copied copied copied",
              "mmfnfnmmmffnnfn"},
             {"a second is over", "1 2MB", "open new 2", "a second", "copied copied", "mmfnfn"},
             {"33", many, "", "", QString("copied ").repeated(33).chopped(1),
              QString(32, 'm') + QString(32, 'f') + QString(32, 'n') + "mfn"}});
    }
    void groups()
    {
        QFETCH(QString, names);
        QFETCH(QString, what);
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
        bool stopped = false, slow = false;
        const auto happens = AtEvent([&] {
            stopped = what == "stop";
            slow = what == "a second";
            if (what == "2 is written")
                QFile::resize(In("in/2"), 100);
            if (what == "2 appears")
                PutBytes(In("out/2"), "another");
            return what == "fails" ? EIO : 0;
        });
        onCall = [&](const QByteArray& call) {
            const QMap<QByteArray, QString> letters{{"open new", "m"}, {"fsync", "f"}, {"renameat2", "n"}};
            calls += letters.value(call);
            return happens(call);
        };
        const QString results = Copy(names.split(' '), [&] {
            if (std::exchange(slow, false))
                usleep(1100000);
            return !stopped;
        });
        onCall = nullptr;
        QTEST(results, "results");
        QTEST(calls, "calls");
        QVERIFY(what != "2 appears" || Bytes(In("out/2")) == "another");
        QCOMPARE(FilesBelow(In("out")).size(), results.count("copied") + (what == "2 appears" ? 1 : 0));
    }

    void removesForAnotherFile_data()
    {
        AddRows({"event", "what", "then"},
                {{"another file", "", "", "removed"},
                 {"the same, mounted twice", "renameat2 1", "goes", "kept"},
                 {"the same, on a server that opens it all the same", "open 1", "is one", "kept"},
                 {"a folder", "renameat2 1", "is a folder", "kept"},
                 {"cannot be opened", "open 1", "EIO", "kept"},
                 {"no renaming aside", "renameat2 1", "EACCES", "kept"},
                 {"the hidden name is taken", "renameat2 1", "EEXIST", "removed"},
                 {"no renaming without replacing", "renameat2 1", "EINVAL", "removed"},
                 {"no deleting", "unlink 1", "EACCES", "kept"}});
    }
    void removesForAnotherFile()
    {
        QFETCH(QString, what);
        PutSample("bare.mp3", In("there.mp3"));
        const QByteArray content = Bytes(In("a.mp3"));
        onCall = AtEvent([&] {
            if (what == "goes" || what.startsWith("is"))
                QFile::remove(In("there.mp3"));
            if (what == "is a folder")
                QDir(folder->path()).mkdir("there.mp3");
            if (what == "is one")
                link(Path(Names().constFirst()), Path("there.mp3"));
            return QMap<QString, int>{{"EIO", EIO}, {"EACCES", EACCES}, {"EEXIST", EEXIST}, {"EINVAL", EINVAL}}[what];
        });
        const bool removed = RemoveFile(In("a.mp3"), In("there.mp3"));
        QTEST(QString(removed ? "removed" : "kept"), "then");
        QCOMPARE(Bytes(In("a.mp3")), removed ? QByteArray("<unreadable>") : content);
        QCOMPARE(Names().filter("orvanto"), QStringList());
    }

    void originalsGoWhenAllIsProven_data()
    {
        AddRows({"where", "event", "what", "left"},
                {{"copied", "out", "", "", ""},
                 // The first flush is that of the copy.
                 {"no flush of the album", "new/upper/out", "fsync 2", "fails", "a.mp3"},
                 {"no flush of the artist", "new/upper/out", "fsync 3", "fails", "a.mp3"},
                 {"no flush of the genre", "new/upper/out", "fsync 4", "fails", "a.mp3"},
                 {"no flush of the output folder", "new/upper/out", "fsync 5", "fails", "a.mp3"},
                 {"no flush of what was made above", "new/upper/out", "fsync 6", "fails", "a.mp3"},
                 {"no flush above that", "new/upper/out", "fsync 7", "fails", "a.mp3"},
                 {"no flush of the first", "new/upper/out", "fsync 8", "fails", "a.mp3"},
                 {"no opening of the output folder", "out", "open 2", "fails", "a.mp3"},
                 {"a folder that may not be read", "out", "open 2", "is forbidden", ""},
                 {"written while names are flushed", "out", "fsync 2", "is written", "a.mp3"},
                 {"the copy goes meanwhile", "out", "fsync 2", "copy goes", "a.mp3"},
                 {"a folder takes its place", "out", "fsync 2", "folder", "a.mp3"},
                 {"a stop within the file", "out", "copy_file_range 1", "stop", "a.mp3"},
                 {"a stop while it waits", "out", "fsync 1", "stop", "a.mp3"},
                 {"a stop between two originals", "out", "unlink 1", "stop", "b.mp3"},
                 {"there, on another volume", "other", "", "", ""},
                 {"there, and itself", "other", "renameat2 1", "copy goes", "a.mp3"}});
    }
    void originalsGoWhenAllIsProven()
    {
        QFETCH(QString, where);
        QFETCH(QString, event);
        QFETCH(QString, what);
        const QTemporaryDir other("/dev/shm/orvanto-XXXXXX");
        QString out = In(where);
        if (where == "other") {
            const auto here = FactsOf(folder->path()), there = FactsOf(other.path());
            if (!there || here->device == there->device)
                QSKIP("there is no second file system");
            out = other.path();
            PutSample("bare.mp3", out + "/G/A/L/T.mp3");
        }
        ProcessThread worker(nullptr);
        worker.files += {"T", "A", "L", "1999", "G", "7", In("a.mp3")};
        worker.settings = {10, 1, {}, false, false, true, out, true};
        if (event == "unlink 1")
            worker.files += {"U", "A", "L", "1999", "G", "7", PutSample("full.mp3", In("b.mp3"))};
        QVERIFY(QFile::resize(In("a.mp3"), 3 << 20));
        bool happened = event.isEmpty();
        onCall = AtEvent([&] {
            happened = true;
            if (what == "is written")
                QFile::resize(In("a.mp3"), 100);
            if (what == "copy goes" || what == "folder")
                QFile::remove(out + "/G/A/L/T.mp3");
            if (what == "folder")
                QDir().mkdir(out + "/G/A/L/T.mp3");
            if (what == "stop")
                worker.requestInterruption();
            return what == "fails" ? EIO : what == "is forbidden" ? EACCES : 0;
        });
        worker.start();
        worker.wait();
        onCall = nullptr;
        QVERIFY(happened);
        QFETCH(QString, left);
        QCOMPARE(Names().join(' '), left);
        QCOMPARE(worker.failedPaths.size(), left.isEmpty() || what == "stop" ? 0 : 1);
        QCOMPARE(worker.end, what == "stop" ? RunEnd::Interrupted : RunEnd::Complete);
        if (what == "stop" && left == "a.mp3")
            QCOMPARE(FilesBelow(out), QStringList());
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

        // A folder that takes no file, and a profile that may be written only.
        QVERIFY(chmod(Path("full/new"), 0222) == 0 && chmod(Path("full"), 0555) == 0);
        const QString current = QDir::currentPath();
        QVERIFY(QDir::setCurrent(In("full"))); // what is above it may be closed to others
        const bool isRoot = geteuid() == 0;
        QVERIFY(!isRoot || seteuid(65534) == 0);
        const bool written = WriteWholeFile("new", "direct"), made = WriteWholeFile("none", "x");
        QVERIFY(!isRoot || seteuid(0) == 0);
        QVERIFY(QDir::setCurrent(current));
        QVERIFY(chmod(Path("full"), 0755) == 0 && chmod(Path("full/new"), 0644) == 0);
        QCOMPARE(written, true);
        QCOMPARE(made, false);
        QCOMPARE(Bytes(In("full/new")), QByteArray("direct"));
    }

    void groupThatCannotBeKept_data()
    {
        AddRows({"mode", "then"}, {{"as everybody", "644", "saved"},
                                   {"less than everybody", "604", "saved"},
                                   {"more than everybody", "664", "not saved"}});
    }
    void groupThatCannotBeKept()
    {
        if (getuid() != 0)
            QSKIP("only root can give a file away");
        QFETCH(QString, mode);
        QVERIFY(chown(Path("a.mp3"), 4711, 4712) == 0 && chmod(Path("a.mp3"), mode.toUInt(nullptr, 8)) == 0);
        const QByteArray before = Bytes(In("a.mp3"));
        onCall = [](const QByteArray& call) { return call == "fchown" ? EPERM : 0; };
        Work("moves");
        QTEST(QString(Bytes(In("a.mp3")) == before ? "not saved" : "saved"), "then");
    }

    void pathsOfOneFile()
    {
        const QString one = PutSample("bare.mp3", In("É/ann.mp3")),
                      other = PutSample("full.mp3", In("e\u0301/Ann.mp3"));
        QVERIFY(IsSameFile(one, other));
        QVERIFY(!IsSameFile(one, PutSample("bare.mp3", In("É/bob.mp3"))));
        QVERIFY(!IsSameFile(one, In("É/missing.mp3")));
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_files.moc"
