#include "dialogs/DialogAbout.h"
#include "dialogs/DialogEditTags.h"
#include "dialogs/DialogSearch.h"
#include "dialogs/DialogSocial.h"
#include "platform/UserSettings.h"
#include "support/Driver.h"
#include "support/Sandbox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace
{
const SAudioFile file{"t", "a", "al", "y", "g", "n", "/m/01 a.b-c_[x].mp3"};
} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private:
    QStringList opened; ///< what left the program for the browser or another application

private slots:
    void openUrl(const QUrl& url) { opened += url.toString(QUrl::FullyEncoded); }

    void init()
    {
        Sandbox::Reset();
        opened.clear();
        for (const char* scheme : {"http", "https", "file"})
            QDesktopServices::setUrlHandler(scheme, this, "openUrl");
    }

    void cleanup() { QCOMPARE(Sandbox::TakeWarnings(), QStringList()); }

    void editorModes_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("texts"); // of the visible labels above the fields
        QTest::addColumn<QString>("buttons");
        const QString all = "Online Tag Search|Play in iTunes|OK|Skip|Abort";
        const QString path = file.Path;
        const QString incomplete =
            "The following file has incomplete/invalid tags:|" + path + "|Please edit the incomplete/invalid tags.";
        QTest::newRow("repair") << 0 << "Edit Tags" << incomplete << all;
        QTest::newRow("repair every file") << 1 << "Edit Tags"
                                           << "Audio file:|" + path << all;
        QTest::newRow("one") << 2 << "Edit Tags"
                             << "Audio file:|" + path << "Online Tag Search|Play in iTunes|OK|Cancel";
        QTest::newRow("all") << 3 << "Batch Edit Tags"
                             << "Edit the tags of all the files in the list:"
                             << "OK|Cancel";
        QTest::newRow("any other") << 9 << "Edit Tags" << incomplete << all;
    }
    void editorModes()
    {
        QFETCH(int, mode);
        QFETCH(QString, title);
        QFETCH(QString, texts);
        QFETCH(QString, buttons);
        DialogEditTags dialog(nullptr, mode);
        dialog.SetFile(file);
        Answers answers({Dialog(title, [&](QWidget* shown) {
            const auto visible = [shown](const QStringList& names) {
                QStringList visibleTexts;
                for (const QString& name : names) {
                    auto* const widget = Child<QWidget>(*shown, qPrintable(name));
                    if (widget->isVisible())
                        visibleTexts += widget->property("text").toString();
                }
                return visibleTexts.join('|');
            };
            QCOMPARE(visible({"fileLabel", "textFilePath", "actionLabel"}), texts);
            QCOMPARE(
                visible({"buttonOnlineSearch", "buttonPlay", "buttonStop", "buttonOK", "buttonSkip", "buttonAbort"}),
                buttons);
            QCOMPARE(visible({"editArtist", "editTitle", "editAlbum", "editYear", "editGenre", "editTrack"}),
                     QString("a|t|al|y|g|n"));
            QCOMPARE(shown->height() == 250, mode == 3);
            Type(*shown, "editYear", "typed");
            Click(*shown, "buttonOK");
        })});
        QCOMPARE(dialog.exec(), 1);
        answers.Finish();
        const SAudioFile edited = dialog.File();
        QCOMPARE(QStringList(
                     {edited.Artist, edited.Title, edited.Album, edited.Year, edited.Genre, edited.Track, edited.Path}),
                 QStringList({"a", "t", "al", "typed", "g", "n", file.Path}));
    }

    void editorResults_data()
    {
        QTest::addColumn<int>("result");
        QTest::addColumn<bool>("taken");
        QTest::newRow("buttonOK") << 1 << true;
        QTest::newRow("buttonSkip") << 1 << false;
        QTest::newRow("close") << 1 << false;
        QTest::newRow("buttonAbort") << 0 << false;
        QTest::newRow("escape") << 0 << false;
    }
    void editorResults()
    {
        const QByteArray way = QTest::currentDataTag();
        QFETCH(bool, taken);
        DialogEditTags dialog(nullptr, DialogEditTags::RepairIncomplete);
        dialog.SetFile(file);
        Answers answers({Dialog("Edit Tags", [&way](QWidget* shown) {
            for (const char* edit : {"editArtist", "editTitle", "editAlbum", "editYear", "editGenre", "editTrack"})
                Type(*shown, edit, "");
            if (way == "close")
                shown->close();
            else if (way == "escape")
                QTest::keyClick(shown, Qt::Key_Escape);
            else
                Click(*shown, way);
        })});
        QTEST(dialog.exec(), "result");
        answers.Finish();
        QCOMPARE(dialog.artist.isEmpty() && dialog.title.isEmpty() && dialog.album.isEmpty() && dialog.year.isEmpty() &&
                     dialog.genre.isEmpty() && dialog.track.isEmpty(),
                 taken);
    }

    void editorLeadsOut()
    {
        DialogEditTags dialog(nullptr, DialogEditTags::EditOne);
        dialog.SetFile(file);
        dialog.filePath = "/m/50% #1? é \"x\".[2].mp3";
        const QStringList hosts{"discogs.com", "allmusic.com"};
        Answers answers({Dialog("Edit Tags",
                                [](QWidget* shown) {
                                    Click(*shown, "buttonPlay");
                                    Click(*shown, "buttonOnlineSearch");
                                    Click(*shown, "buttonOnlineSearch");
                                    shown->close();
                                }),
                         Entry(hosts, hosts.first()), Entry(hosts, hosts.last())});
        dialog.exec();
        answers.Finish();
        QCOMPARE(opened.size(), 3);
        QCOMPARE(QUrl(opened.at(0)).toLocalFile(), dialog.filePath);
        // Digits and separators go, nothing is escaped: what stands behind "#" is the browser's affair.
        const QString search = "%25+#?+%C3%A9+%22x%22+++";
        QCOMPARE(opened.at(1), "http://www.discogs.com/search/?q=" + search);
        QCOMPARE(opened.at(2), "http://www.allmusic.com/search/all/" + search);
    }

    void socialIsRemembered_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("buttonFacebook") << "http://www.facebook.example/orvanto";
        QTest::newRow("buttonGoogle") << "http://plus.google.example/orvanto";
    }
    void socialIsRemembered()
    {
        QFETCH(QString, page);
        DialogSocial dialog(nullptr);
        Answers answers({Dialog("Give Us a Like", [&dialog](QWidget* shown) {
            QVERIFY(!OpenSettings().contains("SkipSocial"));
            Click(*shown, QTest::currentDataTag());
            QVERIFY(dialog.isVisible());
            shown->close();
        })});
        dialog.exec();
        answers.Finish();
        QCOMPARE(opened, QStringList(page));
        QCOMPARE(OpenSettings().value("SkipSocial").toInt(), 1);
        QCOMPARE(dialog.size(), QSize(360, 200));
        QVERIFY(!Child<QPushButton>(dialog, QTest::currentDataTag())->accessibleName().isEmpty());
    }

    void searchRemembersItsChoices()
    {
        {
            DialogSearch dialog(nullptr);
            QCOMPARE(dialog.searchPath, Sandbox::Home() + "/Music");
            QCOMPARE(Child<QComboBox>(dialog, "comboSearchMask")->count(), 10);
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
        QCOMPARE(again.searchPath, QString("C:/My Music"));
        QCOMPARE(Child<QLineEdit>(again, "editSearchPath")->text(), QString("C:/My Music"));
        QVERIFY(again.searchSubfolders && Child<QCheckBox>(again, "checkSearchSubfolders")->isChecked());
        QCOMPARE(again.searchMask, 3);
        QCOMPARE(Child<QComboBox>(again, "comboSearchMask")->currentText(), QString("*.flac"));
        Answers answers({Dialog("Search",
                                [](QWidget* shown) {
                                    Click(*shown, "buttonBrowse");
                                    Click(*shown, "buttonBrowse");
                                    Click(*shown, "buttonOK");
                                }),
                         Files("Select folder", {}), Files("Select folder", {Sandbox::Home() + "/Documents"})});
        QCOMPARE(again.exec(), 1);
        answers.Finish();
        QCOMPARE(again.searchPath, Sandbox::Home() + "/Documents");
        QCOMPARE(OpenSettings().value("SearchFolderPath").toString(), again.searchPath);

        for (const QVariant& bad :
             {QVariant(10), QVariant(-1), QVariant("garbage"), QVariant(QByteArray("\0\xff", 2))}) {
            OpenSettings().setValue("SearchMask", bad);
            QCOMPARE(DialogSearch(nullptr).searchMask, 0);
        }
    }

    void about()
    {
        DialogAbout dialog(nullptr);
        QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
        QCOMPARE(Child<QLabel>(dialog, "textVersion")->text(), QString("Orvanto Version 2.1.0"));
        QVERIFY(Child<QLabel>(dialog, "label_4")->text().endsWith("Library\nhttps://taglib.org"));
        auto* const link = Child<QLabel>(dialog, "label_2");
        QVERIFY(link->openExternalLinks() && link->text().contains("\"http://www.orvanto.example\""));
    }
};

ORVANTO_TEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
