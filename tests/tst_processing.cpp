#include "demo/AudioSamples.h"
#include "processing/ProcessThread.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>

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

    /// Lists a tagged file "in/1.mp3", described as "1;Title=a.b;Year=0": its name, and what differs from a complete
    /// file.
    void Add(const QString& description)
    {
        const QStringList words = description.split(';');
        const QString name = "in/" + words.first() + (words.first().contains('.') ? "" : ".mp3");
        SAudioFile file{"T", "A", "L", "1999", "G", "7", PutSample("full.mp3", In(name))};
        for (const STag& tag : allTags) {
            for (const QString& word : words) {
                if (word.section('=', 0, 0) == tag.name)
                    file.*tag.field = word.section('=', 1);
            }
        }
        TagManager().WriteFile(file);
        worker->files += file;
    }

    /// Paths without what they have in common.
    QString Short(const QStringList& paths) const
    {
        return paths.join('|').remove(In("in/")).remove(folder->path() + '/').remove(".mp3");
    }
    /// Every file in the folder, sorted; those of "in" by their name.
    QString Tree() const { return Short(FilesBelow(folder->path())); }

    /// Runs and answers the tag editor: "abort", "skip", or "edit", which appends "!" to the title.
    void Run(const QString& answer = "abort")
    {
        QObject context;
        connect(worker.get(), &ProcessThread::SetProgress, &context,
                [this](int handled) { progress += QString::number(handled); });
        connect(worker.get(), &ProcessThread::ShowEditTagDialog, &context, [this, answer] {
            asked += worker->editedFile.Path;
            if (answer == "edit")
                worker->editedFile.Title += '!';
            worker->AnswerDialog(answer == "abort" ? 0 : 1);
        });
        worker->start();
        QTRY_VERIFY_WITH_TIMEOUT(worker->isFinished() && !worker->waitingForDialog, 20000);
        QCoreApplication::processEvents();
    }

    void Organise(int organizeBy, int renameIndex, bool deletes, const QString& answer = "abort")
    {
        worker->settings = {organizeBy, renameIndex, {}, false, false, true, In("out"), deletes};
        Run(answer);
    }

    /// Does something in the worker's thread when it has just handled so many files.
    void AfterFile(int count, const std::function<void()>& action)
    {
        const auto act = [=](int handled) {
            if (handled == count)
                action();
        };
        connect(worker.get(), &ProcessThread::SetProgress, worker.get(), act, Qt::DirectConnection);
    }

    /// Compares what was not copied, and what is there after the run.
    void Left(const char* failed, const char* tree) const
    {
        QCOMPARE(Short(worker->failedPaths), QString(failed));
        QCOMPARE(Tree(), QString(tree));
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
        row("name gives both", "0 2 out", "Ann - Song;Artist=;Title=", "Ann - Song|out/Ann- Song");
        row("split at the first dash", "0 1 out", "A-B-C;Title=", "A-B-C|out/B-C");
        row("what is there stays", "0 2 out", "X-Y;Title=Unknown", "X-Y|out/A-Y");
        row("dash in front", "0 2 out", "-B;Title=", "-B|out/A--B");
        row("dash at the end", "0 2 out", "B-;Title=", "B-|out/A-B-");
        row("a name without dash is a title", "0 2 out", "x;Title=", "x|out/A-x");
        row("whatever it is", "0 2 out delete", "Unknown;Title=", "Unknown", "Unknown", "", "");
        row("but no artist", "1 0 out skip", "x;Artist=", "x", "x", "x");
        row("nor is Unknown one", "0 2 out abort", "Unknown-x;Artist=", "Unknown-x", "", "Unknown-x", "");
        row("a title left missing", "0 2 out skip manual", "x;Title=", "x", "x", "x", "");
        row("blanks are no artist", "0 2 out abort", "  -x;Artist=", "  -x", "", "  -x", "");
        row("the name fills no album", "0 5 out skip", "x;Album=;Year=0", "x|out/A-T (Album - Year)", "", "x");
        row("abort ends it all", "0 2 out abort delete", "x|y;Track=0", "x|y", "", "y", "");
        row("manual, incomplete only", "0 1 out edit manual", "x|y;Genre=", "x|y|out/T!|out/T", "", "y", "1 2");
        row("manual, every file", "0 1 out edit every manual", "x", "x|out/T!", "", "x");
        row("only edit tags", "0 1 out edit skip-organize delete", "x;Genre=|y", "x|y", "", "x", "2");
        row("refused without folders", "0 1 out", "1.MP3|2;Title=An Unknown|3;Title=S", "1.MP3|2|3|out/S|out/T", "2",
            "", "1 3");
        row("refused with folders", "1 1 out", "1;Artist=AC/DC|2;Title=An Unknown|3;Artist=B",
            "1|2|3|out/AC DC/T|out/B/T", "2", "", "1 2 3");
        row("three levels, Unknown below", "10 1 out skip", "1|2;Album=Unknown|3;Album=M",
            "1|2|3|out/G/A/L/T|out/G/A/M/T|out/G/A/Unknown/T", "", "2", "1 2 3");
        row("no top folder Unknown", "14 0 out", "1;Album=Unknown.|2", "1|2|out/L/2", "1", "", "1 2");
        row("one level makes one folder", "1 1 new/out delete", "x", "x", "x");
        row("two levels make all", "2 1 new/out delete", "x", "new/out/A/L/T");
        row("an output folder that is a file", "0 1 in/x.mp3 delete", "x", "x", "x");
        row("first come, first served", "0 1 out delete", "x|y", "out/T", "", "", "1 2");
        row("no such layout", "16 1 out delete", "x", "x", "", "", "");
        row("no such name", "0 7 out delete", "x|y", "x|y|out/", "", "", "1 2");
        row("nothing left of names", "1 1 out delete", "1;Title=?|2;Title=...|3;Title=***", "1|2|3|out/A/", "", "",
            "1 2 3");
        for (const char* output : {"in/../in/.", "link"})
            row(output, QByteArray("0 0 ").append(output).append(" delete"), "x", "x");
        row("in place, empty level", "14 0 in delete", "x;Album=...", "x");
        row("in place, other name", "0 1 in delete", "x", "T");
        row("names that are no names", "2 0 out delete", "1;Artist=\n\t\x01;Album=..|2;Album=///;Artist=-rf",
            "out/\n\t\x01/1|out/-rf/2", "", "", "1 2");
    }
    void runs()
    {
        QFETCH(QString, settings);
        QFETCH(QString, files);
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

        QTEST(Tree(), "tree");
        QTEST(Short(asked), "asked");
        QVERIFY(worker->end == (words.value(3) == "abort" ? RunEnd::Aborted : RunEnd::Complete));
        QTEST(progress.join(' '), "progress");
        QTEST(Short(worker->failedPaths), "failed");
        QCOMPARE(worker->failureText,
                 (QStringList("Could not copy the following:\n") + worker->failedPaths).join('\n') + '\n');
    }

    void tagsGoIntoTheSourceAndItsCopy()
    {
        Add("Ann-x;Artist=;Album=;Track=0");
        Add("y");
        const QByteArray complete = Bytes(In("in/y.mp3"));
        Organise(0, 0, false, "edit");
        for (const char* path : {"in/Ann-x.mp3", "out/Ann-x.mp3"}) {
            const SAudioFile file = TagManager().ReadFile(In(path));
            QCOMPARE(QStringList({file.Artist, file.Title, file.Album, file.Track}).join('|'), QString("Ann|T!||0"));
        }
        QVERIFY(Bytes(In("in/y.mp3")) == complete && Bytes(In("out/y.mp3")) == complete);
    }

    void badSourcesAndDestinations()
    {
        for (const char* file : {"1;Title=folder", "2;Title=%1", "4;Title=gone", "5;Title=linked", "6;Title=pipe"})
            Add(QString(file).replace("%1", QString(300, 'n')));
        QVERIFY(QDir().mkpath(In("out/folder.mp3")) && QFile::remove(In("in/4.mp3")) && QFile::remove(In("in/6.mp3")));
        QVERIFY(mkfifo(QFile::encodeName(In("in/6.mp3")), 0600) == 0);
        QVERIFY(QFile::link(In("in/5.mp3"), In("out/linked.mp3"))); // deleting the source would leave nothing
        Organise(0, 1, true);
        Left("1|2|4|6", "1|2|5|out/linked");
        QVERIFY(worker->files.isEmpty());
    }

    void whatHasChangedSinceItWasCopiedStays()
    {
        for (const char* file : {"1", "2", "3", "4", "5", "6"})
            Add(file);
        worker->files += worker->files.first(); // the same file, whose destination is there by then
        worker->files.last().Path = In("link/1.mp3");
        QVERIFY(link(QFile::encodeName(In("in/4.mp3")), QFile::encodeName(In("in/7.mp3"))) == 0);
        worker->files += {"T", "A", "L", "1999", "G", "7", In("in/7.mp3")};
        PutSample("bare.mp3", In("out/5.mp3"));
        PutSample("bare.mp3", In("out/6.mp3")); // which stays
        AfterFile(8, [this] {
            QFile source(In("in/1.mp3"));
            QVERIFY(source.open(QIODevice::Append) && source.putChar('X') && QFile::remove(In("out/2.mp3")) &&
                    QFile::resize(In("out/3.mp3"), 100) && QFile::remove(In("out/5.mp3")));
        });
        Organise(0, 0, true);
        Left("1|2|3|5", "1|2|3|5|out/1|out/3|out/4|out/6|out/7");
    }

    void copiesStayInside()
    {
        for (const char* file : {"1", "2;Artist=Away", "3;Album=Away", "4;Artist=Later"})
            Add(file);
        for (const char* made : {"out/A", "out-old"})
            QVERIFY(QDir().mkpath(In(made)));
        QVERIFY(QFile::link(In("out-old"), In("out/Away")) && QFile::link(In("out-old"), In("out/A/Away")) &&
                QFile::link(In("later"), In("out/Later")));
        AfterFile(1, [this] { QDir().mkpath(In("later/L")); }); // what a link leads to may be mounted in mid-run
        Organise(2, 0, true);
        Left("2|3|4", "2|3|4|out/A/L/1");
    }

    void stops()
    {
        // While it waits for the tag editor; no further tag is written.
        Add("x;Year=0");
        Add("y;Title=");
        worker->settings = {0, 0, {}, false, false, true, In("out"), true};
        worker->start();
        QTRY_VERIFY(worker->waitingForDialog);
        QElapsedTimer clock;
        clock.start();
        worker.reset();
        QVERIFY2(clock.elapsed() < 1000, "the destructor hangs");
        QCOMPARE(Tree(), QString("x|y"));
        QCOMPARE(TagManager().ReadFile(In("in/y.mp3")).Title, QString());

        // Between two files.
        init();
        for (const char* file : {"1", "2", "3"})
            Add(file);
        AfterFile(2, [this] { worker->requestInterruption(); });
        Organise(0, 0, true);
        QVERIFY(worker->end == RunEnd::Interrupted);
        QCOMPARE(Tree(), QString("1|2|3|out/1|out/2"));
    }
};

QTEST_GUILESS_MAIN(TestProcessing)
#include "tst_processing.moc"
