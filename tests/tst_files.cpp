#include "demo/AudioSamples.h"
#include "files/CopyGroup.h"
#include "files/TextFile.h"
#include "tags/PieceStream.h"
#include "tags/TagManager.h"

#include <QTemporaryDir>
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
/// What a system call does instead of its work: it fails with the error that this returns, unless that is 0.
std::function<int(const QByteArray& call)> onCall;

template <class... Arguments>
long Call(const char* name, long number, Arguments... arguments)
{
    const int error = onCall ? onCall(name) : 0;
    if (error == 0)
        return syscall(number, arguments...);
    errno = error;
    return -1;
}

/// A system call that fails during some work.
struct FailingCall
{
    const char *work, *call;
    int nth; ///< 0 for each of them
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
REPLACE(ssize_t, pread, (int file, void* bytes, size_t size, off_t start), SYS_pread64, file, bytes, size, start)
REPLACE(ssize_t, pwrite, (int file, const void* bytes, size_t size, off_t start), SYS_pwrite64, file, bytes, size,
        start)
extern "C" int open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return static_cast<int>(Call(flags & O_EXCL ? "open new" : "open", SYS_openat, AT_FDCWD, name, flags, mode));
}

/// The layer that writes: whatever the disk does, a file is as it was or as it was meant to be.
class TestFiles : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;

    QString In(const QString& name) const { return folder->filePath(name); }
    QStringList Names() const { return QDir(folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    /// Copies "a.mp3" to these names, in one group. @return what became of each.
    QString Copy(const QString& names, const std::function<bool()>& goOn) const
    {
        QStringList results;
        for (int i = 0; i <= names.count(' '); ++i)
            results += "nothing";
        CopyGroup group(goOn, [&results](int row, const SCopy& copy) {
            results[row] = copy.result == CopyResult::Copied   ? "Copied"
                           : copy.result == CopyResult::Failed ? "Failed"
                                                               : "Stopped";
        });
        int row = 0;
        for (const QString& name : names.split(' ')) {
            group.FinishBefore(In(name));
            group.Add(row++, In("a.mp3"), In(name));
        }
        group.Finish();
        return results.join(' ');
    }

    /// Makes "copy.mp3" of "a.mp3", edits the title of that, or saves it as a profile. @return what the call says.
    bool Work(const QString& what) const
    {
        if (what == "copy")
            return Copy("copy.mp3", [] { return true; }) == QString("Copied");
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

    void failingCalls_data()
    {
        const FailingCall rows[] = {
            {"copy", "fsync", 1, EIO},
            {"copy", "fsync", 0, EINVAL, true}, // no such call on this disk
            {"copy", "renameat2", 1, EINVAL, true},
            {"copy", "copy_file_range", 0, EXDEV, true},
            {"copy", "fchmod", 0, EPERM, true},
            {"copy", "pread", 0, EIO},
            {"copy", "pwrite", 1, ENOSPC},
            {"fits", "pwrite", 2, EIO},
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
            QTest::addRow("%s: %s %d, %s", row.work, row.call, row.nth, strerror(row.error)) << row;
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
            return name == row.call && (++count == row.nth || row.nth == 0) ? row.error : 0;
        };
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
        QCOMPARE(chmod(path, 0604), 0);
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
        QVERIFY(Work("copy"));
        const QString copy = belongings("copy.mp3"); // but for the owner
        QCOMPARE(copy.section(' ', 0, 0) + copy.section(' ', 3), before.section(' ', 0, 0) + before.section(' ', 3));
        QCOMPARE(QFileInfo(In("copy.mp3")).lastModified().toMSecsSinceEpoch(), 981173106789);
        QVERIFY(!Work("copy")); // what is there stays
        Work("moves");
        QCOMPARE(belongings("a.mp3"), before);
        QVERIFY(Bytes(In("a.mp3")) != Bytes(In("linked.mp3")));

        int steps = 0;
        QCOMPARE(Copy("stopped.mp3", [&steps] { return ++steps > 1; }), QString("Stopped"));
        QCOMPARE(Names(), QStringList({"a.mp3", "copy.mp3", "linked.mp3"}));
    }

    void somebodyElsesChangeWins_data()
    {
        QTest::addColumn<QString>("title"); // in the end
        QTest::newRow("fits") << "Title with fits";
        QTest::newRow("moves") << QString(9999, 'm');
        QTest::newRow("copy") << "Title with room";
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

    void whatAppearsMeanwhileStays()
    {
        onCall = [&](const QByteArray& call) {
            if (call == "fsync" && !QFile::exists(In("copy.mp3")))
                PutSample("bare.mp3", In("copy.mp3"));
            return 0;
        };
        QVERIFY(!Work("copy"));
        QVERIFY(Bytes(In("copy.mp3")) == Bytes(TEST_DATA_DIR "/bare.mp3"));
        QCOMPARE(Names(), QStringList({"a.mp3", "copy.mp3"}));
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
        onCall = [](const QByteArray& call) { return call == "fsync" ? EIO : 0; };
        QCOMPARE(shorter.Save([] { return true; }), EditedFile::Saved::NotAtAll);
        QVERIFY(Bytes(In("a.mp3")) == before);
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
