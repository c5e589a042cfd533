#include "support/AudioSamples.h"
#include "tags/FilePath.h"
#include "tags/TagManager.h"
#include "tags/TagTextRules.h"

#include <QTemporaryDir>
#include <QtTest>

namespace
{
QStringList Texts(const SAudioFile& file)
{
    return {file.Artist, file.Title, file.Album, file.Year, file.Genre, file.Track};
}

const QStringList fullTags{"Björk Ärger", "Tone of Ten", "Small Files", "1999", "Rock", "7"};
const QStringList noTags{"", "", "", "0", "", "0"};
const QStringList unreadable{"Unknown", "Unknown", "Unknown", "Unknown", "Unknown", "Unknown"};
} // namespace

class TestTags : public QObject
{
    Q_OBJECT

private slots:
    void textRules_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("invalid");
        QTest::addColumn<QString>("stripped");
        QTest::addColumn<QString>("search");
        QTest::newRow("empty") << "" << false << ""
                               << "";
        QTest::newRow("capitals pass") << "WWW.X.COM" << false << "WWW X COM"
                                       << "WWW+X+COM";
        QTest::newRow("www") << "www.x" << true << "www x"
                             << "www+x";
        QTest::newRow("http") << "see http://x" << true << "see http   x"
                              << "see+http://x";
        QTest::newRow("com inside a word") << "Dot.company" << true << "Dot company"
                                           << "Dot+company";
        QTest::newRow("org") << "x.org" << true << "x org"
                             << "x+org";
        QTest::newRow("net") << "Best.network" << true << "Best network"
                             << "Best+network";
        QTest::newRow("fm") << "Track.fmt" << true << "Track fmt"
                            << "Track+fmt";
        QTest::newRow("every reserved one") << "a/b\\c?d%e*f:g|h\"i<j>k.l" << false << "a b c d e f g h i j k l"
                                            << "a/b\\c?d%e*f:g|h\"i<j>k+l";
        QTest::newRow("runs stay") << "What?/Why:" << false << "What  Why"
                                   << "What?/Why:";
        QTest::newRow("dots only") << "..." << false << ""
                                   << "+++";
        QTest::newRow("only blanks are trimmed") << " a \t" << false << " a \t"
                                                 << "+a+\t";
        QTest::newRow("trailing blanks") << "AC-DC  " << false << "AC-DC"
                                         << "AC+DC++";
        QTest::newRow("digits vanish") << "1234567890" << false << "1234567890"
                                       << "";
        QTest::newRow("search") << "01 - Hey_Jude [Remastered 2009]" << false << "01 - Hey_Jude [Remastered 2009]"
                                << "+++Hey+Jude++Remastered++";
    }
    void textRules()
    {
        QFETCH(QString, text);
        QTEST(IsInvalidTag(text), "invalid");
        QTEST(StrippedOfReservedChars(text), "stripped");
        QTEST(PrepareForSearch(text), "search");
    }

    void pathRules_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("baseName");
        QTest::newRow("plain") << "/m/Song.MP3"
                               << "mp3"
                               << "Song";
        QTest::newRow("inner dots") << "/m/01.My.Song.mp3"
                                    << "mp3"
                                    << "01.My.Song";
        QTest::newRow("dot in the folder only") << "/a.b/song"
                                                << "b/song"
                                                << "song";
        QTest::newRow("neither") << "song"
                                 << "song"
                                 << "song";
        QTest::newRow("trailing dot") << "/m/song."
                                      << ""
                                      << "song";
        QTest::newRow("dot file") << "/m/.mp3"
                                  << "mp3"
                                  << "";
    }
    void pathRules()
    {
        QFETCH(QString, path);
        QTEST(ExtensionOf(path), "extension");
        QTEST(BaseNameOf(path), "baseName");
    }

    void incomplete()
    {
        const SAudioFile complete{"t", "a", "b", "1", "g", "2", "/x.mp3"};
        QVERIFY(!IsIncomplete(complete));
        for (const STag& tag : allTags) {
            SAudioFile file = complete;
            for (const char* missing : {tag.absent, "Unknown"}) {
                file.*tag.field = QString(missing);
                QVERIFY2(IsIncomplete(file), tag.name);
            }
            file.*tag.field = QString(*tag.absent ? "" : "0"); // the other kind's missing value is a value here
            QVERIFY2(!IsIncomplete(file), tag.name);
        }
    }

    void readsAndWritesEveryType_data()
    {
        QTest::addColumn<QString>("extension");
        for (const QString& extension : AudioExtensions())
            QTest::newRow(qPrintable(extension)) << extension;
        QCOMPARE(AudioExtensions().join(' '), QString("mp3 mp4 wav flac aif asf ogg mpc spx wv"));
    }
    void readsAndWritesEveryType()
    {
        QFETCH(QString, extension);
        const QTemporaryDir folder;
        TagManager tags;
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/full.") + extension)), fullTags);
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/bare.") + extension)), noTags);

        // Beyond U+FFFF, both normalisation forms, and ten thousand characters.
        SAudioFile file{"𝄞 😀 𠀀", "é e\u0301", QString(10000, 'x'), "2024", "Ünïcode", "12", {}};
        file.Path = PutSample("bare." + extension, folder.filePath("x." + extension));
        tags.WriteFile(file);
        QCOMPARE(Texts(tags.ReadFile(file.Path)), Texts(file));
        for (const STag& tag : allTags)
            QCOMPARE(tags.GetInfo(tag.index), file.*tag.field);

        QVERIFY(tags.SetInfo(Tag::Year, "abc"));
        QVERIFY(tags.SetInfo(Tag::Track, "3 of 12"));
        QVERIFY(tags.SetInfo(Tag::Genre, ""));
        QCOMPARE(tags.GetInfo(Tag::Year), QString("0"));
        QCOMPARE(tags.GetInfo(Tag::Track), QString("3"));
        QCOMPARE(tags.GetInfo(Tag::Genre), QString());
        for (const int noTag : {0, 7}) {
            QCOMPARE(tags.GetInfo(noTag), QString("Unknown"));
            QVERIFY(!tags.SetInfo(noTag, "x"));
        }
    }

    void equalTextsLeaveTheFileAlone_data()
    {
        QTest::addColumn<QString>("extension");
        for (const char* extension : {"mp3", "flac", "ogg"})
            QTest::newRow(extension) << extension;
    }
    void equalTextsLeaveTheFileAlone()
    {
        QFETCH(QString, extension);
        const QTemporaryDir folder;
        const QString path = PutSample("rich." + extension, folder.filePath("x." + extension));
        const QByteArray before = Bytes(path);
        TagManager tags;
        SAudioFile file = tags.ReadFile(path);
        QCOMPARE(Texts(file), QStringList({"First Second", "Tone of Ten", "Small Files", "1999", "Rock", "3"}));
        tags.WriteFile(file);
        QVERIFY(Bytes(path) == before);

        // One field changed keeps what the others hold beyond their texts.
        file.Title = "Changed";
        tags.WriteFile(file);
        QCOMPARE(Texts(tags.ReadFile(path)), Texts(file));
        for (const char* kept : {"1999-05-03", "3/12"})
            QVERIFY2(Bytes(path).contains(kept), kept);
    }

    void accentedNames()
    {
        // File systems that store both forms hold two files here; a path finds its own one first.
        const QTemporaryDir folder;
        TagManager tags;
        const QString decomposed = PutSample("full.mp3", folder.filePath("e\u0301.mp3"));
        const QString precomposed = folder.filePath("é.mp3");
        QCOMPARE(Texts(tags.ReadFile(precomposed)), fullTags);
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
        QVERIFY(QFile(folder.filePath("empty.flac")).open(QIODevice::WriteOnly));
        for (const char* name : {"missing.mp3", "folder.mp3", "notes.txt", "empty.flac"}) {
            QCOMPARE(Texts(tags.ReadFile(folder.filePath(name))), unreadable);
            QVERIFY(!tags.SetInfo(Tag::Title, "x"));
        }
        QCOMPARE(Bytes(text.fileName()), QByteArray("no music"));
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
