#pragma once

#include <QAction>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

/// Drives real windows from outside, by events. A failure begins with the act during which it was seen; its place is
/// the step of the test that AtStep() named last. Only the first failure of a test is reported: the rest would follow
/// from it.

/// Begins a step of a test: names it, and its place in the source.
void AtStep(const QString& act, const char* file, int line);
/// Fails the test unless @p ok. @return @p ok
bool Demand(bool ok, const QString& otherwise);
/// Demands that exactly what @p expected lists, separated by "; ", is seen, in any order.
void DemandSeen(QStringList seen, const QString& expected);
/// Demands two equal values.
template <class Seen, class Expected>
bool DemandSame(const char* what, const Seen& seen, const Expected& expected)
{
    QString words;
    QDebug(&words).noquote().nospace() << what << " is '" << seen << "', expected is '" << expected << "'";
    return Demand(seen == expected, words);
}

/// The child of @p parent with this object name; fails the test and ends the program when there is none.
template <class Widget>
Widget* Child(const QObject& parent, const char* name)
{
    auto* const child = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (!Demand(child, QString("no %1 named %2").arg(Widget::staticMetaObject.className(), name)))
        qFatal("There is nothing to go on with.");
    return child;
}

/// Does one thing with a window, or with any dialog, as the user would:
///     editX TEXT      types it in place of what is there: "editTitle New"
///     comboX INDEX    chooses an entry: "comboRename 6"
///     focus NAME      moves the focus, as the Tab key does: "focus editTitle"
///     keys NAMES      types keys, wherever the focus is: "keys Ctrl+L Down"
///     wheel NAME      turns the wheel over it, towards the user: "wheel comboRename"
///     close           closes the window
///     NAME            clicks a button, a check box or a link: "buttonOK"
void Do(QWidget& window, const QString& act);
/// Clicks a button, or the link in a label.
void Click(const QObject& parent, const char* button);
/// Chooses an entry as the user does, so that the box signals its activation.
void Choose(const QObject& parent, const char* comboBox, int index);
/// Replaces the text of a line edit by typing.
void Type(const QObject& parent, const char* lineEdit, const QString& text);
/// Drops files and folders on @p window, offering to move them, as a file manager does.
void DropOn(QWidget& window, const QStringList& paths);

/// "ring=" and the names, for a screen reader, of what the Tab key goes through in @p window.
QString Ring(const QWidget& window);
/// What @p window shows, as "name=value": every control's value, with "(off)" when it takes no input; its Ring(); "cut"
/// and "unreadable" captions, for the eye and for a screen reader; group boxes that lie "across" each other; the "tip"
/// at the pointer; the line edit that has the "focus" in a dialog, and what is selected in it. "~" is the home folder,
/// "|" ends a line, and ">" stands before a selected row: "listAudioFiles=>~/in/1.mp3|~/in/2.mp3 (off)".
QStringList Visible(const QWidget& window);
/// The paths that @p text names, separated by "|"; relative ones are in the home folder.
QStringList Paths(const QString& text);

/// Catches what leaves the program for the browser or another application while it lives.
class Outside : public QObject
{
    Q_OBJECT

public:
    Outside();
    ~Outside() override;

    /// The addresses since the last call, encoded; "~" is the home folder.
    QStringList Take();

private slots:
    void Open(const QUrl& url);

private:
    QStringList opened;
    QTemporaryDir programs; ///< on macOS, the first place where the system looks for "open"
    const QByteArray programFolders = qgetenv("PATH");
};

using Answer = std::function<void(QWidget*)>;

/// Does one thing with the main window, gives @p answers to the dialogs that follow, and waits until the window is idle
/// or closed. An act is one for Do(), or else:
///     drop PATHS      drops files and folders: "drop in/1.mp3|in/2.mp3"
///     open PATHS      opens files and folders from the desktop
///     hover ROW       rests the pointer on a row; a ROW beyond the last is the room below
///     press ROW       clicks a row; "double ROW" does so twice, and "drag ROW ROW" moves on to another
///     row ROW ENTRY   chooses from the menu of a row: "row 0 Edit Tags"; "row ROW" where no menu comes up
///     buttonX ENTRY   chooses from the menu of a button: "buttonAdd Folder"
///     actionX         chooses from the menu bar: "actionNew"
void Act(QWidget& window, const QString& act, QList<Answer> answers = {});

/// Answers that are given to the modal dialogs and popup menus that come up while it lives, one each and in order,
/// as soon as they are shown.
class Answers : public QObject
{
public:
    explicit Answers(QList<Answer> inOrder);
    /// Fails the test when an answer was not needed, or a dialog came up without one or did not close in time.
    ~Answers() override;
    /// Fails the test unless every answer has been given; waits for that.
    void Finish();
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    void Look();

    QList<Answer> answers;
    QTimer timer;
    QPointer<QWidget> answered;
    int ticks = 0;
};

/// Clicks an entry of a popup menu, after comparing all its entries ("-" is a separator).
Answer Entry(const QStringList& allEntries, const QString& entry);
/// Clicks a button of a message box, after comparing everything that it shows.
Answer Box(QMessageBox::Icon icon, const QString& text, QMessageBox::StandardButtons buttons,
           QMessageBox::StandardButton answer, const QString& title = QString());
Answer Question(const QString& text, QMessageBox::StandardButton answer);
Answer Warning(const QString& text, const QString& title = QString());
Answer Information(const QString& text);
/// Closes the box that a run without failures ends with.
Answer Success();
/// Accepts a file dialog with these Paths(), after comparing its caption and, if there is one, the folder that it
/// starts in; cancels it without paths.
Answer Files(const QString& caption, const QString& paths = {}, const QString& start = {});
/// Does something with a dialog of this window title; it has to close it.
Answer Dialog(const QString& title, const Answer& answer);
/// Does one thing after another with a dialog, as Do() does it: "editTitle New; buttonOK".
Answer Fill(const QString& acts);
/// Compares all that is Visible() in a dialog, and goes on.
Answer Shows(const QString& expected, const Answer& then);
Answer CloseSocial();
