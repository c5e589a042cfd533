#include "dialogs/DialogEditTags.h"
#include "dialogs/DialogSearch.h"
#include "dialogs/DialogSocial.h"
#include "platform/UserSettings.h"
#include "support/Driver.h"
#include "support/Sandbox.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

namespace
{
const SAudioFile file{"t", "a", "al", "y", "g", "n", "/m/50% #1? é \"x\".[2].mp3"};

/// The texts of those of the named widgets that can be seen.
QString Visible(const QWidget& dialog, const QString& names)
{
    QStringList texts;
    for (const QString& name : names.split(' ')) {
        const auto* const widget = Child<QWidget>(dialog, qPrintable(name));
        if (widget->isVisible())
            texts += widget->property("text").toString();
    }
    return texts.join('|');
}
} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void init() { Sandbox::Reset(); }
    void cleanup() { QCOMPARE(Sandbox::TakeWarnings(), QStringList()); }

    void editTags_data()
    {
        for (const char* column : {"title", "labels", "buttons", "way", "tags"})
            QTest::addColumn<QString>(column);
        QTest::addColumn<int>("result");
        const QString all = "Online Tag Search|Play in iTunes|OK|Skip|Abort";
        const QString one = "Audio file:|" + file.Path;
        const QString incomplete = "The following file has incomplete/invalid tags:|" + file.Path +
                                   "|Please edit the incomplete/invalid tags.";
        const auto row = [](const char* mode, const QString& title, const QString& labels, const QString& buttons,
                            const char* way, const char* tags,
                            int result) { QTest::newRow(mode) << title << labels << buttons << way << tags << result; };
        row("0", "Edit Tags", incomplete, all, "buttonOK", "|||||", 1);
        row("1", "Edit Tags", one, all, "buttonSkip", "a|t|al|y|g|n", 1);
        row("1", "Edit Tags", one, all, "buttonAbort", "a|t|al|y|g|n", 0);
        row("2", "Edit Tags", one, "Online Tag Search|Play in iTunes|OK|Cancel", "close", "a|t|al|y|g|n", 1);
        row("3", "Batch Edit Tags", "Edit the tags of all the files in the list:", "OK|Cancel", "escape",
            "a|t|al|y|g|n", 0);
        row("9", "Edit Tags", incomplete, all, "buttonAbort", "a|t|al|y|g|n", 0);
    }
    void editTags()
    {
        const int mode = QByteArray(QTest::currentDataTag()).toInt();
        QFETCH(QString, way);
        const char* edits = "editArtist editTitle editAlbum editYear editGenre editTrack";
        QFETCH(QString, title);
        DialogEditTags dialog(nullptr, mode);
        dialog.SetFile(file);
        Answers answers({Dialog(title, [&](QWidget* shown) {
            QTEST(Visible(*shown, "fileLabel textFilePath actionLabel"), "labels");
            QTEST(Visible(*shown, "buttonOnlineSearch buttonPlay buttonStop buttonOK buttonSkip buttonAbort"),
                  "buttons");
            QCOMPARE(Visible(*shown, edits), QString("a|t|al|y|g|n"));
            QCOMPARE(shown->height() == 250, mode == 3);
            for (const QByteArray& edit : QByteArray(edits).split(' '))
                Type(*shown, edit, "");
            if (way == "close")
                shown->close();
            else if (way == "escape")
                QTest::keyClick(shown, Qt::Key_Escape);
            else
                Click(*shown, qPrintable(way));
        })});
        QTEST(dialog.exec(), "result");
        answers.Finish();
        QTEST(
            QStringList({dialog.artist, dialog.title, dialog.album, dialog.year, dialog.genre, dialog.track}).join('|'),
            "tags");
        QCOMPARE(dialog.File().Path, file.Path);
    }

    void waysOut()
    {
        Outside outside;
        DialogEditTags editor(nullptr, DialogEditTags::EditOne);
        editor.SetFile(file);
        const QStringList hosts{"discogs.com", "allmusic.com"};
        const auto clicks = [](const char* first, const char* second, const char* third) {
            return [=](QWidget* shown) {
                for (const char* button : {first, second, third})
                    Click(*shown, button);
                shown->close();
            };
        };
        Answers answers({Dialog("Edit Tags", clicks("buttonPlay", "buttonOnlineSearch", "buttonOnlineSearch")),
                         Entry(hosts, hosts.first()), Entry(hosts, hosts.last()),
                         Dialog("Give Us a Like", clicks("buttonFacebook", "buttonGoogle", "buttonGoogle"))});
        editor.exec();
        // In a search, digits and separators go, and nothing is escaped: what follows "#" is the browser's affair.
        QCOMPARE(QUrl(outside.opened.value(0)).toLocalFile(), file.Path);
        QCOMPARE(outside.opened.value(1), QString("http://www.discogs.com/search/?q=%25+#?+%C3%A9+%22x%22+++"));
        QCOMPARE(outside.opened.value(2), QString("http://www.allmusic.com/search/all/%25+#?+%C3%A9+%22x%22+++"));

        QVERIFY(!OpenSettings().contains("SkipSocial"));
        DialogSocial social(nullptr);
        social.exec();
        answers.Finish();
        QCOMPARE(outside.opened.value(3), QString("http://www.facebook.example/orvanto"));
        QCOMPARE(outside.opened.value(4), QString("http://plus.google.example/orvanto"));
        QCOMPARE(OpenSettings().value("SkipSocial"), QVariant("1"));
    }

    void searchKeepsItsChoices()
    {
        {
            DialogSearch dialog(nullptr);
            QCOMPARE(dialog.searchPath, Sandbox::Home() + "/Music");
            Answers answers({Dialog("Search", [](QWidget* shown) {
                Type(*shown, "editSearchPath", "C:\\My Music");
                Click(*shown, "checkSearchSubfolders");
                Choose(*shown, "comboSearchMask", 3);
                Click(*shown, "buttonCancel");
            })});
            QCOMPARE(dialog.exec(), 0);
            answers.Finish();
        }
        DialogSearch again(nullptr);
        Answers answers({Dialog("Search",
                                [](QWidget* shown) {
                                    QCOMPARE(Visible(*shown, "editSearchPath"), QString("C:/My Music"));
                                    QCOMPARE(Child<QComboBox>(*shown, "comboSearchMask")->currentText(),
                                             QString("*.flac"));
                                    Click(*shown, "buttonBrowse");
                                    Click(*shown, "buttonBrowse");
                                    Click(*shown, "buttonOK");
                                }),
                         Files("Select folder", {}), Files("Select folder", {Sandbox::Home() + "/Documents"})});
        QCOMPARE(again.exec(), 1);
        answers.Finish();
        QCOMPARE(again.searchPath, Sandbox::Home() + "/Documents");
        QVERIFY(again.searchSubfolders && again.searchMask == 3);

        for (const QVariant& bad : {QVariant(10), QVariant(-1), QVariant("garbage"), QVariant(QStringList{"3", "4"})}) {
            OpenSettings().setValue("SearchMask", bad);
            QCOMPARE(DialogSearch(nullptr).searchMask, 0);
        }
    }
};

ORVANTO_TEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
