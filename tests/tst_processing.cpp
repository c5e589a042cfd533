#include "demo/AudioSamples.h"
#include "processing/ProcessThread.h"
#include "processing/RunLog.h"

#include <QTemporaryDir>
#include <QtTest>

/// Runs the worker over real files, in a folder that is new for each test. In it, "in" and "out" are meant to hold the
/// sources and the copies, and "link" leads to "in".
class TestProcessing : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ProcessThread> worker;
    QStringList asked;
    QStringList progress;

    QString In(const QString& name) const { return folder->filePath(name); }

    /// Lists a tagged file described as "in/1.mp3;Title=a.b;Year=0": its name, and what differs from a complete file.
    void Add(const QString& description)
    {
        const QStringList words = description.split(';');
        SAudioFile file{"T", "A", "L", "1999", "G", "7", PutSample("full.mp3", In(words.first()))};
        for (const STag& tag : allTags) {
            for (const QString& word : words) {
                if (word.section('=', 0, 0) == tag.name)
                    file.*tag.field = word.section('=', 1);
            }
        }
        TagManager().WriteFile(file);
        worker->files += file;
    }

    /// Every file in the folder, sorted.
    QStringList Tree() const
    {
        QStringList paths = FilesBelow(folder->path());
        for (QString& path : paths)
            path = QDir(folder->path()).relativeFilePath(path);
        return paths;
    }

    /// Runs and answers the tag editor: "abort", "skip", or "edit", which appends "!" to the title.
    void Run(const QString& answer = "abort")
    {
        QObject context;
        connect(worker.get(), &ProcessThread::SetProgress, &context,
                [this](int handled) { progress += QString::number(handled); });
        connect(worker.get(), &ProcessThread::ShowEditTagDialog, &context, [this, answer] {
            asked += QDir(In("in")).relativeFilePath(worker->editedFile.Path);
            if (answer == "edit")
                worker->editedFile.Title += '!';
            worker->AnswerDialog(answer == "abort" ? 0 : 1);
        });
        worker->start();
        QTRY_VERIFY_WITH_TIMEOUT(worker->isFinished() && !worker->waitingForDialog, 20000);
        QCoreApplication::processEvents();
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QDir(folder->path()).mkdir("in");
        QVERIFY(QFile::link(In("in"), In("link")));
        worker = std::make_unique<ProcessThread>(nullptr);
        asked.clear();
        progress.clear();
    }

    void runs_data()
    {
        for (const char* column : {"settings", "files", "tree", "failed", "asked", "progress"})
            QTest::addColumn<QString>(column);
        // The settings: organize-by index, rename index, output folder, the editor's answer, flags. The tree holds the
        // sources that were not deleted, too.
        const auto row = [](const char* name, const char* settings, const char* files, const char* tree,
                            const char* notCopied = "", const char* questions = "", const char* handled = "1") {
            QTest::newRow(name) << settings << files << tree << notCopied << questions << handled;
        };
        row("name gives both", "0 2 out", "in/Ann - Song.mp3;Artist=;Title=", "in/Ann - Song.mp3|out/Ann- Song.mp3");
        row("split at the first dash", "0 1 out", "in/A-B-C.mp3;Title=", "in/A-B-C.mp3|out/B-C.mp3");
        row("what is there stays", "0 2 out", "in/X-Y.mp3;Title=Unknown", "in/X-Y.mp3|out/A-Y.mp3");
        row("dash in front", "0 2 out", "in/-B.mp3;Title=", "in/-B.mp3|out/A--B.mp3");
        row("dash at the end", "0 2 out", "in/B-.mp3;Title=", "in/B-.mp3|out/A-B-.mp3");
        row("a name without dash is a title", "0 2 out", "in/x.mp3;Title=", "in/x.mp3|out/A-x.mp3");
        row("whatever it is", "0 2 out delete", "in/Unknown.mp3;Title=", "in/Unknown.mp3", "Unknown.mp3", "", "");
        row("but no artist", "1 0 out skip", "in/x.mp3;Artist=", "in/x.mp3", "x.mp3", "x.mp3");
        row("blanks are no artist", "0 2 out abort", "in/  -x.mp3;Artist=", "in/  -x.mp3", "", "  -x.mp3", "");
        row("the name fills no album", "0 5 out skip", "in/x.mp3;Album=;Year=0", "in/x.mp3|out/A-T (Album - Year).mp3",
            "", "x.mp3");
        row("abort ends it all", "0 2 out abort delete", "in/x.mp3|in/y.mp3;Track=0", "in/x.mp3|in/y.mp3", "", "y.mp3",
            "");
        row("manual, incomplete only", "0 1 out edit manual",
            "in/x.mp3|in/y.mp3;Genre=", "in/x.mp3|in/y.mp3|out/T!.mp3|out/T.mp3", "", "y.mp3", "1 2");
        row("manual, every file", "0 1 out edit every manual", "in/x.mp3", "in/x.mp3|out/T!.mp3", "", "x.mp3");
        row("only edit tags", "0 1 out edit skip-organize delete", "in/x.mp3;Genre=|in/y.mp3", "in/x.mp3|in/y.mp3", "",
            "x.mp3", "2");
        row("refused without folders", "0 1 out", "in/1.MP3|in/2.mp3;Title=An Unknown|in/3.mp3;Title=S",
            "in/1.MP3|in/2.mp3|in/3.mp3|out/S.mp3|out/T.mp3", "2.mp3", "", "1 3");
        row("refused with folders", "1 1 out", "in/1.mp3;Artist=AC/DC|in/2.mp3;Title=An Unknown|in/3.mp3;Artist=B",
            "in/1.mp3|in/2.mp3|in/3.mp3|out/AC DC/T.mp3|out/B/T.mp3", "2.mp3", "", "1 2 3");
        row("three levels, Unknown below", "10 1 out skip", "in/1.mp3|in/2.mp3;Album=Unknown|in/3.mp3;Album=M",
            "in/1.mp3|in/2.mp3|in/3.mp3|out/G/A/L/T.mp3|out/G/A/M/T.mp3|out/G/A/Unknown/T.mp3", "", "2.mp3", "1 2 3");
        row("no top folder Unknown", "14 0 out", "in/1.mp3;Album=Unknown.|in/2.mp3", "in/1.mp3|in/2.mp3|out/L/2.mp3",
            "1.mp3", "", "1 2");
        row("one level makes one folder", "1 1 new/out delete", "in/x.mp3", "in/x.mp3", "x.mp3");
        row("two levels make all", "2 1 new/out delete", "in/x.mp3", "new/out/A/L/T.mp3");
        row("an output folder that is a file", "0 1 in/x.mp3 delete", "in/x.mp3", "in/x.mp3", "x.mp3");
        row("first come, first served", "0 1 out delete", "in/x.mp3|in/y.mp3", "out/T.mp3", "", "", "1 2");
        row("no such layout", "16 1 out delete", "in/x.mp3", "in/x.mp3", "", "", "");
        row("no such name", "0 7 out delete", "in/x.mp3|in/y.mp3", "in/x.mp3|in/y.mp3|out/.mp3", "", "", "1 2");
        row("nothing left of names", "1 1 out delete", "in/1.mp3;Title=?|in/2.mp3;Title=...|in/3.mp3;Title=***",
            "in/1.mp3|in/2.mp3|in/3.mp3|out/A/.mp3", "", "", "1 2 3");
        for (const char* output : {"in", "in/", "in/../in/.", "link"})
            row(output, QByteArray("0 0 ").append(output).append(" delete"), "in/x.mp3", "in/x.mp3");
        row("in place, empty level", "14 0 in delete", "in/x.mp3;Album=...", "in/x.mp3");
        row("in place, other name", "0 1 in delete", "in/x.mp3", "in/T.mp3");
        row("names that are no names", "2 0 out delete",
            "in/1.mp3;Artist=\n\t\x01;Album=..|in/2.mp3;Album=///;Artist=-rf", "out/\n\t\x01/1.mp3|out/-rf/2.mp3", "",
            "", "1 2");
    }
    void runs()
    {
        QFETCH(QString, settings);
        QFETCH(QString, files);
        QFETCH(QString, failed);
        const QStringList words = settings.split(' ');
        worker->settings.organizeBy = words.at(0).toInt();
        worker->settings.renameIndex = words.at(1).toInt();
        worker->settings.outputFolder = In(words.at(2));
        worker->settings.fixManually = words.contains("manual");
        worker->settings.onlyEditInvalid = !words.contains("every");
        worker->settings.skipOrganize = words.contains("skip-organize");
        worker->settings.deleteOriginal = words.contains("delete");
        for (const QString& file : files.split('|'))
            Add(file);
        Run(words.value(3));

        QTEST(Tree().join('|'), "tree");
        QTEST(asked.join('|'), "asked");
        QVERIFY(worker->end == (words.value(3) == "abort" ? RunEnd::Aborted : RunEnd::Complete));
        QTEST(progress.join(' '), "progress");
        QString report = "Could not copy the following:\n\n";
        for (const QString& name : failed.split('|', Qt::SkipEmptyParts))
            report += In("in/" + name) + '\n';
        QCOMPARE(worker->failureText, report);
    }

    void tagsGoIntoTheSourceAndItsCopy()
    {
        worker->settings.outputFolder = In("out");
        worker->settings.organizeBy = 0;
        worker->settings.renameIndex = 0;
        Add("in/Ann-x.mp3;Artist=;Album=;Track=0");
        Run("edit");
        for (const char* path : {"in/Ann-x.mp3", "out/Ann-x.mp3"}) {
            const SAudioFile file = TagManager().ReadFile(In(path));
            QCOMPARE(QStringList({file.Artist, file.Title, file.Album, file.Track}),
                     QStringList({"Ann", "T!", "", "0"}));
        }
    }

    void badSourcesAndDestinations()
    {
        worker->settings = {0, 1, {}, false, false, true, In("out"), true};
        QDir().mkpath(In("out/folder.mp3"));
        for (const QString& file : {QString("in/1.mp3;Title=folder"), "in/2.mp3;Title=" + QString(300, 'n'),
                                    QString("in/4.mp3;Title=gone"), QString("in/5.mp3;Title=linked")})
            Add(file);
        QFile::remove(In("in/4.mp3"));
        QVERIFY(QFile::link(In("in/5.mp3"), In("out/linked.mp3"))); // deleting the source would leave nothing
        Run();
        QCOMPARE(worker->failedPaths.join(' ').remove(In("in/")), QString("1.mp3 2.mp3 4.mp3"));
        QCOMPARE(Tree().join(' '), QString("in/1.mp3 in/2.mp3 in/5.mp3 out/linked.mp3"));
        QVERIFY(worker->files.isEmpty());
    }

    void whatHasChangedSinceItWasCopiedStays()
    {
        worker->settings = {0, 0, {}, false, false, true, In("out"), true};
        for (const char* file : {"in/1.mp3", "in/2.mp3", "in/3.mp3", "in/4.mp3"})
            Add(file);
        connect(
            worker.get(), &ProcessThread::SetProgress, worker.get(),
            [this](int handled) {
                QFile source(In("in/1.mp3"));
                if (handled == 4)
                    QVERIFY(source.open(QIODevice::Append) && source.putChar('X') && QFile::remove(In("out/2.mp3")) &&
                            QFile::resize(In("out/3.mp3"), 100));
            },
            Qt::DirectConnection);
        Run();
        QCOMPARE(worker->failedPaths.join(' ').remove(In("in/")), QString("1.mp3 2.mp3 3.mp3"));
        QCOMPARE(Tree().join(' '), QString("in/1.mp3 in/2.mp3 in/3.mp3 out/1.mp3 out/3.mp3 out/4.mp3"));
    }

    void copiesAreTrueAndStayInside()
    {
        worker->settings = {2, 0, {}, false, false, true, In("out"), true};
        for (const char* file : {"in/1.mp3", "in/2.mp3;Artist=Away", "in/3.mp3;Album=Away", "in/4.mp3;Artist=Later"})
            Add(file);
        QDir().mkpath(In("out/A"));
        QDir().mkpath(In("away"));
        QVERIFY(QFile::link(In("away"), In("out/Away")) && QFile::link(In("away"), In("out/A/Away")) &&
                QFile::link(In("later"), In("out/Later")));
        // What a link leads to may be mounted while files are copied.
        connect(
            worker.get(), &ProcessThread::SetProgress, worker.get(), [this] { QDir().mkpath(In("later/L")); },
            Qt::DirectConnection);
        QFile source(In("in/1.mp3"));
        const QDateTime time(QDate(2001, 2, 3), QTime(4, 5, 6, 789));
        QVERIFY(source.open(QIODevice::Append) && source.setFileTime(time, QFileDevice::FileModificationTime));
        source.close();
        QVERIFY(source.setPermissions(QFileDevice::ReadOwner | QFileDevice::ReadGroup));
        const QByteArray music = Bytes(source.fileName());
        const auto permissions = QFileInfo(source.fileName()).permissions();
        Run();
        QCOMPARE(Tree().join(' '), QString("in/2.mp3 in/3.mp3 in/4.mp3 out/A/L/1.mp3"));
        const QFileInfo copy(In("out/A/L/1.mp3"));
        QCOMPARE(copy.lastModified(), time);
        QCOMPARE(copy.permissions(), permissions);
        QVERIFY(Bytes(copy.filePath()) == music);
    }

    void logBlock()
    {
        const QByteArray dashes = "--------------------------------------------------------------\n";
        const QDateTime time(QDate(2026, 3, 4), QTime(15, 6, 7));
        QCOMPARE(RunLogBlock(time, "Björk\n"), dashes + "04.03.2026 15:06:07\n\nBjörk\n" + dashes + '\n');
    }

    void stops()
    {
        // While it waits for the tag editor.
        worker->settings = {0, 0, {}, false, false, true, In("out"), true};
        Add("in/x.mp3;Year=0");
        worker->start();
        QTRY_VERIFY(worker->waitingForDialog);
        QElapsedTimer clock;
        clock.start();
        worker.reset();
        QVERIFY2(clock.elapsed() < 1000, "the destructor hangs");
        QCOMPARE(Tree(), QStringList("in/x.mp3"));

        // Between two files.
        init();
        worker->settings = {0, 0, {}, false, false, true, In("out"), true};
        for (int i = 0; i < 9; ++i)
            Add(QString("in/%1.mp3").arg(i));
        connect(
            worker.get(), &ProcessThread::SetProgress, worker.get(),
            [this](int handled) {
                if (handled == 5)
                    worker->requestInterruption();
            },
            Qt::DirectConnection);
        Run();
        QVERIFY(worker->end == RunEnd::Interrupted);
        QCOMPARE(Tree().filter("in/").size(), 9);
        QCOMPARE(Tree().filter("out/").size(), 5);
    }
};

QTEST_GUILESS_MAIN(TestProcessing)
#include "tst_processing.moc"
