#include "demo/AudioSamples.h"
#include "files/CopyFile.h"
#include "files/WholeFile.h"
#include "tags/PieceStream.h"
#include "tags/TagManager.h"

#include <QTemporaryDir>
#include <QtTest>

#include <fileref.h>
#include <tag.h>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>

namespace
{
/// What a system call does instead of its work: it fails with the error that this returns, unless that is 0.
std::function<int(const QByteArray& call)> onCall;

template <class Work>
long Called(const char* call, const Work& work)
{
    const int error = onCall ? onCall(call) : 0;
    if (error == 0)
        return work();
    errno = error;
    return -1;
}
} // namespace

// These stand in front of the system's own.
extern "C" {
int fsync(int file)
{
    return static_cast<int>(Called("fsync", [=] { return syscall(SYS_fsync, file); }));
}
int open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto work = [=] { return syscall(SYS_openat, AT_FDCWD, name, flags, mode); };
    return static_cast<int>(flags & O_EXCL ? Called("open", work) : work());
}
int fchmod(int file, mode_t mode) noexcept
{
    return static_cast<int>(Called("fchmod", [=] { return syscall(SYS_fchmod, file, mode); }));
}
int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName, unsigned int flags) noexcept
{
    return static_cast<int>(
        Called("renameat2", [=] { return syscall(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags); }));
}
int rename(const char* oldName, const char* newName) noexcept
{
    return static_cast<int>(Called("rename", [=] { return syscall(SYS_rename, oldName, newName); }));
}
ssize_t copy_file_range(int from, off64_t* start, int to, off64_t* end, size_t size, unsigned int flags)
{
    return Called("copy_file_range", [=] { return syscall(SYS_copy_file_range, from, start, to, end, size, flags); });
}
ssize_t sendfile(int to, int from, off_t* start, size_t size) noexcept
{
    return Called("sendfile", [=] { return syscall(SYS_sendfile, to, from, start, size); });
}
ssize_t pread(int file, void* bytes, size_t size, off_t start)
{
    return Called("pread", [=] { return syscall(SYS_pread64, file, bytes, size, start); });
}
ssize_t pwrite(int file, const void* bytes, size_t size, off_t start)
{
    return Called("pwrite", [=] { return syscall(SYS_pwrite64, file, bytes, size, start); });
}
}

