#include "processing/ProcessThread.h"
#include "support/AudioSamples.h"
#include "tags/FilePath.h"
#include "tags/TagTextRules.h"

#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

/// Runs the worker over real files in a folder that is new for each test. The tag editor is answered by a function on
/// this thread, after the event loop has handed the request over.
class TestProcessing : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ProcessThread> worker;
    QList<int> progress;
    QStringList asked;

    QString In(const QString& name) const { return folder->filePath(name); }

    /// Lists a copy of full.mp3 under @p name, with @p change made to its record and its file.
    QString Add(const QString& name, const std::function<void(SAudioFile&)>& change = {})
    {
        TagManager tags;
        SAudioFile file = tags.ReadFile(PutSample("full.mp3", In(name)));
        if (change) {
            change(file);
            tags.WriteFile(file);
        }
        worker->files += file;
        return file.Path;
    }

    /// Every file below @p name, relative to it and sorted.
    QStringList Tree(const QString& name) const
    {
        QStringList paths;
        QDirIterator entries(In(name), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (entries.hasNext())
            paths += QDir(In(name)).relativeFilePath(entries.next());
        paths.sort();
        return paths;
    }

    void Run(const std::function<int(SAudioFile&)>& answer = {})
    {
        QObject context;
        connect(worker.get(), &ProcessThread::SetProgress, &context, [this](int handled) { progress += handled; });
        connect(worker.get(), &ProcessThread::ShowEditTagDialog, &context, [this, answer] {
            worker->editedFile = worker->AwaitRequest();
            asked += QFileInfo(worker->editedFile.Path).fileName();
            worker->AnswerDialog(answer ? answer(worker->editedFile) : 0);
        });
        worker->start();
        QTRY_VERIFY_WITH_TIMEOUT(worker->isFinished(), 20000);
        QCoreApplication::processEvents();
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        worker = std::make_unique<ProcessThread>(nullptr);
        worker->settings.outputFolder = In("out");
        progress.clear();
        asked.clear();
    }

    void fixesFromTheFileName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("fixedArtist");
        QTest::addColumn<QString>("fixedTitle");
        QTest::addColumn<bool>("asks");
        QTest::newRow("both") << "Ann - Song.mp3"
                              << ""
                              << ""
                              << "Ann"
                              << " Song" << false;
        QTest::newRow("first dash") << "A-B-C.mp3"
                                    << ""
                                    << ""
                                    << "A"
                                    << "B-C" << false;
        QTest::newRow("only what is missing") << "A-B.mp3"
                                              << "Keep"
                                              << ""
                                              << "Keep"
                                              << "B" << false;
        QTest::newRow("dash in front") << "-B.mp3"
                                       << ""
                                       << ""
                                       << ""
                                       << "-B" << true;
        QTest::newRow("dash at the end") << "B-.mp3"
                                         << "X"
                                         << ""
                                         << "X"
                                         << "B-" << false;
        QTest::newRow("no dash") << "Song.mp3"
                                 << ""
                                 << ""
                                 << ""
                                 << "Song" << true;
        QTest::newRow("blank artist") << "  -B.mp3"
                                      << ""
                                      << ""
                                      << ""
                                      << "B" << true;
        QTest::newRow("Unknown is no artist") << "Unknown-B.mp3"
                                              << "Unknown"
                                              << ""
                                              << "Unknown"
                                              << "B" << true;
        QTest::newRow("Unknown is a title without dash") << "Unknown.mp3"
                                                         << "X"
                                                         << ""
                                                         << "X"
                                                         << "Unknown" << false;
    }
    void fixesFromTheFileName()
    {
        QFETCH(QString, name);
        QFETCH(QString, artist);
        QFETCH(QString, title);
        QFETCH(bool, asks);
        worker->settings.skipOrganize = true;
        const QString path = Add(name, [&](SAudioFile& file) {
            file.Artist = artist;
            file.Title = title;
        });
        Run();
        QCOMPARE(asked, asks ? QStringList(name) : QStringList());
        QCOMPARE(progress, asks ? QList<int>() : QList<int>{1});
        TagManager tags;
        QTEST(tags.ReadFile(path).Artist, "fixedArtist");
        QTEST(tags.ReadFile(path).Title, "fixedTitle");
        QVERIFY(!QFile::exists(In("out")));
    }

    void asksInTheRightCases_data()
    {
        QTest::addColumn<bool>("manually");
        QTest::addColumn<bool>("onlyInvalid");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("automatic") << false << true << QStringList{"noalbum.mp3"};
        QTest::newRow("automatic ignores the option") << false << false << QStringList{"noalbum.mp3"};
        QTest::newRow("manual, incomplete") << true << true << QStringList{"noalbum.mp3"};
        QTest::newRow("manual, every file") << true << false << QStringList{"whole.mp3", "noalbum.mp3"};
    }
    void asksInTheRightCases()
    {
        QFETCH(bool, manually);
        QFETCH(bool, onlyInvalid);
        worker->settings.fixManually = manually;
        worker->settings.onlyEditInvalid = onlyInvalid;
        worker->settings.renameIndex = 4;
        Add("whole.mp3");
        const QString path = Add("noalbum.mp3", [](SAudioFile& file) { file.Album.clear(); });
        Run([](SAudioFile& file) {
            file.Title += "!"; // as by OK; the album stays empty
            return 1;
        });
        QTEST(asked, "shown");
        // The placeholder names the copy and is written nowhere.
        QVERIFY(Tree("out").contains("Björk Ärger/Björk Ärger-Tone of Ten! (Album).mp3"));
        QCOMPARE(TagManager().ReadFile(path).Album, QString());
        QCOMPARE(TagManager().ReadFile(path).Title, QString("Tone of Ten!"));
    }

    void abortEndsTheRun()
    {
        worker->settings.deleteOriginal = true;
        const QString whole = Add("whole.mp3");
        const QString broken = Add("broken.mp3", [](SAudioFile& file) { file.Year = "0"; });
        Run([](SAudioFile&) { return 0; });
        QVERIFY(QFile::exists(whole) && QFile::exists(broken) && !QFile::exists(In("out")));
        QCOMPARE(progress, QList<int>());
        QCOMPARE(worker->failureText, failureHeading);
    }

    void folders_data()
    {
        QTest::addColumn<int>("organizeBy");
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QList<int>>("handled");
        QTest::newRow("none") << 0 << QStringList{"a b.mp3", "g.mp3", "other.mp3", "same.mp3"}
                              << QList<int>{1, 2, 4, 5};
        QTest::newRow("one level") << 1
                                   << QStringList{"AC DC/a b.mp3", "AC DC/same.mp3", "Björk Ärger/g.mp3",
                                                  "Björk Ärger/other.mp3"}
                                   << QList<int>{1, 2, 3, 4, 5};
        QTest::newRow("three levels") << 10
                                      << QStringList{"Rock/AC DC/Small Files/a b.mp3",
                                                     "Rock/AC DC/Small Files/same.mp3",
                                                     "Rock/Björk Ärger/Small Files/g.mp3",
                                                     "Rock/Björk Ärger/Unknown/other.mp3"}
                                      << QList<int>{1, 2, 3, 4, 5};
    }
    void folders()
    {
        QFETCH(int, organizeBy);
        worker->settings.organizeBy = organizeBy;
        worker->settings.renameIndex = 1;
        const auto rename = [](const char* title, const char* artist, const char* album) {
            return [=](SAudioFile& file) {
                file.Title = title;
                file.Artist = *artist ? artist : file.Artist;
                file.Album = *album ? album : file.Album;
            };
        };
        const QString first = Add("1.MP3", rename("a.b", "AC/DC", ""));
        Add("2.mp3", rename("g", "", ""));
        const QString refused = Add("3.mp3", rename("An Unknown Pleasure", "", ""));
        Add("4.mp3", rename("same", "AC/DC", ""));
        Add("5.mp3", rename("other", "", "Unknown"));
        const auto continueAsItIs = [](SAudioFile&) { return 1; };
        Run(continueAsItIs); // an album "Unknown" counts as missing
        QTEST(Tree("out"), "tree");
        QTEST(progress, "handled");
        QCOMPARE(worker->failedPaths, QStringList(refused));
        QCOMPARE(worker->failureText, failureHeading + refused + "\n");
        QCOMPARE(worker->outputPaths.size(), 4);
        QCOMPARE(Bytes(In("out/" + Tree("out").first())), Bytes(first));
    }

    void unknownTopFolder()
    {
        worker->settings.organizeBy = 14;
        worker->settings.renameIndex = 0;
        const QString path = Add("x.mp3", [](SAudioFile& file) { file.Album = ".Unknown"; });
        const QString other = Add("y.mp3", [](SAudioFile& file) { file.Album = "Unknown"; });
        Run([](SAudioFile&) { return 1; });
        QCOMPARE(Tree("out"), QStringList(" Unknown/x.mp3"));
        QCOMPARE(worker->failedPaths, QStringList(other));
    }

    void refusedFilesLoseTheirPlaceholders()
    {
        const auto empty = [](SAudioFile& file) { file = {"", "", "", "0", "", "0", file.Path}; };
        Add("-x.mp3", empty);
        worker->settings.fixManually = true;
        Run([](SAudioFile&) { return 1; });
        QCOMPARE(worker->failedPaths.size(), 1);
        const SAudioFile& file = worker->files.first();
        QCOMPARE(QStringList({file.Artist, file.Title, file.Album, file.Year, file.Genre, file.Track}),
                 QStringList({"", "", "", "0", "", "0"}));
    }

    void oneLevelMakesOneFolder_data()
    {
        QTest::addColumn<int>("organizeBy");
        QTest::addColumn<bool>("copied");
        QTest::newRow("none") << 0 << false;
        QTest::newRow("one level") << 1 << false;
        QTest::newRow("two levels") << 2 << true;
    }
    void oneLevelMakesOneFolder()
    {
        QFETCH(int, organizeBy);
        QFETCH(bool, copied);
        worker->settings.organizeBy = organizeBy;
        worker->settings.outputFolder = In("not/there");
        worker->settings.deleteOriginal = true;
        const QString path = Add("x.mp3");
        Run();
        QCOMPARE(worker->failedPaths.isEmpty(), copied);
        QCOMPARE(QFile::exists(path), !copied);
    }

    void badDestinations()
    {
        worker->settings.organizeBy = 0;
        worker->settings.renameIndex = 1;
        worker->settings.deleteOriginal = true;
        QDir().mkpath(In("out/folder.mp3"));
        const auto title = [](const QString& text) { return [text](SAudioFile& file) { file.Title = text; }; };
        const QStringList sources{Add("1.mp3", title("folder")), Add("2.mp3", title(QString(300, 'n'))), Add("3.mp3")};
        QFile::remove(sources.at(2)); // vanished since it was listed
        Run();
        QCOMPARE(worker->failedPaths, sources);
        QVERIFY(QFile::exists(sources.at(0)) && QFile::exists(sources.at(1)));

        // An output path that is a file.
        init();
        worker->settings.outputFolder = Add("a file.mp3");
        worker->settings.deleteOriginal = true;
        Run();
        QCOMPARE(worker->failedPaths, QStringList(In("a file.mp3")));
        QVERIFY(QFile::exists(In("a file.mp3")));
    }

    void choicesOutsideTheTablesDeleteNothing_data()
    {
        QTest::addColumn<int>("organizeBy");
        QTest::addColumn<int>("renameIndex");
        QTest::addColumn<QStringList>("tree");
        QTest::newRow("organize by") << 16 << 2 << QStringList();
        QTest::newRow("negative") << -1 << 2 << QStringList();
        QTest::newRow("rename") << 0 << 7 << QStringList(".mp3");
    }
    void choicesOutsideTheTablesDeleteNothing()
    {
        QFETCH(int, organizeBy);
        QFETCH(int, renameIndex);
        worker->settings.organizeBy = organizeBy;
        worker->settings.renameIndex = renameIndex;
        worker->settings.deleteOriginal = true;
        const QStringList sources{Add("1.mp3"), Add("2.mp3")};
        Run();
        QTEST(Tree("out"), "tree");
        QVERIFY(QFile::exists(sources.at(0)) && QFile::exists(sources.at(1)));
    }

    void deletesOnlyWhatIsElsewhere_data()
    {
        QTest::addColumn<QString>("outputFolder"); // "music" holds the sources, "link" leads to it
        QTest::addColumn<int>("organizeBy");
        QTest::addColumn<bool>("kept");
        QTest::newRow("elsewhere") << "out" << 0 << false;
        QTest::newRow("in place") << "music" << 0 << true;
        QTest::newRow("doubled slash") << "music/" << 0 << true;
        QTest::newRow("dots") << "music/../music/." << 0 << true;
        QTest::newRow("symbolic link") << "link" << 0 << true;
        QTest::newRow("empty level") << "music" << 14 << true;
    }
    void deletesOnlyWhatIsElsewhere()
    {
        QFETCH(QString, outputFolder);
        QFETCH(int, organizeBy);
        QFETCH(bool, kept);
        QDir().mkpath(In("music"));
        QVERIFY(QFile::link(In("music"), In("link")));
        worker->settings.outputFolder = In(outputFolder);
        worker->settings.organizeBy = organizeBy;
        worker->settings.renameIndex = 0;
        worker->settings.deleteOriginal = true;
        const QString path = Add("music/x.mp3", [](SAudioFile& file) { file.Album = "..."; });
        Run();
        QCOMPARE(worker->failedPaths, QStringList());
        QCOMPARE(QFile::exists(path), kept);
        QVERIFY(kept || QFile::exists(In("out/x.mp3")));
        QVERIFY(worker->files.isEmpty());
    }

    void existingDestinationsAreKept()
    {
        worker->settings.organizeBy = 0;
        worker->settings.deleteOriginal = true;
        const QString first = Add("1.mp3");
        const QString second = Add("2.mp3", [](SAudioFile& file) { file.Genre = "Other"; });
        const QByteArray music = Bytes(first);
        // A link in the output folder that leads to the source of the same destination must not cost it.
        const QString linked = Add("3.mp3", [](SAudioFile& file) { file.Title = "linked"; });
        QDir().mkpath(In("out"));
        QVERIFY(QFile::link(linked, In("out/Björk Ärger-linked.mp3")));
        Run();
        QVERIFY(!QFile::exists(first) && !QFile::exists(second) && QFile::exists(linked));
        QCOMPARE(Bytes(In("out/Björk Ärger-Tone of Ten.mp3")), music);
        QCOMPARE(worker->failureText, failureHeading);
    }

    void emptyList()
    {
        Run();
        QCOMPARE(progress, QList<int>());
        QVERIFY(QFileInfo(In("out")).isDir());
        worker->settings.skipOrganize = true;
        Run();
        QCOMPARE(progress, QList<int>{0});
    }

    void stopsWhileItWaits()
    {
        const QString path = Add("x.mp3", [](SAudioFile& file) { file.Year = "0"; });
        worker->settings.deleteOriginal = true;
        worker->start();
        QTRY_VERIFY(worker->waitingForDialog);
        QElapsedTimer clock;
        clock.start();
        worker.reset();
        QVERIFY2(clock.elapsed() < 1000, "the destructor hangs");
        QVERIFY(QFile::exists(path) && !QFile::exists(In("out")));
    }

    void stopsBetweenFiles()
    {
        worker->settings.deleteOriginal = true;
        worker->settings.renameIndex = 0;
        for (int i = 0; i < 50; ++i)
            Add(QString::number(i) + ".mp3");
        connect(
            worker.get(), &ProcessThread::SetProgress, worker.get(),
            [this](int handled) {
                if (handled == 5)
                    worker->requestInterruption();
            },
            Qt::DirectConnection);
        Run();
        QCOMPARE(Tree("out").size(), 5);
        for (const SAudioFile& file : qAsConst(worker->files))
            QVERIFY(QFile::exists(file.Path));
    }

    void hostileTags()
    {
        worker->settings.organizeBy = 2;
        for (const QString& text : {QString("a\nb\tc\x01"), QString("///"), QString(10000, 'x'), QString(QChar(0xD800)),
                                    QString("🎵"), QString("-rf")})
            Add(QString::number(worker->files.size()) + ".mp3",
                [&text](SAudioFile& file) { file.Artist = file.Title = file.Album = text; });
        worker->settings.deleteOriginal = true;
        const int count = worker->files.size();
        Run([](SAudioFile&) { return 1; });
        QCOMPARE(Tree("out").size() + worker->failedPaths.size(), count);
        for (const QString& failed : qAsConst(worker->failedPaths))
            QVERIFY(QFile::exists(failed));
        QCOMPARE(worker->failedPaths, QStringList({In("2.mp3"), In("3.mp3")})); // neither can be a file name
    }
};

QTEST_GUILESS_MAIN(TestProcessing)
#include "tst_processing.moc"
