#include "demo/AudioSamples.h"
#include "processing/ProcessThread.h"
#include "tests/Rows.h"

#include <QTemporaryDir>

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
    QStringList handled; ///< counts that the progress bar was told

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

    /// Runs with these settings: organize-by index, rename index, output folder; then what the tag editor is answered,
    /// "abort", "skip", "stop", or "edit", which appends "!" to the title; and flags.
    void Organise(const QString& described)
    {
        const QStringList words = described.split(' ');
        const QString answer = words.value(3);
        SRunSettings& settings = worker->settings;
        settings = {words.at(0).toInt(), words.at(1).toInt(), {}, false, false, true, In(words.at(2)), false};
        settings.skipOrganize = words.contains("skip-organize");
        settings.fixManually = words.contains("manual");
        settings.deleteOriginal = words.contains("delete");
        QObject context;
        connect(worker.get(), &ProcessThread::SetProgress, &context,
                [this](int count) { handled += QString::number(count); });
        connect(worker.get(), &ProcessThread::ShowEditTagDialog, &context, [this, answer] {
            asked += worker->editedFile.Path;
            if (answer == "edit")
                worker->editedFile.Title += '!';
            if (answer == "stop")
                worker->requestInterruption();
            worker->AnswerDialog(answer != "abort");
        });
        worker->start();
        QTRY_VERIFY_WITH_TIMEOUT(worker->isFinished() && !worker->waitingForDialog, 20000);
        QCoreApplication::processEvents();
    }

    /// Does something in the worker's thread when it has just handled so many files.
    void AfterFile(int count, const std::function<void()>& action)
    {
        const auto act = [=](int now) {
            if (now == count)
                action();
        };
        connect(worker.get(), &ProcessThread::SetProgress, worker.get(), act, Qt::DirectConnection);
    }

    /// What was not copied, and what is there after the run.
    QString Left() const { return "failed: " + Short(worker->failedPaths) + ", left: " + Tree(); }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QDir(folder->path()).mkdir("in");
        QVERIFY(QFile::link(In("in"), In("link")));
        worker = std::make_unique<ProcessThread>(nullptr);
        asked.clear();
        handled.clear();
    }

    void runs_data()
    {
        // Without a word on progress, it is "1".
        AddRows({"settings", "files", "tree", "failed", "asked", "progress"},
                {{"name gives both", "0 2 out", "Ann - Song;Artist=;Title=", "Ann - Song|out/Ann- Song"},
                 {"split at the first dash", "0 1 out", "A-B-C;Title=", "A-B-C|out/B-C"},
                 {"what is there stays", "0 2 out", "X-Y;Title=Unknown", "X-Y|out/A-Y"},
                 {"dash in front", "0 2 out", "-B;Title=", "-B|out/A--B"},
                 {"dash at the end", "0 2 out", "B-;Title=", "B-|out/A-B-"},
                 {"a name without dash is a title", "0 2 out", "x;Title=", "x|out/A-x"},
                 {"whatever it is", "0 2 out delete", "Unknown;Title=", "Unknown", "Unknown", "", "-"},
                 {"but no artist", "1 0 out skip", "x;Artist=", "x", "x", "x"},
                 {"nor is Unknown one", "0 2 out abort", "Unknown-x;Artist=", "Unknown-x", "", "Unknown-x", "-"},
                 {"a title left missing", "0 2 out skip manual", "x;Title=", "x", "x", "x", "-"},
                 {"blanks are no artist", "0 2 out abort", "  -x;Artist=", "  -x", "", "  -x", "-"},
                 {"the name fills no album", "0 5 out skip", "x;Album=;Year=0", "x|out/A-T (Album - Year)", "", "x"},
                 {"abort ends it all", "0 2 out abort delete", "x|y;Track=0", "x|y", "", "y", "-"},
                 {"a stop in the last file", "0 1 out stop skip-organize", "x;Genre=", "x", "", "x", "-"},
                 {"manual, incomplete only", "0 1 out edit manual", "x|y;Genre=", "x|y|out/T!|out/T", "", "y", "1 2"},
                 {"only edit tags", "0 1 out edit skip-organize delete", "x;Genre=|y", "x|y", "", "x", "2"},
                 {"refused without folders", "0 1 out", "1.MP3|2;Title=An Unknown|3;Title=S", "1.MP3|2|3|out/S|out/T",
                  "2", "", "1 3"},
                 {"refused with folders", "1 1 out", "1;Artist=AC/DC|2;Title=An Unknown|3;Artist=B",
                  "1|2|3|out/AC DC/T|out/B/T", "2", "", "1 2 3"},
                 {"three levels, Unknown below", "10 1 out skip", "1|2;Album=Unknown|3;Album=M",
                  "1|2|3|out/G/A/L/T|out/G/A/M/T|out/G/A/Unknown/T", "", "2", "1 2 3"},
                 {"no top folder Unknown", "14 0 out", "1;Album=Unknown.|2", "1|2|out/L/2", "1", "", "1 2"},
                 {"one level makes one folder", "1 1 new/out delete", "x", "x", "x"},
                 {"two levels make all", "2 1 new/out delete", "x;Album=Last Year", "new/out/A/Last Year/T"},
                 {"first come, first served", "0 1 out delete", "x|y", "out/T", "", "", "1 2"},
                 {"no such layout", "16 1 out delete", "x", "x", "", "", "-"},
                 {"no such name", "0 7 out delete", "x|y", "x|y|out/", "", "", "1 2"},
                 {"nothing left of names", "1 1 out delete", "1;Title=?|2;Title=...|3;Title=***", "1|2|3|out/A/", "",
                  "", "1 2 3"},
                 {"in place, by way of a link", "0 0 link delete", "x", "x"},
                 {"in place, empty level", "14 0 in delete", "x;Album=...", "x"},
                 {"in place, other name", "0 1 in delete", "x", "T"},
                 {"in place, spelled like a copy", "0 1 in delete", "a;Title=b|B;Title=c|c;Title=c", "B|b|c", "", "",
                  "1 2 3"}});
    }
    void runs()
    {
        QFETCH(QString, settings);
        QFETCH(QString, files);
        QFETCH(QString, progress);
        for (const QString& file : files.split('|'))
            Add(file);
        Organise(settings);
        QTEST(Tree(), "tree");
        const bool copies = !settings.contains("skip-organize"); // or else only the files hold what was edited
        for (const SAudioFile& file : worker->files)
            QVERIFY2(!copies || TagManager().ReadFile(file.Path).Title == file.Title, qPrintable(file.Path));
        QTEST(Short(worker->failedPaths), "failed");
        QTEST(Short(asked), "asked");
        QCOMPARE(handled.isEmpty() ? "-" : handled.join(' '), progress.isEmpty() ? "1" : progress);
        QCOMPARE(worker->end, settings.contains("abort")  ? RunEnd::Aborted
                              : settings.contains("stop") ? RunEnd::Interrupted
                                                          : RunEnd::Complete);
    }

    void badSourcesAndDestinations()
    {
        for (const char* file : {"1;Title=folder", "2;Title=%1", "4;Title=gone", "5;Title=linked", "6;Title=pipe"})
            Add(QString(file).replace("%1", QString(300, 'n')));
        QVERIFY(QDir().mkpath(In("out/folder.mp3")) && QFile::remove(In("in/4.mp3")) && QFile::remove(In("in/6.mp3")));
        QVERIFY(mkfifo(QFile::encodeName(In("in/6.mp3")), 0600) == 0);
        QVERIFY(QFile::link(In("in/5.mp3"), In("out/linked.mp3"))); // deleting the source would leave nothing
        for (const char* why : {"1.mp3: File exists", "2.mp3: File name too long", "4.mp3: No such file or directory",
                                "6.mp3: It is no regular file"})
            QTest::ignoreMessage(QtWarningMsg, qPrintable("Could not copy " + In("in/") + why)); // which must come
        Organise("0 1 out abort delete");
        QCOMPARE(Left(), QString("failed: 1|2|4|6, left: 1|2|5|out/linked"));
        QVERIFY(worker->files.isEmpty());
    }

    void whatHasChangedSinceItWasCopiedStays()
    {
        for (const char* file : {"1", "3", "4", "6"})
            Add(file);
        worker->files += worker->files.first(); // the same file, whose destination is there by then
        worker->files.last().Path = In("link/1.mp3");
        QVERIFY(link(QFile::encodeName(In("in/4.mp3")), QFile::encodeName(In("in/7.mp3"))) == 0);
        worker->files += {"T", "A", "L", "1999", "G", "7", In("in/7.mp3")};
        PutSample("bare.mp3", In("out/6.mp3")); // which stays
        AfterFile(6, [this] {
            QFile source(In("in/1.mp3"));
            QVERIFY(source.open(QIODevice::ReadWrite) && source.putChar('X'));
            QVERIFY(QFile::resize(In("out/3.mp3"), 100));
        });
        Organise("0 0 out abort delete");
        QCOMPARE(Left(), QString("failed: 1|3, left: 1|3|out/1|out/3|out/4|out/6|out/7"));
    }

    void whatFailedOnceStays()
    {
        Add("1;Title=An Unknown");
        for (const char* path : {"in/1.mp3", "link/1.mp3"})
            worker->files += {path, "A", "L", "1999", "G", "7", In(path)};
        Organise("0 1 out abort delete");
        QCOMPARE(Left(), QString("failed: 1, left: 1|out/in 1 mp3|out/link 1 mp3"));
        QCOMPARE(ReportOf(RunEnd::Interrupted, worker->failureText).logged,
                 "Operation stopped.\n\nCould not copy the following:\n\n" + In("in/1.mp3") + '\n');
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
        Organise("2 0 out abort delete");
        QCOMPARE(Left(), QString("failed: 2|3|4, left: 2|3|4|out/A/L/1"));
        QVERIFY(QDir(In("out-old")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestProcessing)
#include "tst_processing.moc"
