#include "app/MainWindow.h"
#include "demo/AudioSamples.h"
#include "demo/Driver.h"
#include "demo/Sandbox.h"
#include "dialogs/DialogAbout.h"
#include "dialogs/DialogEditTags.h"
#include "dialogs/DialogRename.h"
#include "dialogs/DialogSearch.h"
#include "dialogs/DialogSocial.h"
#include "dialogs/Prompts.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QWindow>

namespace
{
/// What a screen reader calls a widget. A combo box may have its choice as its name, and its caption as its label.
QString Name(QWidget* widget)
{
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(widget);
    return (qobject_cast<QComboBox*>(widget) ? interface->relations(QAccessible::Label).value(0).first : interface)
        ->text(QAccessible::Name);
}

/// The names of the ring in which the Tab key goes through @p window, and then what it shows and is read badly.
QString Names(QWidget* window)
{
    QStringList names;
    for (QWidget* widget = window->nextInFocusChain(); widget != window; widget = widget->nextInFocusChain()) {
        if (widget->isVisibleTo(window) && widget->focusPolicy() & Qt::TabFocus)
            names += Name(widget);
    }
    for (QWidget* const shown : window->findChildren<QWidget*>()) {
        const bool isRead = qobject_cast<QLabel*>(shown) || qobject_cast<QProgressBar*>(shown);
        const QString description = QAccessible::queryAccessibleInterface(shown)->text(QAccessible::Description);
        if (isRead && shown->isVisibleTo(window) && (Name(shown).isEmpty() || description.contains('<')))
            names += shown->objectName();
    }
    return names.join('|');
}
} // namespace

/// What a desktop brings along: keys, screen readers, files that are handed over.
class TestDesktop : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> window;
    QListWidget* list = nullptr;

    static QString Home(const QString& path) { return Sandbox::Home() + '/' + path; }
    int Selected() const { return list->selectedItems().isEmpty() ? -1 : list->row(list->selectedItems().first()); }

