#include "naming/OutputPath.h"
#include "naming/ProfileText.h"
#include "naming/StandIns.h"

#include <QBuffer>
#include <QtTest>

namespace
{
const SAudioFile song{"Ti.tle", "AC/DC", "Al:bum", "1999", "Rock?", "5", "/music/01.My.Song.MP3"};
const SAudioFile untagged{"", "", "", "0", "", "0", "/music/Intro.ogg"};

QString Preview(const SAudioFile& file, const SRunSettings& settings)
{
    return BuildPreviewPath(file, settings, BuildPreviewFileName(file, settings));
}
} // namespace

class TestNaming : public QObject
{
    Q_OBJECT

private slots:
    void layouts()
    {
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
        SRunSettings settings;
        settings.outputFolder = "/out/";
        settings.organizeBy = 0;
        for (const auto& [label, folders] : rows) {
            QCOMPARE(organizeChoices.at(static_cast<std::size_t>(settings.organizeBy)).label, label);
            QCOMPARE(BuildFolderPath("/out", FolderTags(song, settings.organizeBy)), QString("/out") + folders);
            QCOMPARE(Preview(song, settings), QString("/out") + folders + "/AC DC-Ti tle.mp3");
            ++settings.organizeBy;
        }
    }

    void renames()
    {
        const char* rows[][4] = {
            // label, name, name without tags, preview without tags
            {"Original name", "01 My Song", "Intro", "Intro"},
            {"Title", "Ti tle", "", "Title"},
            {"Artist-Title", "AC DC-Ti tle", "-", "Artist-Title"},
            {"Artist-Title (Year)", "AC DC-Ti tle (1999)", "- (0)", "Artist-Title (Year)"},
            {"Artist-Title (Album)", "AC DC-Ti tle (Al bum)", "- ()", "Artist-Title (Album)"},
            {"Artist-Title (Album - Year)", "AC DC-Ti tle (Al bum - 1999)", "- ( - 0)", "Artist-Title (Album - Year)"},
            // A missing track shows as "0" even in the preview.
            {"Custom", "5 AC DC-Ti tle (Al bum, 1999, Rock )", "0 - (, 0, )", "0 Artist-Title (Album, Year, Genre)"},
        };
        SRunSettings settings;
        settings.renameIndex = 0;
        for (const auto& [label, name, untaggedName, untaggedPreview] : rows) {
            QCOMPARE(renameChoices.at(static_cast<std::size_t>(settings.renameIndex)).label, label);
            QCOMPARE(BuildFileName(song, settings.renameIndex, settings.customRenameScheme), QString(name));
            QCOMPARE(BuildFileName(untagged, settings.renameIndex, settings.customRenameScheme), QString(untaggedName));
            QCOMPARE(BuildPreviewFileName(untagged, settings), QString(untaggedPreview));
            ++settings.renameIndex;
        }
    }

    void schemes()
    {
        const char* rows[][2] = {{"[Track]. [Artist]-[Title] ([Genre])", "5. A-T (G)"},
                                 {"[Artist][Artist]", "AA"},
                                 {"[Artist", "[Artist"},
                                 {"[[Artist]", "[[Artist]"},
                                 {"x]", "x]"},
                                 {"[artist][Comment]", "[artist][Comment]"},
                                 {"", ""},
                                 {"[Year]%1[", "[Album]%1["}}; // inserted values are not expanded again
        for (const auto& [scheme, name] : rows)
            QCOMPARE(GenerateFileNameFromRenameScheme(scheme, "A", "T", "", "[Album]", "G", "5"), QString(name));
    }

    void standIns()
    {
        const auto names = [](const SAudioFile& file) {
            return BuildFileName(file, customRenameIndex, "[Artist]-[Title]-[Album]-[Year]-[Genre]-[Track]");
        };
        SAudioFile file = untagged;
        PutStandIns(file);
        QCOMPARE(names(file), QString("Unknown-Unknown-Album-Year-Genre-Track"));
        TakeStandInsBack(file);
        QCOMPARE(names(file), QString("---0--0"));
        PutPreviewCaptions(file);
        QCOMPARE(names(file), QString("Artist-Title-Album-Year-Genre-0"));
    }

    void oddities()
    {
        SRunSettings settings;
        settings.outputFolder = "//out//";
        settings.organizeBy = 10;
        SAudioFile file = untagged;
        file.Genre = "Rock";
        file.Artist = "The Album Year"; // replaced again by later tags, and a missing tag leaves its word
        file.Year = "1999";
        QCOMPARE(Preview(file, settings), QString("/out//Rock/The Album 1999/Album/The Album Year-Title.ogg"));

        for (const int outside : {-1, 16, 1 << 30}) {
            settings.organizeBy = settings.renameIndex = outside;
            QCOMPARE(FolderTags(song, outside), QStringList());
            QCOMPARE(BuildFileName(song, outside, "x"), QString());
            QCOMPARE(Preview(song, settings), QString("/out//.mp3"));
        }
    }

    void profileText()
    {
        const SRunSettings settings{5, 6, "[x]=é", true, false, true, "/a=b", false};
        const QByteArray text = "organizeBy=5\nrename=6\ncustomRenameScheme=[x]=é\nskipOrganize=1\ntagFixManual=0\n"
                                "onlyEditInvalidTags=1\noutputFolder=/a=b\ndeleteOriginal=0\n";
        QCOMPARE(ProfileText(settings), text);
        const QByteArray rows[][2] = {
            {text, text},
            {"1\n=2 \nx\nyes\n-1\n2\nx=/o\r\nk=1", // by position, the key is not looked at
             "organizeBy=1\nrename=2\ncustomRenameScheme=x\nskipOrganize=0\ntagFixManual=1\nonlyEditInvalidTags=1\n"
             "outputFolder=/o\r\ndeleteOriginal=1\n"},
            {"a= 3\t\nb=99", "organizeBy=3\nrename=99\ncustomRenameScheme=\nskipOrganize=0\ntagFixManual=0\n"
                             "onlyEditInvalidTags=0\noutputFolder=\ndeleteOriginal=0\n"},
            {QByteArray(1 << 20, '='), ProfileText({0, 0, "", false, false, false, "", false})},
            {"\n\n\xff\n", ProfileText({0, 0, QString(QChar(0xFFFD)), false, false, false, "", false})},
        };
        for (const auto& [in, out] : rows) {
            QBuffer buffer;
            buffer.setData(in);
            QVERIFY(buffer.open(QIODevice::ReadOnly));
            QCOMPARE(ProfileText(ReadProfile(buffer)), out);
            QVERIFY(buffer.pos() <= 1 << 17);
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
