#include "app/MainWindow.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "files/FilePath.h"

#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QTextStream>

namespace
{
/// Takes a picture of a window, or of a menu together with its window. Prints in words what it shows, for whoever
/// cannot see it.
void Photograph(QWidget* shown, const QString& name)
{
    QCoreApplication::processEvents();
    QPixmap picture = shown->grab();
    if (qobject_cast<QMenu*>(shown)) {
        QWidget* const window = shown->parentWidget();
        const QPixmap menu = picture;
        picture = window->grab();
        QPainter(&picture).drawPixmap(window->mapFromGlobal(shown->pos()), menu);
    }
    if (!picture.save(name))
        qFatal("cannot save %s", qPrintable(name));
    const QStringList seen = Visible(*shown);
    QTextStream(stdout) << '\n' << QFileInfo(name).baseName() << ":\n  " << seen.join("\n  ") << '\n';
    QCOMPARE(seen.filter(QRegularExpression("^(cut|uneven|unreadable)=")), QStringList());
}

/// Some of the files in the library, with invented tags: one of each type.
const QList<SAudioFile> taggedFiles{
    {"Harbour", "Ada Low", "Night Boat", "2004", "Folk", "1", "harbour.mp3"},
    {"Paper Lantern", "Ada Low", "Night Boat", "2004", "Folk", "2", "track02.flac"},
    {"Slow Tide", "Ada Low", "Night Boat", "2004", "Folk", "3", "track03.ogg"},
    {"Copper Moon", "Märta Ström", "Nio", "1998", "Jazz", "1", "copper.mp4"},
    {"Långsamt", "Märta Ström", "Nio", "1998", "Jazz", "4", "04 langsamt.wav"},
    {"Regn", "Märta Ström", "Nio", "1998", "Jazz", "5", "05 regn.aif"},
    {"Brass Door", "The Tin Foxes", "Loud Attic", "2011", "Rock", "2", "brass door.asf"},
    {"Fuse", "The Tin Foxes", "Loud Attic", "2011", "Rock", "3", "FUSE.mpc"},
    {"Go Home", "The Tin Foxes", "Loud Attic", "2011", "Rock", "7", "go_home.spx"},
    {"Last Bus", "The Tin Foxes", "Loud Attic", "2011", "Rock", "9", "lastbus.wv"},
};
} // namespace

/// Shows the main job, then whatever else the documentation has pictures of: the program's real window, driven by
/// events through a library of all ten types of file, some of them with incomplete tags. Everything happens in the
/// folder that is given on the command line.
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
        TagManager tags;
        for (SAudioFile file : taggedFiles) {
            file.Path = PutSample("full." + ExtensionOf(file.Path), folder.filePath("library/" + file.Path));
            tags.WriteFile(file);
        }
        PutSample("bare.mp3", folder.filePath("library/unsorted/Ada Low-First Steps.mp3"));
        PutSample("bare.ogg", folder.filePath("library/unsorted/mystery.ogg"));
    }

private slots:
    void mainJob()
    {
        for (const char* name : {"library", "sorted", "screenshots"})
            QDir(folder.filePath(name)).removeRecursively();
        QVERIFY(folder.mkpath("screenshots"));
        MakeLibrary();

        MainWindow window(nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        Type(window, "editOutputFolder", folder.filePath("sorted"));
        {
            Answers dialogs({Photographed("add-menu", Entry({"File(s)", "Folder", "Folder with Subfolders", "Search"},
                                                            "Folder with Subfolders")),
                             Files("Select folder", folder.filePath("library"))});
            Click(window, "buttonAdd");
            dialogs.Finish();
        }
        for (const char* act : {"comboOrganizeBy 2", "comboRename 2", "press 4"})
            Act(window, act);
        Photograph(&window, Picture("main-window"));

        const auto repair = [](const QString& names) {
            const QString others = "; editAlbum Found Tapes; editYear 1968; editGenre Folk; editTrack 1; buttonOK";
            return Dialog("Edit Tags", Fill(names + others));
        };
        Act(window, "buttonOrganize",
            {Photographed("tag-editor", repair("editArtist Ada Low; editTitle First Steps")),
             repair("editArtist Nobody; editTitle Mystery"), Photographed("finished", Success()),
             Photographed("like", CloseSocial())});

        QStringList tree = FilesBelow(folder.filePath("sorted"));
        for (QString& path : tree)
            path = folder.relativeFilePath(path);
        QTextStream(stdout) << "\nThe tree that was made:\n  " << tree.join("\n  ") << "\n\nThe screenshots are in "
                            << folder.filePath("screenshots") << "\n\n";
        QCOMPARE(tree.size(), 12);
        QVERIFY(tree.contains("sorted/Ada Low/Found Tapes/Ada Low-First Steps.mp3"));
        QVERIFY(tree.contains("sorted/Märta Ström/Nio/Märta Ström-Långsamt.wav"));
        QCOMPARE(Sandbox::TakeWarnings(), QStringList());
    }

    void otherWindows()
    {
        PutSample("bare.mp3", folder.filePath("library/unsorted/track 7.mp3"));
        MainWindow window(nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        Type(window, "editOutputFolder", folder.filePath("sorted"));
        Act(window, "buttonAdd Search", {Dialog("Search", [this](QWidget* search) {
                Type(*search, "editSearchPath", folder.filePath("library"));
                Click(*search, "checkSearchSubfolders");
                Photograph(search, Picture("search"));
                Click(*search, "buttonOK");
            })});
        Act(window, "comboRename 6", {Photographed("custom-rename", Dialog("Custom Rename", Fill("buttonCancel")))});
        QCOMPARE(Child<QListWidget>(window, "listAudioFiles")->count(), 3);
        Act(window, "row 0 Batch Edit Tags",
            {Photographed("batch-editor", Dialog("Batch Edit Tags", Fill("buttonAbort")))});
        Act(window, "buttonOrganize",
            {Dialog("Edit Tags", Fill("buttonSkip")), Photographed("report", Dialog("Log", Fill("close"))),
             CloseSocial()});
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
    QApplication::setCursorFlashTime(0); // no picture may depend on when it was taken
    SampleTour tour(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    return QTest::qExec(&tour, {QString::fromLatin1(argv[0]), QStringLiteral("-silent")});
}

#include "SampleTour.moc"