/// The floor that writes: whatever the disk does, a file is as it was or as it was meant to be.
class TestFiles : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    QString In(const QString& name) const { return folder->filePath(name); }
    QStringList Names() const { return QDir(folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    /// Does the work of one row: makes "copy.mp3", edits the title of "a.mp3", or saves "a.mp3" as a profile.
    QString Work(const QString& what) const
    {
        if (what == "copy") {
            const SCopy copy = CopyFile(In("a.mp3"), In("copy.mp3"), [] { return true; });
            return copy.result == CopyResult::Copied ? "copied" : "failed";
        }
        if (what == "profile")
            return WriteWholeFile(In("a.mp3"), "profile") ? "" : "not opened";
        TagManager tags;
        tags.path = In("a.mp3");
        return tags.SetInfo(Tag::Title, what == "moves" ? QString(9999, 'm') : "Title with " + what) ? "" : "no tags";
    }

private slots:
    void init()
    {
        onCall = nullptr;
        folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup() { onCall = nullptr; }

    void piecesBecomeWhatTagLibWritesInPlace()
    {
        for (const QString& name : QDir(TEST_DATA_DIR).entryList({"full.*", "bare.*", "rich.*"})) {
            const QString ours = PutSample(name, In("ours-" + name)), theirs = PutSample(name, In("theirs-" + name));
            for (const int length : {4000, 3990, 40, 30000, 0}) { // moves the sound, fits, shrinks, and both again
                const std::string title(static_cast<std::size_t>(length), 't');
                PieceStream stream(ours);
                stream.SetName(QFile::encodeName(ours));
                TagLib::FileRef edited(&stream), inPlace(QFile::encodeName(theirs).constData());
                QVERIFY2(!edited.isNull() && !inPlace.isNull(), qPrintable(name + QString::number(length)));
                for (TagLib::FileRef* const file : {&edited, &inPlace}) {
                    file->tag()->setTitle(title);
                    file->tag()->setYear(length ? 2000 : 0);
                    QVERIFY2(file->save(), qPrintable(name));
                }
                QCOMPARE(stream.Save(), EditedFile::Saved::Whole);
                edited = inPlace = TagLib::FileRef();
                QVERIFY2(Bytes(ours) == Bytes(theirs), qPrintable(name + ", " + QString::number(length)));
            }
        }
    }

    void failingCalls_data()
    {
        for (const char* column : {"work", "call", "result"})
            QTest::addColumn<QString>(column);
        QTest::addColumn<int>("nth");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("done"); // all the same
        const auto row = [](const char* work, const char* call, int nth, int error, const char* result,
                            bool done = false) {
            QTest::addRow("%s, %s %d: %s", work, call, nth, strerror(error))
                << work << call << result << nth << error << done;
        };
        // 0 is each call of that kind.
        row("copy", "fsync", 1, EIO, "failed");
        row("copy", "fsync", 1, ENOSPC, "failed");
        row("copy", "fsync", 0, EINVAL, "copied", true); // no such thing on this disk
        row("copy", "renameat2", 1, EEXIST, "failed");
        row("copy", "renameat2", 1, EINVAL, "copied", true);
        row("copy", "copy_file_range", 0, EXDEV, "copied", true);
        row("copy", "fchmod", 0, EPERM, "copied", true);
        row("copy", "pread", 0, EIO, "failed");
        row("copy", "pwrite", 1, ENOSPC, "failed");
        row("fits", "pwrite", 2, EIO, "");
        row("fits", "fsync", 1, EIO, "");
        row("moves", "pwrite", 1, ENOSPC, "");
        row("moves", "fsync", 1, EIO, "");
        row("moves", "rename", 1, EACCES, "");
        row("moves", "fchmod", 0, EPERM, "", true);
        row("profile", "pwrite", 1, ENOSPC, "");
        row("profile", "fsync", 1, EIO, "");
        row("profile", "rename", 1, EIO, "");
        row("profile", "open", 1, ENOSPC, "", true); // of a new file: the old one serves
    }
    void failingCalls()
    {
        QFETCH(QString, work);
        QFETCH(QString, call);
        QFETCH(int, nth);
        QFETCH(int, error);
        QFETCH(bool, done);
        PutSample("full.mp3", In("a.mp3"));
        Work("room");
        const QByteArray before = Bytes(In("a.mp3"));
        int count = 0, failures = 0;
        onCall = [&](const QByteArray& name) {
            // Reading and writing are the last resort of copying.
            if (work == "copy" && call.startsWith('p') && (name == "copy_file_range" || name == "sendfile"))
                return ENOSYS;
            if (name != call || (nth && ++count != nth))
                return 0;
            ++failures;
            return error;
        };
        QTEST(Work(work), "result");
        onCall = nullptr;
        QVERIFY(failures > 0);
        const bool copied = work == "copy" && done;
        QCOMPARE(Names(), copied ? QStringList({"a.mp3", "copy.mp3"}) : QStringList("a.mp3"));
        QVERIFY(!copied || Bytes(In("copy.mp3")) == before);
        QCOMPARE(Bytes(In("a.mp3")) != before, work != "copy" && done);
        if (!work.startsWith('c')) {
            Work(work); // and once more, undisturbed
            QVERIFY(Bytes(In("a.mp3")) != before);
        }
    }

    void keepsWhatBelongsToAFile()
    {
        PutSample("full.mp3", In("a.mp3"));
        Work("room");
        const QByteArray path = QFile::encodeName(In("a.mp3"));
        QVERIFY(link(path, QFile::encodeName(In("linked.mp3"))) == 0 && chmod(path, 0604) == 0);
        const bool hasAttributes = setxattr(path, "user.mood", "calm", 4, 0) == 0; // not every disk has
        if (getuid() == 0)
            QVERIFY(chown(path, 4711, 4712) == 0);
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
        const timespec times[] = {{0, UTIME_OMIT}, {981173106, 789000000}};
        QVERIFY(utimensat(AT_FDCWD, path, times, 0) == 0);
        QCOMPARE(Work("copy"), QString("copied"));
        QCOMPARE(belongings("copy.mp3").section(' ', 0, 0), before.section(' ', 0, 0));
        QCOMPARE(belongings("copy.mp3").section(' ', 3), before.section(' ', 3));
        QCOMPARE(QFileInfo(In("copy.mp3")).lastModified().toMSecsSinceEpoch(), 981173106789);
        QCOMPARE(Work("copy"), QString("failed")); // what is there stays
        Work("moves");
        QCOMPARE(belongings("a.mp3"), before);
        QVERIFY(Bytes(In("a.mp3")) != Bytes(In("linked.mp3")));

        int steps = 0;
        const SCopy stopped = CopyFile(In("a.mp3"), In("stopped.mp3"), [&steps] { return ++steps > 1; });
        QVERIFY(stopped.result == CopyResult::Stopped);
        QCOMPARE(Names(), QStringList({"a.mp3", "copy.mp3", "linked.mp3"}));
    }

    void somebodyElsesChangeWins()
    {
        for (const QString work : {"fits", "moves", "copy"}) {
            init();
            PutSample("full.mp3", In("a.mp3"));
            Work("room");
            QStringList shown; // before the new file is whole
            bool happened = false;
            onCall = [&](const QByteArray& call) {
                if (!happened && call == (work == "fits" ? "pread" : "fsync")) {
                    happened = true;
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
            QVERIFY(work == "copy" || file.Title != "Title with room");
            QCOMPARE(file.Artist + file.Title.left(5), QString(work == "moves" ? "Somebodymmmmm" : "SomebodyTitle"));
            QCOMPARE(Names(), QStringList("a.mp3")); // half of either version is no copy
        }
    }

    void editsPastTheEndAreNotSaved()
    {
        EditedFile file(PutSample("full.mp3", In("a.mp3")));
        file.Replace(file.Size() - 1, 2, "x");
        QVERIFY(file.Save() == EditedFile::Saved::NotAtAll && Bytes(In("a.mp3")) == Bytes(TEST_DATA_DIR "/full.mp3"));
    }

    void pathsOfOneFile()
    {
        const QString one = PutSample("bare.mp3", In("É/ann.mp3")), other = In("e\u0301/Ann.mp3");
        if (!QFile::exists(other))
            PutSample("full.mp3", other);
        QVERIFY(IsSameFile(one, other) && !IsSameFile(one, PutSample("bare.mp3", In("É/bob.mp3"))));
        QVERIFY(!IsSameFile(one, In("É/missing.mp3")));
    }
};

QTEST_GUILESS_MAIN(TestFiles)
#include "tst_files.moc"
