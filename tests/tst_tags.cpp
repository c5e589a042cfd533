#include "demo/AudioSamples.h"
#include "tags/AudioTypes.h"
#include "tags/TagManager.h"
#include "tags/TagTextRules.h"
#include "tests/Rows.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>

#include <fileref.h>
#include <tag.h>

namespace
{
QString Texts(const SAudioFile& file)
{
    return QStringList({file.Artist, file.Title, file.Album, file.Year, file.Genre, file.Track}).join('|');
}

/// A number of four bytes, big-endian or @p little.
QByteArray Number(qint64 number, bool little = false)
{
    const auto value = static_cast<quint32>(number);
    const quint32 ordered = little ? qToLittleEndian(value) : qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char*>(&ordered), 4);
}

QByteArray Atom(const char* name, const QByteArray& content, bool hasLongSize = false)
{
    return (hasLongSize ? Number(1) + name + Number(0) + Number(16 + content.size())
                        : Number(8 + content.size()) + name) +
           content;
}

/// A sample with a number of four bytes changed, @p distance bytes behind the last @p mark.
QByteArray Damaged(const char* name, const char* mark, int distance, qint64 number, bool little = false)
{
    QByteArray bytes = SampleBytes(name);
    return bytes.replace(bytes.lastIndexOf(mark) + distance, 4, Number(number, little));
}

/// A wave file of 8-bit sound without the byte that would make its length even, with something behind.
QByteArray OddWave(const QByteArray& behind)
{
    const QByteArray content =
        "WAVE" + SampleBytes("bare.wav").mid(12, 24) + "data" + Number(2001, true) + QByteArray(2001, '\x55') + behind;
    return "RIFF" + Number(content.size(), true) + content;
}

/// bare.mp4 with the sound behind everything else, and user data before the tracks that end with a word of zeros.
QByteArray QuickTimeMp4(const QByteArray& first = {}, bool hasLongSize = false)
{
    const QByteArray mp4 = SampleBytes("bare.mp4");
    const auto sound = mp4.indexOf("mdat") - 4, moov = mp4.indexOf("moov") - 4, track = mp4.indexOf("trak") - 4,
               userData = mp4.indexOf("udta") - 4;
    const QByteArray header = mp4.mid(moov + 8, track - moov - 8), tracks = mp4.mid(track, userData - track),
                     tags = Atom("udta", mp4.mid(userData + 8) + Number(0));
    QByteArray moved = first + Atom("moov", header + tags + tracks, hasLongSize);
    moved.replace(moved.indexOf("stco") + 12, 4, Number(sound + moved.size() + 8));
    return mp4.left(sound) + moved + mp4.mid(sound, moov - sound);
}

/// The same with a size and an offset of 64 bits.
QByteArray LongMp4()
{
    QByteArray mp4 = QuickTimeMp4({}, true);
    const auto at = mp4.indexOf("stco") - 4;
    const QByteArray table = Number(0) + Number(1) + Number(0) + mp4.mid(at + 16, 4);
    return mp4.replace(at, 46, Atom("co64", table) + Atom("free", QByteArray(14, '\0')));
}

