#include "demo/AudioSamples.h"
#include "files/FilePath.h"
#include "files/FolderEntries.h"
#include "tags/AudioFileList.h"
#include "tags/TagManager.h"
#include "tags/TagTextRules.h"

#include <QTemporaryDir>
#include <QtTest>

namespace
{
QString Texts(const SAudioFile& file)
{
    return QStringList({file.Artist, file.Title, file.Album, file.Year, file.Genre, file.Track}).join('|');
}

const QString fullTags = "Björk Ärger|Tone of Ten|Small Files|1999|Rock|7";
const QString noTags = "|||0||0";
const QString unreadable = "Unknown|Unknown|Unknown|Unknown|Unknown|Unknown";
} // namespace

class TestTags : public QObject
{
    Q_OBJECT

private slots:
    void textRules()
    {
        const struct
        {
            const char *text, *stripped, *search;
            bool invalid = false;
        } rows[] = {
            {"", "", ""},
            {"WWW.X.COM", "WWW X COM", "WWW+X+COM"},
            {"www.x", "www x", "www+x", true},
            {"see http://x", "see http   x", "see+http://x", true},
            {"Dot.company", "Dot company", "Dot+company", true},
            {"x.org", "x org", "x+org", true},
            {"Best.network", "Best network", "Best+network", true},
            {"Track.fmt", "Track fmt", "Track+fmt", true},
            {"a/b\\c?d%e*f:g|h\"i<j>k.l", "a b c d e f g h i j k l", "a/b\\c?d%e*f:g|h\"i<j>k+l"},
            {"What?/Why:", "What  Why", "What?/Why:"},
            {"...", "", "+++"},
            {" a \t", " a \t", "+a+\t"},
            {"AC-DC  ", "AC-DC", "AC+DC++"},
            {"1234567890", "1234567890", ""},
            {"01 - Hey_Jude [Remastered 2009]", "01 - Hey_Jude [Remastered 2009]", "+++Hey+Jude++Remastered++"},
        };
        for (const auto& row : rows) {
            QCOMPARE(StrippedOfReservedChars(row.text), QString(row.stripped));
            QCOMPARE(PrepareForSearch(row.text), QString(row.search));
            QVERIFY2(IsInvalidTag(row.text) == row.invalid, row.text);
        }
    }

    void incomplete()
    {
        const SAudioFile complete{"t", "a", "b", "1", "g", "2", "/x.mp3"};
        QVERIFY(!IsIncomplete(complete));
        for (const STag& tag : allTags) {
            SAudioFile file = complete;
            for (const QString missing : {tag.absent, "Unknown"}) {
                file.*tag.field = missing;
                QVERIFY2(IsIncomplete(file), tag.name);
            }
            file.*tag.field = *tag.absent ? "" : "0"; // what is missing for the other kind
            QVERIFY2(!IsIncomplete(file), tag.name);
        }
    }

    void entriesBySize()
    {
        const QTemporaryDir folder;
        const auto entries = [&folder](int turns) {
            const auto goOn = [&turns] { return turns-- > 0; };
            const QStringList paths = EntriesBySize(folder.path() + '/', QDir::Files | QDir::Hidden, goOn);
            return paths.join('|').remove(folder.path());
        };
        for (const char* name : {"a", "b", ".c", "d"})
            QVERIFY(QFile(folder.filePath(name)).open(QIODevice::WriteOnly));
        QVERIFY(QFile::resize(folder.filePath("a"), 2) && QFile::resize(folder.filePath("b"), 1));
        QCOMPARE(entries(1), QString("/d|/.c|/b|/a")); // the smallest first, of equal ones the last name
        QCOMPARE(entries(0), QString());
        for (int i = 0; i < 1000; ++i)
            QVERIFY(QFile(folder.filePath(QString("%1.mp3").arg(i))).open(QIODevice::WriteOnly));
        QVERIFY(entries(1).isEmpty() && entries(2).count('|') == 1003); // asks while it reads, too
    }

    void listFindsItsRecords()
    {
        AudioFileList list;
        for (const char* path : {"/a", "/b", "/c"})
            list.Append({"", "", "", "0", "", "0", path});
        list.Remove(0);
        list.Remove(2);
        QVERIFY(list.Count() == 2 && list.RowOf("/a") == -1 && list.RowOf("/b") == 0 && list.RowOf("/c") == 1);
        QVERIFY(list.Contains("/c") && !list.Contains("/C") && !list.IsRow(2) && !list.IsRow(-1));
    }