private slots:
    void init()
    {
        Sandbox::Reset();
        window = std::make_unique<MainWindow>(nullptr);
        list = Child<QListWidget>(*window, "listAudioFiles");
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void keys()
    {
        const QString remove = "Are you sure you want to remove the selected file?";
        const struct
        {
            int files;
            QStringList keys;
            QString opened; // the first entry of a menu and the row at it, or a question
            int selected;
        } rows[] = {{1, {"Down"}, "", 0},
                    {1, {"Up"}, "", 0},
                    {1, {"Home"}, "", 0},
                    {1, {"End"}, "", 0},
                    {3, {"Down", "Down"}, "", 1},
                    {3, {"End", "Ctrl+Space"}, "", 2},
                    {3, {"Down", "Down", "Menu"}, "Edit Tags 1", 1},
                    {3, {"End", "Shift+F10"}, "Edit Tags 2", 2},
                    {3, {"Menu", "Shift+F10", "Del"}, "", -1},
                    {3, {"Down", "Del", "Down"}, remove, 0},
                    {0, {"F10"}, "New -1", -1}};
        for (const auto& row : rows) {
            init();
            for (int i = 0; i < row.files; ++i)
                PutSample("full.mp3", Home(QString("in/%1.mp3").arg(i)));
            DropOn(*window, {Home("in")});
            QCursor::setPos(0, 0); // the pointer has no say
            QString opened;
            const Answer look = [&](QWidget* shown) {
                const auto* const menu = qobject_cast<QMenu*>(shown);
                const int at = list->row(list->itemAt(list->viewport()->mapFromGlobal(shown->pos())));
                opened = menu ? QString("%1 %2").arg(menu->actions().first()->text()).arg(at)
                              : shown->property("text").toString();
                QTest::keyClick(shown, menu ? Qt::Key_Escape : Qt::Key_Return);
            };
            Answers answers(row.opened.isEmpty() ? QList<Answer>() : QList<Answer>{look});
            for (const QString& name : row.keys) {
                const uint key = uint(QKeySequence(name)[0]);
                QTest::keyClick(window->focusWidget(), Qt::Key(key & ~Qt::KeyboardModifierMask),
                                Qt::KeyboardModifiers(key & Qt::KeyboardModifierMask));
            }
            answers.Finish();
            QVERIFY2(opened == row.opened && Selected() == row.selected, qPrintable(row.keys.join(' ') + opened));
        }
    }

    void asksForTheSchemeOnce()
    {
        Answers once({Dialog("Custom Rename", [](QWidget* dialog) { dialog->close(); })});
        Choose(*window, "comboRename", 6);
        // X11 sends Return to the list once more when that has closed.
        QTest::keyClick(Child<QComboBox>(*window, "comboRename")->view(), Qt::Key_Return);
    }

    void names()
    {
        QString editorNames, boxNames;
        const auto look = [](QString* names) {
            return [names](QWidget* shown) {
                *names = Names(shown);
                shown->close();
            };
        };
        const Answer lookAtBox = [&](QWidget* box) {
            const QPoint offCentre = box->geometry().center() - window->geometry().center();
            QVERIFY(box->windowHandle()->title() == "Orvanto" && offCentre.manhattanLength() < 5);
            look (&boxNames)(box);
        };
        Answers answers({look(&editorNames), lookAtBox});
        DialogEditTags editor(nullptr, DialogEditTags::RepairIncomplete);
        editor.filePath = "/<b>x</b>.mp3";
        editor.exec();
        Warn(QString(), QString("line\n").repeated(99));

        DialogSearch search(nullptr);
        DialogRename rename(nullptr);
        DialogSocial social(nullptr);
        DialogAbout about(nullptr);
        const QString fixed = "Incomplete/invalid tags will be fixed: ";
        const std::pair<QString, QString> rows[] = {
            {Names(window.get()), "Files|Add|Remove|Organize by|Rename|Skip organizing (Only edit tags)|" + fixed +
                                      "Automatically (where possible)|" + fixed +
                                      "Manually|Only edit incomplete/invalid tags|" +
                                      "Output Folder|Browse|Output Preview|Delete original files|Start"},
            {editorNames, "Online Tag Search|Artist|Title|Album|Year|Genre|Track|OK|Skip|Abort|Play in iTunes"},
            {boxNames, "OK|Report"},
            {Names(&search), "Search path|Browse|Search in subfolders|Search mask|OK|Cancel"},
            {Names(&rename), "Rename scheme|OK|Cancel"},
            {Names(&social), "Facebook|Google+"},
            {Names(&about), ""}};
        for (const auto& [names, expected] : rows)
            QCOMPARE(names, expected);
    }

    void takesPathsAndKeepsTheFocus()
    {
        auto* const folder = Child<QLineEdit>(*window, "editOutputFolder");
        QVERIFY(!folder->acceptDrops() && !Child<QLineEdit>(*window, "editOutputPreview")->acceptDrops());
        QSet<QString> focused;
        QObject context;
        connect(qApp, &QApplication::focusChanged, &context,
                [&focused](QWidget*, QWidget* now) { focused += now ? now->objectName() : ""; });
        PutSample("full.mp3", Home("in/1.mp3"));
        PutSample("full.ogg", Home("2.ogg"));
        for (QWidget* const widget : {static_cast<QWidget*>(list), static_cast<QWidget*>(folder)}) {
            widget->setFocus();
            focused.clear();
            window->OpenPaths({Home("missing"), "/dev/null", Home("2.ogg"), Home("in")});
            QCOMPARE(focused, (QSet<QString>{"progressOrganize", widget->objectName()}));
            QCOMPARE(window->focusWidget(), widget);
        }
        QVERIFY(list->count() == 2 && list->item(0)->text() == Home("in/1.mp3"));

        QFile profile(Home("p.ovp"));
        QVERIFY(profile.open(QIODevice::WriteOnly) && profile.write("o=3\nr=0\n") > 0);
        profile.close();
        window->OpenPaths({profile.fileName()});
        QCOMPARE(window->windowTitle(), QString("Orvanto - p"));
        Answers warning({Warning("Could not load profile.")});
        window->OpenPaths({Home("missing.ovp")});
    }
};

ORVANTO_TEST_MAIN(TestDesktop)
#include "tst_desktop.moc"
