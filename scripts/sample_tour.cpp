#include "app/MainWindow.h"
#include "support/AudioSamples.h"
#include "support/Driver.h"
#include "support/Sandbox.h"
#include "tags/FilePath.h"

#include <QGuiApplication>
#include <QListWidget>
#include <QScreen>
#include <QTextStream>

namespace
{
/// Takes a picture of the whole screen where there is one to see, else of the one window.
void Photograph(QWidget* shown, const QString& name)
{
    QCoreApplication::processEvents();
    const bool hasScreen = QGuiApplication::platformName() != QLatin1String("offscreen");
    const QPixmap picture = hasScreen ? QGuiApplication::primaryScreen()->grabWindow(0) : shown->grab();
    if (!picture.save(name))
        qFatal("cannot save %s", qPrintable(name));
}
} // namespace

/// Shows the main job by itself: the program's real window, driven by events through a library of all ten types of
/// file, some of them with incomplete tags. Everything happens in the folder that is given on the command line.
class SampleTour : public QObject
{
    Q_OBJECT

public:
    explicit SampleTour(const QString& directory) : folder(directory) {}

private:
    const QDir folder;

    QString Picture(const char* name) const { return folder.filePath("screenshots/" + QString(name) + ".png"); }
    Answer Photographed(const char* name, const Answer& answer) const
    {
        return [=](QWidget* shown) {
            Photograph(shown, Picture(name));
            answer(shown);
        };
    }

    void MakeLibrary() const
    {
        for (const QString& extension : AudioExtensions())
            PutSample("full." + extension, folder.filePath("library/Tone in " + extension + '.' + extension));
        TagManager tags;
        for (const QString& extension : AudioExtensions()) {
            SAudioFile file = tags.ReadFile(folder.filePath("library/Tone in " + extension + '.' + extension));
            file.Title = "Tone in " + extension;
            tags.WriteFile(file);
        }
        PutSample("bare.mp3", folder.filePath("library/unsorted/Ada Low-First Steps.mp3"));
        PutSample("bare.ogg", folder.filePath("library/unsorted/mystery.ogg"));
    }

private slots:
    void mainJob()
    {
        for (const char* name : {"library", "organised", "screenshots"})
            QDir(folder.filePath(name)).removeRecursively();
        QVERIFY(folder.mkpath("screenshots"));
        MakeLibrary();

        MainWindow window(nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        Photograph(&window, Picture("1-empty"));
        {
            Answers dialogs({Photographed("2-add", Entry({"File(s)", "Folder", "Folder with Subfolders", "Search"},
                                                         "Folder with Subfolders")),
                             Files("Select folder", {folder.filePath("library")})});
            Click(window, "buttonAdd");
            dialogs.Finish();
        }
        Choose(window, "comboOrganizeBy", 2);
        Choose(window, "comboRename", 2);
        Type(window, "editOutputFolder", folder.filePath("organised"));
        auto* const list = Child<QListWidget>(window, "listAudioFiles");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(3)).center());
        Photograph(&window, Picture("3-settings"));

        const auto repair = [](const QString& artist, const QString& title) {
            return Dialog("Edit Tags", [=](QWidget* editor) {
                Type(*editor, "editArtist", artist);
                Type(*editor, "editTitle", title);
                Type(*editor, "editAlbum", "Found Tapes");
                Type(*editor, "editYear", "1968");
                Type(*editor, "editGenre", "Folk");
                Type(*editor, "editTrack", "1");
                Click(*editor, "buttonOK");
            });
        };
        Answers dialogs({Photographed("4-tag-editor", repair("Ada Low", "First Steps")), repair("Nobody", "Mystery"),
                         Photographed("5-finished", Box(QMessageBox::Information, "Operation finished successfully!",
                                                        QMessageBox::Ok, QMessageBox::Ok)),
                         Photographed("6-like", Dialog("Give Us a Like", [](QWidget* shown) { shown->close(); }))});
        Click(window, "buttonOrganize");
        QTRY_VERIFY_WITH_TIMEOUT(Child<QWidget>(window, "buttonOrganize")->isEnabled(), 30000);
        dialogs.Finish();
        Photograph(&window, Picture("7-done"));

        QStringList tree;
        QDirIterator entries(folder.filePath("organised"), QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext())
            tree += folder.relativeFilePath(entries.next());
        tree.sort();
        QTextStream(stdout) << "\nThe tree that was made:\n  " << tree.join("\n  ") << "\n\nThe screenshots are in "
                            << folder.filePath("screenshots") << "\n\n";
        QCOMPARE(tree.size(), 12);
        QVERIFY(tree.contains("organised/Ada Low/Found Tapes/Ada Low-First Steps.mp3"));
        QVERIFY(tree.contains("organised/Björk Ärger/Small Files/Björk Ärger-Tone in wv.wv"));
        QCOMPARE(Sandbox::TakeWarnings(), QStringList());
    }
};

int main(int argc, char** argv)
{
    if (argc != 2) {
        QTextStream(stderr) << "Usage: orvanto-sample FOLDER\n";
        return 2;
    }
    const Sandbox sandbox;
    NativeLookingApplication::Prepare();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    NativeLookingApplication application(argc, argv);
    SampleTour tour(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    return QTest::qExec(&tour, {QString::fromLatin1(argv[0]), QStringLiteral("-silent")});
}

#include "sample_tour.moc"
