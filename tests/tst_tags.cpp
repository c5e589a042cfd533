#include "demo/AudioSamples.h"
#include "tags/AudioTypes.h"
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
            {"WWW.X.COM", "WWW X COM", "WWW+X+COM"},
            {"www.x", "www x", "www+x", true},
            {"see http://x", "see http   x", "see+http://x", true},
            {"Dot.company", "Dot company", "Dot+company", true},
            {"x.org", "x org", "x+org", true},
            {"Best.network", "Best network", "Best+network", true},
            {"Track.fmt", "Track fmt", "Track+fmt", true},
            {"a/b\\c?d%e*f:g|h\"i<j>k.l", "a b c d e f g h i j k l", "a/b\\c?d%e*f:g|h\"i<j>k+l"},
            {"...", "", "+++"},
            {"AC-DC  ", "AC-DC", "AC+DC++"},
            {"01 - Hey_Jude [Remastered 2009]", "01 - Hey_Jude [Remastered 2009]", "+++Hey+Jude++Remastered++"},
        };
        for (const auto& row : rows) {
            QCOMPARE(StrippedOfReservedChars(row.text), QString(row.stripped));
            QCOMPARE(PrepareForSearch(row.text), QString(row.search));
            QVERIFY2(IsInvalidTag(row.text) == row.invalid, row.text);
        }
    }

    void readsAndWritesEveryType()
    {
        QCOMPARE(AudioExtensions().join(' '), QString("mp3 mp4 wav flac aif asf ogg mpc spx wv"));
        const QTemporaryDir folder;
        TagManager tags;
        for (const QString& extension : AudioExtensions()) {
            QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/full.") + extension)), fullTags);
            QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/bare.") + extension)), noTags);

            // Beyond U+FFFF, both normalisation forms, and ten thousand characters. A path may come in either form. The
            // content says what a file is, whatever its name says.
            SAudioFile file{"𝄞 😀 𠀀", "é e\u0301", QString(10000, 'x'), "2024", "Ünïcode", "12", {}};
            const QString misnamed = folder.filePath("é" + extension + (extension == "wv" ? ".mp3" : ".wv"));
            for (const QString& path : {misnamed, folder.filePath("x." + extension)}) {
                PutSample("bare." + extension, path.normalized(QString::NormalizationForm_D));
                file.Path = path;
                tags.WriteFile(file);
                QCOMPARE(Texts(tags.ReadFile(path)), Texts(file));
            }
            QVERIFY2(Bytes(misnamed.normalized(QString::NormalizationForm_D)) == Bytes(file.Path),
                     qPrintable(extension));

            QVERIFY(tags.SetTags({{Tag::Year, "abc"}, {Tag::Track, "3 of 12"}}) && tags.SetInfo(Tag::Genre, ""));
            QCOMPARE(tags.GetInfo(Tag::Year) + tags.GetInfo(Tag::Track) + tags.GetInfo(Tag::Genre), QString("03"));
            QCOMPARE(tags.GetInfo(Tag::Title), file.Title);
            for (const int noTag : {0, 7})
                QVERIFY(tags.GetInfo(noTag) == "Unknown" && !tags.SetInfo(noTag, "x"));
        }
        // A link stays one, and nothing is left beside the files.
        tags.path = folder.filePath("link.mp3");
        QVERIFY(QFile::link(folder.filePath("x.mp3"), tags.path) && tags.SetInfo(Tag::Title, QString(20000, 'l')));
        QVERIFY(QFileInfo(tags.path).isSymLink() && Bytes(folder.filePath("x.mp3")).contains("lllll"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 21);
    }

    void whatTextCannotExpressSurvives()
    {
        const QTemporaryDir folder;
        TagManager tags;
        for (const QString extension : {"mp3", "flac", "ogg"}) {
            const QString path = PutSample("rich." + extension, folder.filePath("x." + extension));
            const QByteArray before = Bytes(path);
            SAudioFile file = tags.ReadFile(path);
            tags.WriteFile(file);
            QVERIFY(Bytes(path) == before);
            file.Title = "Changed";
            tags.WriteFile(file);
            for (const char* rich : {"1999-05-03", "3/12", "First", "Second", "Changed"})
                QVERIFY2(Bytes(path).contains(rich), rich);
        }
    }

    void oddFiles()
    {
        const QTemporaryDir folder;
        TagManager tags;
        QDir(folder.path()).mkdir("folder.mp3");
        const auto put = [&folder](const char* name, const QByteArray& bytes) {
            QFile file(folder.filePath(name));
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        };
        // The third is made, but not filled yet.
        const QByteArray frames = Bytes(TEST_DATA_DIR "/bare.mp3");
        QVERIFY(put("notes.txt", "no music") && put("empty.mp3", "") &&
                put("zeros.mp3", QByteArray(4 << 20, '\0') + frames));
        for (const char* name : {"missing.mp3", "folder.mp3", "notes.txt", "zeros.mp3"}) {
            QCOMPARE(Texts(tags.ReadFile(folder.filePath(name))), unreadable);
            QVERIFY(!tags.SetInfo(Tag::Title, "x"));
        }
        QCOMPARE(Texts(tags.ReadFile(folder.filePath("empty.mp3"))), noTags);
        QCOMPARE(Bytes(folder.filePath("notes.txt")), QByteArray("no music"));
        // A text that is too long for its format.
        tags.path = PutSample("full.asf", folder.filePath("x.asf"));
        QVERIFY(tags.SetInfo(Tag::Title, QString(40000, 'x')) && tags.GetInfo(Tag::Title) == "Tone of Ten");
        // MPEG sound in a wave file is not the file.
        QVERIFY(put("x.wav", Bytes(TEST_DATA_DIR "/bare.wav").replace(44, frames.size(), frames)));
        tags.path = folder.filePath("x.wav");
        QVERIFY(tags.SetInfo(Tag::Title, "x") && Bytes(tags.path).startsWith("RIFF"));
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
