#include "naming/OutputPath.h"

#include <QtTest>

namespace
{
const SAudioFile song{"Ti.tle", "AC/DC", "Al:bum", "1999", "Rock?", "5", "/music/01.My.Song.MP3"};
const SAudioFile untagged{"", "", "", "0", "", "0", "/music/Intro.ogg"};
} // namespace

class TestNaming : public QObject
{
    Q_OBJECT

private slots:
    void layouts_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("folders");
        const char* rows[][2] = {
            {"Don't organize", ""},
            {"Artist", "/AC DC"},
            {"Artist/Album", "/AC DC/Al bum"},
            {"Artist/Year", "/AC DC/1999"},
            {"Year", "/1999"},
            {"Year/Artist", "/1999/AC DC"},
            {"Year/Genre", "/1999/Rock"},
            {"Year/Genre/Artist", "/1999/Rock/AC DC"},
            {"Genre", "/Rock"},
            {"Genre/Artist", "/Rock/AC DC"},
            {"Genre/Artist/Album", "/Rock/AC DC/Al bum"},
            {"Genre/Artist/Year", "/Rock/AC DC/1999"},
            {"Genre/Year", "/Rock/1999"},
            {"Genre/Year/Artist", "/Rock/1999/AC DC"},
            {"Album", "/Al bum"},
            {"Album/Artist", "/Al bum/AC DC"},
        };
        for (const auto& row : rows)
            QTest::newRow(row[0]) << row[0] << row[1];
    }
    void layouts()
    {
        QFETCH(QString, folders);
        static int index = 0;
        QTEST(QString(organizeChoices[static_cast<std::size_t>(index)].label), "label");
        QCOMPARE(BuildFolderPath("/out", FolderTags(song, index)), "/out" + folders);
        SRunSettings settings;
        settings.organizeBy = index++;
        settings.outputFolder = "/out/"; // joined with a single slash
        QCOMPARE(BuildPreviewPath(song, settings), "/out" + folders + "/AC DC-Ti tle.mp3");
    }

    void renames_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("untaggedName");
        QTest::addColumn<QString>("untaggedPreview");
        QTest::newRow("0") << "Original name"
                           << "01 My Song"
                           << "Intro"
                           << "Intro";
        QTest::newRow("1") << "Title"
                           << "Ti tle"
                           << ""
                           << "Title";
        QTest::newRow("2") << "Artist-Title"
                           << "AC DC-Ti tle"
                           << "-"
                           << "Artist-Title";
        QTest::newRow("3") << "Artist-Title (Year)"
                           << "AC DC-Ti tle (1999)"
                           << "- (0)"
                           << "Artist-Title (Year)";
        QTest::newRow("4") << "Artist-Title (Album)"
                           << "AC DC-Ti tle (Al bum)"
                           << "- ()"
                           << "Artist-Title (Album)";
        QTest::newRow("5") << "Artist-Title (Album - Year)"
                           << "AC DC-Ti tle (Al bum - 1999)"
                           << "- ( - 0)"
                           << "Artist-Title (Album - Year)";
        // A missing track shows as "0" even in the preview.
        QTest::newRow("6") << "Custom"
                           << "5 AC DC-Ti tle (Al bum, 1999, Rock )"
                           << "0 - (, 0, )"
                           << "0 Artist-Title (Album, Year, Genre)";
    }
    void renames()
    {
        const int index = QString(QTest::currentDataTag()).toInt();
        SRunSettings settings;
        settings.renameIndex = index;
        QTEST(QString(renameChoices[static_cast<std::size_t>(index)].label), "label");
        QTEST(BuildFileName(song, index, settings.customRenameScheme), "name");
        QTEST(BuildFileName(untagged, index, settings.customRenameScheme), "untaggedName");
        QTEST(BuildPreviewFileName(untagged, settings), "untaggedPreview");
    }

    void schemes_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::newRow("[Track]. [Artist]-[Title] ([Genre])") << "5. A-T (G)";
        QTest::newRow("[Artist][Artist]") << "AA";
        QTest::newRow("[Artist") << "[Artist";
        QTest::newRow("[[Artist]") << "[[Artist]";
        QTest::newRow("x]") << "x]";
        QTest::newRow("[artist][Comment]") << "[artist][Comment]";
        QTest::newRow("no placeholder") << "no placeholder";
        QTest::newRow("[Year]%1[") << "[Album]%1["; // inserted values are not expanded again
    }
    void schemes()
    {
        QTEST(GenerateFileNameFromRenameScheme(QTest::currentDataTag(), "A", "T", "", "[Album]", "G", "5"), "expected");
    }

    void previewOddities()
    {
        SRunSettings settings;
        settings.outputFolder = "//out//";
        settings.organizeBy = 10;
        SAudioFile file = untagged;
        file.Genre = "Rock";
        QCOMPARE(BuildPreviewPath(file, settings), QString("/out//Rock/Artist/Album/Artist-Title.ogg"));
        file.Artist = "The Album Year";
        file.Year = "1999";
        QCOMPARE(BuildPreviewPath(file, settings), QString("/out//Rock/The Album 1999/Album/The Album Year-Title.ogg"));
    }

    void indicesOutsideTheTables()
    {
        for (const int index : {-1, 7, 16, 1 << 30}) {
            SRunSettings settings;
            settings.organizeBy = settings.renameIndex = index;
            settings.outputFolder = "/out";
            if (!IsOrganizeChoice(index))
                QCOMPARE(FolderTags(song, index), QStringList());
            if (index != 7)
                QCOMPARE(BuildPreviewPath(song, settings), QString("/out/.mp3"));
            QCOMPARE(BuildFileName(song, index, "x"), QString());
        }
    }

    void noTagLeavesTheOutputFolder()
    {
        SAudioFile file = song;
        file.Artist = "../../etc";
        file.Album = "..";
        file.Title = "../x";
        QCOMPARE(BuildFolderPath("/out", FolderTags(file, 2)), QString("/out/      etc/"));
        QCOMPARE(BuildFileName(file, 1, {}), QString("   x"));
    }
};

QTEST_GUILESS_MAIN(TestNaming)
#include "tst_naming.moc"
