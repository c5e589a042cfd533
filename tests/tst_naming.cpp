#include "naming/OutputPath.h"
#include "naming/ProfileText.h"
#include "tests/Rows.h"

#include <QBuffer>
#include <QDir>

namespace
{
const SAudioFile song{" Ti.tle", "AC/DC", "[Track]", "1999", "Rock?", "5", "/music/01.My.Song.MP3"};
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
    void layouts_data()
    {
        const QString folders = "|AC DC|AC DC/[Track]|AC DC/1999|1999|1999/AC DC|1999/Rock|1999/Rock/AC DC|Rock|"
                                "Rock/AC DC|Rock/AC DC/[Track]|Rock/AC DC/1999|Rock/1999|Rock/1999/AC DC|[Track]|"
                                "[Track]/AC DC";
        QList<QStringList> rows;
        for (const QString& folder : folders.split('|'))
            rows += {QString::number(rows.size()), folder};
        AddRows({"folder"}, rows);
    }
    void layouts()
    {
        QFETCH(QString, folder);
        const int organizeBy = QByteArray(QTest::currentDataTag()).toInt();
        QCOMPARE(BuildFolderPath("/out", FolderTags(song, organizeBy)).mid(5), folder);
        QCOMPARE(Preview(song, {organizeBy, 2, {}, false, false, true, "/out/", false}),
                 QDir::cleanPath("/out/" + folder + "/AC DC- Ti tle.mp3"));
    }

    void renames_data()
    {
        AddRows({"name", "withoutTags", "previewWithoutTags"},
                {{"0 Original name", "01 My Song", "Intro", "Intro"},
                 {"1 Title", " Ti tle", "", "Title"},
                 {"2 Artist-Title", "AC DC- Ti tle", "-", "Artist-Title"},
                 {"3 Artist-Title (Year)", "AC DC- Ti tle (1999)", "- (0)", "Artist-Title (Year)"},
                 // Inserted values are not expanded again.
                 {"4 Artist-Title (Album)", "AC DC- Ti tle ([Track])", "- ()", "Artist-Title (Album)"},
                 {"5 Artist-Title (Album - Year)", "AC DC- Ti tle ([Track] - 1999)", "- ( - 0)",
                  "Artist-Title (Album - Year)"},
                 // A missing track shows as "0" even in the preview.
                 {"6 [Track] [Artist]-[Title] ([Album], [Year], [Genre])", "5 AC DC- Ti tle ([Track], 1999, Rock )",
                  "0 - (, 0, )", "0 Artist-Title (Album, Year, Genre)"},
                 {"6 [Album]%1[", "[Track] 1[", " 1[", "Album 1["},
                 {"6 [Artist", "[Artist", "[Artist", "[Artist"},
                 {"6 [[Artist]", "[[Artist]", "[[Artist]", "[[Artist]"},
                 {"6 [artist][Comment]", "[artist][Comment]", "[artist][Comment]", "[artist][Comment]"}});
    }
    void renames()
    {
        const QString row = QTest::currentDataTag();
        const SRunSettings settings{0, row.left(1).toInt(), row.mid(2), false, false, true, "", false};
        QTEST(BuildFileName(song, settings.renameIndex, settings.customRenameScheme), "name");
        QTEST(BuildFileName(untagged, settings.renameIndex, settings.customRenameScheme), "withoutTags");
        QTEST(BuildPreviewFileName(untagged, settings), "previewWithoutTags");
    }

    void previewReplacesWordsAgain() // which a missing tag leaves in it
    {
        const SAudioFile file{"", "The Album Year", "", "1999", "Rock", "", "/x.ogg"};
        QCOMPARE(Preview(file, {10, 2, "", false, false, false, "o/", false}),
                 QString("o/Rock/The Album 1999/Album/The Album Year-Title.ogg"));
    }

    void profileText_data()
    {
        const QByteArray text = "organizeBy=5\nrename=6\ncustomRenameScheme=[x]=é\nskipOrganize=1\ntagFixManual=0\n"
                                "onlyEditInvalidTags=1\noutputFolder=/a=b\ndeleteOriginal=0\n";
        QTest::addColumn<QByteArray>("in");
        QTest::addColumn<QByteArray>("out");
        QTest::newRow("every line") << text << ProfileText({5, 6, "[x]=é", true, false, true, "/a=b", false});
        QTest::newRow("by position, whatever the key")
            << QByteArray("1\n=2 \n\xff\nyes\n-1\n2\nx=/o\r\nk=1")
            << QByteArray("organizeBy=1\nrename=2\ncustomRenameScheme=\xef\xbf\xbd\nskipOrganize=0\ntagFixManual=1\n"
                          "onlyEditInvalidTags=1\noutputFolder=/o\r\ndeleteOriginal=1\n");
        QTest::newRow("blanks, and too few lines")
            << QByteArray("a= 3\t\nb=99") << ProfileText({3, 99, "", false, false, false, "", false});
        QTest::newRow("a huge line") << QByteArray(1 << 20, '=')
                                     << ProfileText({0, 0, "", false, false, false, "", false});
    }
    void profileText()
    {
        QFETCH(QByteArray, in);
        QBuffer buffer(&in);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QTEST(ProfileText(ReadProfile(buffer)), "out");
        QVERIFY(buffer.pos() <= 1 << 17);
    }
};

QTEST_GUILESS_MAIN(TestNaming)
#include "tst_naming.moc"