/// What an mp4 file has in the places where it says that its sound, or a fragment with sound, is.
QByteArrayList WhereMp4Points(const QByteArray& file)
{
    struct
    {
        const char* name;
        int number, base; ///< distances from the name; without a base, from the beginning of the file
    } const places[] = {{"stco", 12, 0}, {"co64", 16, 0}, {"tfhd", 16, 0},
                        {"tfra", 32, 0}, {"tfra", 51, 0}, {"sidx", 20, 24 + (2 << 20)}};
    QByteArrayList found;
    for (const auto& [name, number, base] : places) {
        for (auto at = file.indexOf(name); at >= 0; at = file.indexOf(name, at + 1))
            found += file.mid((base ? at + base : 0) + qFromBigEndian<qint32>(file.constData() + at + number), 9);
    }
    return found;
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
        SAudioFile file{"", "", text, "", "", "", ""};
        QTEST(QString(ClearInvalidTags(file) ? "invalid" : "valid"), "verdict");
    }

    void readsAndWritesEveryType_data()
    {
        QTest::addColumn<QString>("extension");
        QCOMPARE(AudioExtensions().join(' '), QString("mp3 mp4 wav flac aif asf ogg mpc spx wv")); // as the masks
        for (const QString& extension : AudioExtensions())
            QTest::newRow(qPrintable(extension)) << extension;
    }
    void readsAndWritesEveryType()
    {
        QFETCH(QString, extension);
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/full.") + extension)), fullTags);
        QCOMPARE(Texts(tags.ReadFile(QStringLiteral(TEST_DATA_DIR "/bare.") + extension)), noTags);

        // What was read changes nothing, what is no plain text stays, and an edit is what TagLib itself would make of
        // it: one that moves the sound, one that fits, one that shrinks, and both again.
        SAudioFile file;
        for (const QString& sample : QDir(TEST_DATA_DIR).entryList({"????." + extension})) {
            const QString theirs = PutSample(sample, In("theirs/" + sample));
            file = tags.ReadFile(PutSample(sample, In("ours/" + sample)));
            tags.WriteFile(file);
            QVERIFY2(Bytes(file.Path) == Bytes(theirs), qPrintable(sample));
            for (const int length : {4000, 3990, 40, 30000, 0}) {
                QVERIFY(tags.SetInfo(Tag::Title, QString(length, 't')));
                TagLib::FileRef inPlace(QFile::encodeName(theirs).constData(), false);
                inPlace.tag()->setTitle(std::string(static_cast<std::size_t>(length), 't'));
                inPlace.save();
                inPlace = TagLib::FileRef(); // closes it
                QVERIFY2(Bytes(file.Path) == Bytes(theirs), qPrintable(QString("%1, %2").arg(sample).arg(length)));
            }
        }

        // Beyond U+FFFF, both normalisation forms, and ten thousand characters. A path may come in either form. The
        // content says what a file is, whatever its name says.
        file = {"𝄞 😀 𠀀", "é e\u0301", QString(10000, 'x'), "2024", "Ünïcode", "12", {}};
        QVERIFY(QDir::setCurrent(folder->path())); // the folder's own path is in one form
        QByteArray underItsName;
        for (const QString& name : QStringList(extension) + AudioExtensions()) {
            file.Path = "é." + name;
            const QString stored = file.Path.normalized(QString::NormalizationForm_D);
            QFile::remove(stored);
            PutSample("bare." + extension, stored);
            tags.WriteFile(file);
            QCOMPARE(Texts(tags.ReadFile(file.Path)), Texts(file));
            if (name == extension)
                underItsName = Bytes(stored);
            QVERIFY2(Bytes(stored) == underItsName, qPrintable("named " + name));
        }
        file.Path = tags.path = PutSample("bare." + extension, In("x." + extension));
        tags.WriteFile(file);

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
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 12);
    }

    void oddFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("texts");
        QTest::addColumn<bool>("saved");
        // The first word of a row is the extension.
        const auto add = [](const QByteArray& row, const QByteArray& bytes, bool saved, const QString& texts = noTags) {
            QTest::newRow(row) << bytes << texts << saved;
        };
        QByteArray nested, flood = SampleBytes("bare.mp4");
        for (int depth = 100000; depth > 0; --depth)
            nested += Number(8 * depth) + "moov";
        for (int atom = 0; atom < 1 << 18; ++atom)
            flood += Atom("free", "");
        const QByteArray mp3 = SampleBytes("bare.mp3"), flac = SampleBytes("bare.flac"),
                         id3v1 = "TAG" + QByteArray(125, ' ');
        const QByteArray tag("ID3\4\0\0\0\0\0\x10", 10), twoTags = (tag + QByteArray(16, '\0')).repeated(2);

        add("mp3, missing", QByteArray(), false, unreadable);
        add("txt, no music", "no music", false, unreadable);
        add("mp3, made, but not filled yet", QByteArray(4 << 20, '\0') + mp3, false, unreadable);
        add("mp3, empty", "", true); // where there is nothing to lose

        for (const char* type : {"aif", "wav"})
            add(type + QByteArray(", sound like mp3"), SampleBytes(QString("bare.") + type).replace(54, 576, mp3),
                true);
        add("mp3, nothing but the first bytes of a tag", "ID3", false);
        add("mp3, FLAC behind tags", twoTags + flac, true);
        const QByteArray footed = QByteArray(tag).replace(5, 1, "\x10") + QByteArray(26, '\0');
        add("mp3, FLAC behind a tag with a footer", footed + flac, true);
        add("wav, behind tags", twoTags + SampleBytes("bare.wav"), false);
        add("mp3, Wave64 with sound like mp3", "riff" + mp3, false, unreadable);
        add("mp3, signature of another type", "fLaC" + mp3, false, unreadable);

        add("ogg, Opus", SampleBytes("odd-opus.ogg"), true);
        add("mp3, TTA", SampleBytes("odd-tta.mp3"), true);
        add("ogg, FLAC in Ogg", SampleBytes("odd-flac.ogg"), true);

        add("mp4, in fragments", SampleBytes("odd-fragments.mp4"), true);
        add("mp4, zeros end the user data", QuickTimeMp4(), true);
        add("mp4, long numbers", LongMp4(), true);
        const auto index = [](int offset) {
            const QByteArray entries(2 << 20, '\0'); // of which there may be many
            return Atom("sidx", Number(0) + Number(1) + Number(8000) + Number(0) + Number(offset) + entries);
        };
        add("mp4, an offset from where it stands", QuickTimeMp4(index(900)), true);
        add("mp4, an offset to nowhere", QuickTimeMp4(index(9 << 20)), true);
        add("mp4, moov to the end", Damaged("bare.mp4", "moov", -4, 0), false);
        add("mp4, offsets of another kind", QuickTimeMp4() + Atom("meta", Number(0) + Atom("iloc", "")), false);
        add("mp4, a bit of a count", Damaged("bare.mp4", "stco", 8, 1 + (1 << 5)), false, unreadable);
        add("mp4, atom longer than its holder", Damaged("bare.mp4", "stsz", -4, 5000), false, unreadable);
        add("mp4, cut off", QuickTimeMp4().chopped(100), false, unreadable);
        add("mp4, 100,000 nested atoms", nested, false, unreadable);
        add("mp4, many atoms", flood.left(20000), true);
        add("mp4, too many atoms", flood, false, unreadable);

        add("wav, data too short", Damaged("bare.wav", "data", 4, 500, true), false);
        add("wav, all too short", Damaged("bare.wav", "RIFF", 4, 500, true), false);
        add("wav, recording never ended", Damaged("bare.wav", "data", 4, -1, true), false);
        add("wav, ID3v1", SampleBytes("full.wav") + id3v1, false, fullTags);
        QByteArray silence = Damaged("bare.wav", "data", 4, 0, true) + QByteArray(1 << 20, '\0'); // too much to look at
        add("wav, sound not counted", silence.replace(4, 4, Number(silence.size() - 8, true)), false);
        add("wav, odd and not padded", OddWave(""), true);
        add("wav, tags at an odd place",
            OddWave("LIST" + Number(34, true) + "INFOINAM" + Number(22, true) + "A title of some length"), false);
        add("aif, sound too short", Damaged("bare.aif", "SSND", 4, 500), false);
        add("aif, all too short", Damaged("bare.aif", "FORM", 4, 500), false);

        for (const char* type : {"mp3", "mp4", "flac", "mpc"})
            add(type + QByteArray(", ID3v1"), SampleBytes(QString("full.") + type) + id3v1, true, fullTags);
        add("flac, no sound", flac.left(flac.indexOf("\xff\xf8")), true);
        add("flac, comment into the sound", Damaged("bare.flac", "reference", -8, 0x84000100), false);
        add("mp3, tag into the sound", Damaged("full.mp3", "ID3", 6, 0x0958), false, fullTags);
        const QByteArray more = Damaged("full.mp3", "ID3", 6, 0x2708) + mp3.repeated(20);
        add("mp3, tag far into the sound", more, false, fullTags);
        add("wv, tag into the sound", Damaged("full.wv", "APETAGEX", 12, 700, true), false);
        add("asf, a title too long for it", SampleBytes("full.asf"), false, fullTags);
        add("asf, header into the sound", Damaged("bare.asf", "\x30\x26\xb2\x75", 16, 700, true), false);
        add("ogg, torn page", SampleBytes("bare.ogg").left(2700).replace(2640, 4, "Oops"), false);
    }
    void oddFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, texts);
        QFETCH(bool, saved);
        const QString path = In("x." + QString(QTest::currentDataTag()).section(',', 0, 0));
        if (!bytes.isNull())
            PutBytes(path, bytes);
        const QByteArray before = Bytes(path);
        QCOMPARE(Texts(tags.ReadFile(path)), texts);
        const QString title(QByteArray(QTest::currentDataTag()).endsWith("too long for it") ? 40000 : 400, 'x');
        QCOMPARE(tags.SetInfo(Tag::Title, title), texts != unreadable);
        const QByteArray now = Bytes(path);
        QCOMPARE(now != before, saved);
        if (saved)
            QCOMPARE(tags.GetInfo(Tag::Title), title);
        QVERIFY(now.contains(bytes.left(4)));
        QCOMPARE(WhereMp4Points(now), WhereMp4Points(bytes));
    }

    void damagedFiles_data() { readsAndWritesEveryType_data(); }
    void damagedFiles()
    {
        QFETCH(QString, extension);
        QRandomGenerator random(20);
        for (int i = 0; i < 500; ++i) {
            QByteArray bytes = SampleBytes((i % 2 ? "full." : "bare.") + extension);
            if (random.bounded(3) == 0)
                bytes.truncate(1 + random.bounded(static_cast<int>(bytes.size())));
            for (int flip = random.bounded(12); flip > 0; --flip) {
                const int at = random.bounded(static_cast<int>(bytes.size()));
                bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << random.bounded(8)));
            }
            const SAudioFile file{"T", "A", "L", "1968", "Folk", "3", In("x." + extension)};
            PutBytes(file.Path, bytes);
            tags.WriteFile(file);
            const QString now = Texts(tags.ReadFile(file.Path));
            QVERIFY2(now == Texts(file) || Bytes(file.Path) == bytes, qPrintable(QString("try %1").arg(i)));
        }
    }

    void stopsWhenToldTo()
    {
        // Sound of 14 MB, once moved and once where it was.
        const QByteArray bytes = SampleBytes("bare.flac"), sound = bytes.mid(bytes.size() / 2).repeated(16000);
        tags.path = In("x.flac");
        int asked = 0, answers = 0;
        tags.goOn = [&] { return ++asked <= answers; };
        for (const int length : {9000, 1}) {
            PutBytes(tags.path, Bytes(tags.path).size() > 100 ? Bytes(tags.path) : bytes + sound);
            const QByteArray before = Bytes(tags.path);
            for (answers = 0; Bytes(tags.path) == before; ++answers) {
                QVERIFY2(answers < 50, "it is never saved");
                asked = 0;
                QVERIFY(tags.SetInfo(Tag::Title, QString(length, 'x')));
            }
            QVERIFY2(answers > (length > 1 ? 8 : 2), qPrintable(QString("asked %1 times").arg(answers)));
        }
        QVERIFY(Bytes(tags.path).endsWith(sound));
        tags.goOn = [] { return true; };
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList("x.flac"));
    }
};

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