    void readsAndWritesEveryType()
    {
        QCOMPARE(AudioExtensions().join(' '), QString("mp3 mp4 wav flac aif asf ogg mpc spx wv"));
        const QTemporaryDir folder;
        TagManager tags;
        for (const QString& extension : AudioExtensions()) {
            QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/full.") + extension)), fullTags);
            QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/bare.") + extension)), noTags);

            // Beyond U+FFFF, both normalisation forms, and ten thousand characters.
            SAudioFile file{"𝄞 😀 𠀀",
                            "é e\u0301",
                            QString(10000, 'x'),
                            "2024",
                            "Ünïcode",
                            "12",
                            PutSample("bare." + extension, folder.filePath("x." + extension))};
            tags.WriteFile(file);
            QCOMPARE(Texts(tags.ReadFile(file.Path)), Texts(file));
            // Its content says what it is, whatever its name says.
            const QString name = extension + (extension == "wv" ? ".mp3" : ".wv");
            SAudioFile misnamed = file;
            misnamed.Path = PutSample("bare." + extension, folder.filePath(name));
            tags.WriteFile(misnamed);
            QVERIFY2(Bytes(misnamed.Path) == Bytes(file.Path), qPrintable(name));
            tags.path = file.Path;

            QVERIFY(tags.SetInfo(Tag::Year, "abc") && tags.SetInfo(Tag::Track, "3 of 12") &&
                    tags.SetInfo(Tag::Genre, ""));
            QCOMPARE(tags.GetInfo(Tag::Year), QString("0"));
            QCOMPARE(tags.GetInfo(Tag::Track), QString("3"));
            QCOMPARE(tags.GetInfo(Tag::Genre), QString());
            QCOMPARE(tags.GetInfo(Tag::Title), file.Title);
            for (const int noTag : {0, 7})
                QVERIFY(tags.GetInfo(noTag) == "Unknown" && !tags.SetInfo(noTag, "x"));
        }
        // A link stays one, a file keeps its permissions, and nothing is left beside them.
        tags.path = folder.filePath("link.mp3");
        QVERIFY(QFile::link(folder.filePath("x.mp3"), tags.path));
        QVERIFY(QFile::setPermissions(tags.path,
                                      QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadOther));
        const auto permissions = QFileInfo(tags.path).permissions();
        QVERIFY(tags.SetInfo(Tag::Title, "by way of the link"));
        QVERIFY(QFileInfo(tags.path).isSymLink() && QFileInfo(tags.path).permissions() == permissions);
        QCOMPARE(tags.ReadFile(folder.filePath("x.mp3")).Title, QString("by way of the link"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 21);
    }

    void equalTextsLeaveTheFileAlone()
    {
        const QTemporaryDir folder;
        TagManager tags;
        for (const QString extension : {"mp3", "flac", "ogg"}) {
            const QString path = PutSample("rich." + extension, folder.filePath("x." + extension));
            const QByteArray before = Bytes(path);
            SAudioFile file = tags.ReadFile(path);
            QCOMPARE(Texts(file), QString("First Second|Tone of Ten|Small Files|1999|Rock|3"));
            tags.WriteFile(file);
            QVERIFY(Bytes(path) == before);

            file.Title = "Changed";
            tags.WriteFile(file);
            QCOMPARE(Texts(tags.ReadFile(path)), Texts(file));
            QVERIFY(Bytes(path).contains("1999-05-03") && Bytes(path).contains("3/12"));
        }
    }

    void namesInEitherForm()
    {
        const QTemporaryDir folder;
        TagManager tags;
        const QString decomposed = PutSample("full.mp3", folder.filePath("e\u0301.mp3"));
        const QString precomposed = folder.filePath("é.mp3");
        QCOMPARE(Texts(tags.ReadFile(precomposed)), fullTags);
        if (QFile::exists(precomposed))
            return; // this file system takes the two for one
        PutSample("bare.mp3", precomposed);
        QCOMPARE(Texts(tags.ReadFile(precomposed)), noTags);
        QCOMPARE(Texts(tags.ReadFile(decomposed)), fullTags);
    }

    void unreadableFiles()
    {
        const QTemporaryDir folder;
        TagManager tags;
        QDir(folder.path()).mkdir("folder.mp3");
        QFile text(folder.filePath("notes.txt"));
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no music") > 0);
        text.close();
        const QString zeros = PutSample("full.mp3", folder.filePath("zeros.mp3")); // made, but not filled yet
        QFile preallocated(zeros);
        QVERIFY(preallocated.open(QIODevice::WriteOnly) && preallocated.resize(4 << 20) && preallocated.seek(4 << 20));
        preallocated.write(Bytes(TEST_DATA_DIR "/full.mp3"));
        preallocated.close();
        for (const char* name : {"missing.mp3", "folder.mp3", "notes.txt", "zeros.mp3"}) {
            QCOMPARE(Texts(tags.ReadFile(folder.filePath(name))), unreadable);
            QVERIFY(!tags.SetInfo(Tag::Title, "x"));
        }
        QCOMPARE(Bytes(text.fileName()), QByteArray("no music"));
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
