#include "demo/AudioSamples.h"
#include "tags/AudioTypes.h"
#include "tags/TagManager.h"
#include "tags/TagTextRules.h"
#include "tests/Rows.h"

#include <QTemporaryDir>

namespace
{
QString Texts(const SAudioFile& file)
{
    return QStringList({file.Artist, file.Title, file.Album, file.Year, file.Genre, file.Track}).join('|');
}

void Fill(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

const QString fullTags = "Björk Ärger|Tone of Ten|Small Files|1999|Rock|7";
const QString noTags = "|||0||0";
const QString unreadable = "Unknown|Unknown|Unknown|Unknown|Unknown|Unknown";
} // namespace

class TestTags : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    TagManager tags;

    QString In(const QString& name) const { return folder->filePath(name); }

private slots:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void textRules_data()
    {
        AddRows({"stripped", "search", "verdict"},
                {{"WWW.X.COM", "WWW X COM", "WWW+X+COM", "valid"},
                 {"www.x", "www x", "www+x", "invalid"},
                 {"see http://x", "see http   x", "see+http://x", "invalid"},
                 {"Dot.company", "Dot company", "Dot+company", "invalid"},
                 {"x.org", "x org", "x+org", "invalid"},
                 {"Best.network", "Best network", "Best+network", "invalid"},
                 {"Track.fmt", "Track fmt", "Track+fmt", "invalid"},
                 {"a/b\\c?d%e*f:g|h\"i<j>k.l", "a b c d e f g h i j k l", "a/b\\c?d%e*f:g|h\"i<j>k+l", "valid"},
                 {"...", "", "+++", "valid"},
                 {"AC-DC  ", "AC-DC", "AC+DC++", "valid"},
                 {"01 - Hey_Jude [Remastered 2009]", "01 - Hey_Jude [Remastered 2009]", "+++Hey+Jude++Remastered++",
                  "valid"}});
    }
    void textRules()
    {
        const QString text = QTest::currentDataTag();
        QTEST(StrippedOfReservedChars(text), "stripped");
        QTEST(PrepareForSearch(text), "search");
        QTEST(QString(IsInvalidTag(text) ? "invalid" : "valid"), "verdict");
    }

    void readsAndWritesEveryType_data()
    {
        QTest::addColumn<QString>("extension");
        for (const QString& extension : AudioExtensions())
            QTest::newRow(qPrintable(extension)) << extension;
    }
    void readsAndWritesEveryType()
    {
        QFETCH(QString, extension);
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/full.") + extension)), fullTags);
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/bare.") + extension)), noTags);

        // Beyond U+FFFF, both normalisation forms, and ten thousand characters. A path may come in either form. The
        // content says what a file is, whatever its name says.
        SAudioFile file{"𝄞 😀 𠀀", "é e\u0301", QString(10000, 'x'), "2024", "Ünïcode", "12", {}};
        const QString misnamed = In(extension == "wv" ? "é.mp3" : "é.wv");
        for (const QString& path : {misnamed, In("x." + extension)}) {
            PutSample("bare." + extension, path.normalized(QString::NormalizationForm_D));
            file.Path = path;
            tags.WriteFile(file);
            QCOMPARE(Texts(tags.ReadFile(path)), Texts(file));
        }
        QVERIFY(Bytes(misnamed.normalized(QString::NormalizationForm_D)) == Bytes(file.Path));

        QVERIFY(tags.SetTags({{Tag::Year, "abc"}, {Tag::Track, "3 of 12"}}));
        QVERIFY(tags.SetInfo(Tag::Genre, ""));
        QCOMPARE(Texts(tags.ReadFile(file.Path)), QString("é e\u0301|𝄞 😀 𠀀|%1|0||3").arg(file.Album));
        for (const int noTag : {0, 7}) {
            QCOMPARE(tags.GetInfo(noTag), QString("Unknown"));
            QVERIFY(!tags.SetInfo(noTag, "x"));
        }
        // A link stays one, and nothing is left beside the files.
        tags.path = In("link.mp3");
        QVERIFY(QFile::link(file.Path, tags.path));
        QVERIFY(tags.SetInfo(Tag::Title, QString(20000, 'l')));
        QVERIFY(QFileInfo(tags.path).isSymLink());
        QCOMPARE(tags.GetInfo(Tag::Title).size(), 20000);
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 3);
    }
    void typesStandInTheOrderOfTheMasks()
    {
        QCOMPARE(AudioExtensions().join(' '), QString("mp3 mp4 wav flac aif asf ogg mpc spx wv"));
    }

    void whatTextCannotExpressSurvives_data()
    {
        AddRows({"name"}, {{"mp3", "rich.mp3"}, {"flac", "rich.flac"}, {"ogg", "rich.ogg"}});
    }
    void whatTextCannotExpressSurvives()
    {
        QFETCH(QString, name);
        const QString path = PutSample(name, In(name));
        const QByteArray before = Bytes(path);
        SAudioFile file = tags.ReadFile(path);
        tags.WriteFile(file);
        QVERIFY(Bytes(path) == before);
        file.Title = "Changed";
        tags.WriteFile(file);
        for (const char* rich : {"1999-05-03", "3/12", "First", "Second", "Changed"})
            QVERIFY2(Bytes(path).contains(rich), rich);
    }

    void oddFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("texts");
        QTest::newRow("missing.mp3") << QByteArray() << unreadable;
        QTest::newRow("folder.mp3") << QByteArray() << unreadable;
        QTest::newRow("notes.txt") << QByteArray("no music") << unreadable;
        // Made, but not filled yet.
        QTest::newRow("zeros.mp3") << QByteArray(4 << 20, '\0') + Bytes(TEST_DATA_DIR "/bare.mp3") << unreadable;
        QTest::newRow("empty.mp3") << QByteArray("") << noTags;
    }
    void oddFiles()
    {
        QFETCH(QByteArray, bytes);
        QDir(folder->path()).mkdir("folder.mp3");
        tags.path = In(QTest::currentDataTag());
        if (!bytes.isNull())
            Fill(tags.path, bytes);
        QTEST(Texts(tags.ReadFile(tags.path)), "texts");
        QCOMPARE(tags.SetInfo(Tag::Title, "x"), bytes.isEmpty() && !bytes.isNull()); // then there is nothing to lose
        QVERIFY(bytes.isEmpty() || Bytes(tags.path) == bytes);
    }

    void limitsOfFormats()
    {
        // A text that is too long for its format.
        tags.path = PutSample("full.asf", In("x.asf"));
        QVERIFY(tags.SetInfo(Tag::Title, QString(40000, 'x')));
        QCOMPARE(tags.GetInfo(Tag::Title), QString("Tone of Ten"));
        // MPEG sound in a wave file is not the file.
        const QByteArray frames = Bytes(TEST_DATA_DIR "/bare.mp3");
        tags.path = In("x.wav");
        Fill(tags.path, Bytes(TEST_DATA_DIR "/bare.wav").replace(44, frames.size(), frames));
        QVERIFY(tags.SetInfo(Tag::Title, "x"));
        QVERIFY(Bytes(tags.path).startsWith("RIFF"));
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
