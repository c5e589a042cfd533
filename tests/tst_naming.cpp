#include "naming/OutputPath.h"
#include "naming/ProfileText.h"

#include <QBuffer>
#include <QDir>
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
        SRunSettings settings;
        settings.outputFolder = "/out/";
        QCOMPARE(organizeChoices.front().label, "Don't organize"); // no path shows it
        QStringList folders;
        const int choices = static_cast<int>(organizeChoices.size());
        for (settings.organizeBy = 0; settings.organizeBy < choices; ++settings.organizeBy) {
            folders += BuildFolderPath("/out", FolderTags(song, settings.organizeBy)).mid(5);
            QCOMPARE(Preview(song, settings), QDir::cleanPath("/out/" + folders.last() + "/AC DC-Ti tle.mp3"));
        }
        QCOMPARE(folders.join('|'), QString("|AC DC|AC DC/Al bum|AC DC/1999|1999|1999/AC DC|1999/Rock|1999/Rock/AC DC|"
                                            "Rock|Rock/AC DC|Rock/AC DC/Al bum|Rock/AC DC/1999|Rock/1999|"
                                            "Rock/1999/AC DC|Al bum|Al bum/AC DC"));
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
                                 {"[Artist", "[Artist"},
                                 {"[[Artist]", "[[Artist]"},
                                 {"[artist][Comment]", "[artist][Comment]"},
                                 {"[Year]%1[", "[Album]%1["}}; // inserted values are not expanded again
        for (const auto& [scheme, name] : rows)
            QCOMPARE(GenerateFileNameFromRenameScheme(scheme, "A", "T", "", "[Album]", "G", "5"), QString(name));
    }

    void oddities()
    {
        // In the preview, a value is replaced again by later tags, and a missing tag leaves its word.
        const SAudioFile words{"", "The Album Year", "", "1999", "Rock", "", "/x.ogg"};
        const SAudioFile climber{"../x", "../../etc", "..", "", "", "", "/x.ogg"}; // stays in the output folder
        const std::tuple<SAudioFile, int, int, const char*> rows[] = {
            // the worker's folder, its name, the preview
            {words, 10, 2,
             "o//Rock/The Album Year/|The Album Year-|o/Rock/The Album 1999/Album/The Album Year-Title.ogg"},
            {climber, 2, 1, "o//      etc/|   x|o/      etc/   x.ogg"},
            {song, 16, 7, "o/||o//.mp3"}};
        for (const auto& [file, organizeBy, rename, paths] : rows) {
            const SRunSettings settings{organizeBy, rename, "x", false, false, false, "o/", false};
            QCOMPARE(BuildFolderPath("o/", FolderTags(file, organizeBy)) + '|' + BuildFileName(file, rename, "x") +
                         '|' + Preview(file, settings),
                     QString(paths));
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
            {"1\n=2 \n\xff\nyes\n-1\n2\nx=/o\r\nk=1", // by position, the key is not looked at
             "organizeBy=1\nrename=2\ncustomRenameScheme=\xef\xbf\xbd\nskipOrganize=0\ntagFixManual=1\n"
             "onlyEditInvalidTags=1\noutputFolder=/o\r\ndeleteOriginal=1\n"},
            {"a= 3\t\nb=99", ProfileText({3, 99, "", false, false, false, "", false})},
            {QByteArray(1 << 20, '='), ProfileText({0, 0, "", false, false, false, "", false})}};
        for (const auto& [in, out] : rows) {
            QBuffer buffer;
            buffer.setData(in);
            QVERIFY(buffer.open(QIODevice::ReadOnly));
            QCOMPARE(ProfileText(ReadProfile(buffer)), out);
            QVERIFY(buffer.pos() <= 1 << 17);
        }
    }
};

QTEST_GUILESS_MAIN(TestNaming)
#include "tst_naming.moc"
