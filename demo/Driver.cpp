#include "demo/Driver.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileOpenEvent>
#include <QGroupBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QToolTip>
#include <QWheelEvent>
#include <QWindow>

namespace
{
constexpr int lookInterval = 5;   // milliseconds
constexpr int patience = 5000;    // milliseconds
constexpr int ticksToClose = 600; // looks at a dialog that was answered and stays

const QMap<QByteArray, QStringList> menus{{"buttonAdd", {"File(s)", "Folder", "Folder with Subfolders", "Search"}},
                                          {"buttonRemove", {"Selected", "All"}},
                                          {"row", {"Edit Tags", "Batch Edit Tags", "-", "Remove"}}};

/// The step of the test under way.
struct
{
    QString act;
    const char* file = __FILE__;
    int line = __LINE__;
} step;

/// Whether a widget is a caption that is cut off.
bool IsCut(const QWidget& caption)
{
    if (const auto* const button = qobject_cast<const QPushButton*>(&caption)) // whose size hint has a minimum width
        return button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() > button->width();
    const auto* const label = qobject_cast<const QLabel*>(&caption);
    if (label && label->wordWrap())
        return label->heightForWidth(label->width()) > label->height();
    if (label && !label->text().isEmpty() && label->sizeHint().height() > label->height())
        return true;
    return (label || caption.inherits("QAbstractButton")) && caption.sizeHint().width() > caption.width();
}

/// Whether the captions in @p box differ in their size.
bool IsUneven(const QGroupBox& box)
{
    QSet<int> sizes;
    for (const auto* const widget : box.findChildren<QWidget*>()) {
        if (widget->isVisible() && (widget->inherits("QLabel") || widget->inherits("QAbstractButton")))
            sizes += widget->fontInfo().pixelSize();
    }
    return sizes.size() > 1;
}

/// Whether @p box and another one lie on each other.
bool IsAcross(const QGroupBox& box)
{
    const auto boxes = box.parent()->findChildren<QGroupBox*>(QString(), Qt::FindDirectChildrenOnly);
    return std::any_of(boxes.begin(), boxes.end(), [&box](const QGroupBox* other) {
        return other != &box && other->isVisible() && other->geometry().intersects(box.geometry());
    });
}

/// What a screen reader calls a widget. A combo box may have its choice as its name, and its caption as its label.
QString Name(QWidget* widget)
{
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(widget);
    return (qobject_cast<QComboBox*>(widget) ? interface->relations(QAccessible::Label).value(0).first : interface)
        ->text(QAccessible::Name);
}

/// Whether @p dialog is in the middle of the window that it belongs to, if there is room on the screen. Qt puts file
/// dialogs elsewhere.
bool IsInTheMiddle(const QWidget& dialog)
{
    constexpr int most = 60; // pixels; for a window's child, Qt leaves room for a frame, of which it guesses the size
    const QPoint off = dialog.windowHandle()->transientParent()->geometry().center() - dialog.geometry().center();
    const bool hasRoom = dialog.screen()->availableGeometry().contains(dialog.geometry().translated(off));
    return dialog.inherits("QFileDialog") || !hasRoom || off.manhattanLength() < most;
}

/// Turns the wheel by one notch, towards the user.
void TurnWheel(QWidget& widget)
{
    const QPoint middle = widget.rect().center();
    QWheelEvent wheel(middle, widget.mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel); // as from the system, by which a widget may get the focus
    qApp->notify(&widget, &wheel);
}
} // namespace

void AtStep(const QString& act, const char* file, int line)
{
    step = {act, file, line};
}

bool Demand(bool ok, const QString& otherwise)
{
    if (!ok && !QTest::currentTestFailed())
        QTest::qFail(qPrintable(step.act + ": " + otherwise), step.file, step.line);
    return ok;
}

void DemandSeen(QStringList seen, const QString& expected)
{
    QStringList missing;
    for (const QString& line : expected.split("; ", Qt::SkipEmptyParts)) {
        if (!seen.removeOne(line))
            missing += line;
    }
    Demand(seen.isEmpty() && missing.isEmpty(), "not expected: " + seen.join("; ") + " missing: " + missing.join("; "));
}

QString Ring(const QWidget& window)
{
    QStringList ring;
    for (QWidget* widget = window.nextInFocusChain(); widget != &window; widget = widget->nextInFocusChain()) {
        if (widget->isVisibleTo(&window) && widget->focusPolicy() & Qt::TabFocus)
            ring += Name(widget);
    }
    return "ring=" + ring.join('|');
}

QStringList Visible(const QWidget& window)
{
    static const QRegularExpression names("^(button|check|combo|edit|list|progress|radio|text)[A-Z]|Label$");
    QStringList seen{"title=" + window.windowTitle() + (window.isVisible() ? "" : " (closed)"), Ring(window)};
    const auto* const edit = qobject_cast<QLineEdit*>(window.focusWidget());
    if (edit && qobject_cast<const QDialog*>(&window))
        seen += "focus=" + edit->objectName() + '|' + edit->selectedText();
    if (QToolTip::isVisible())
        seen += "tip=" + QToolTip::text();
    for (auto* const widget : window.findChildren<QWidget*>()) {
        const QString name = widget->objectName();
        if (widget->window() != &window || !widget->isVisible())
            continue;
        if (name != "textFilePath" && name != "textInfo" && IsCut(*widget))
            seen += "cut=" + name;
        if (const auto* const box = qobject_cast<const QGroupBox*>(widget); box && IsUneven(*box))
            seen += "uneven=" + name;
        if (const auto* const box = qobject_cast<const QGroupBox*>(widget); box && IsAcross(*box))
            seen += "across=" + name;
        const bool isRead = qobject_cast<QLabel*>(widget) || qobject_cast<QProgressBar*>(widget);
        const QString described = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Description);
        if (isRead && (Name(widget).isEmpty() || described.contains('<')))
            seen += "unreadable=" + name;
        if (!name.contains(names))
            continue;
        const bool checkable = widget->property("checkable").toBool();
        QVariant value = widget->property(checkable ? "checked" : "text");
        if (const auto* const list = qobject_cast<const QListWidget*>(widget)) {
            QStringList rows;
            for (int row = 0; row < list->count(); ++row)
                rows += (list->item(row)->isSelected() ? ">" : "") + list->item(row)->text();
            value = rows.join('|');
        }
        seen += name + '=' + (value.isValid() ? value : widget->property("currentText")).toString() +
                (widget->isEnabled() ? "" : " (off)");
    }
    return seen.replaceInStrings(QDir::homePath(), "~").replaceInStrings("\n", "|");
}

QStringList Paths(const QString& text)
{
    QStringList paths;
    for (const QString& path : text.split('|', Qt::SkipEmptyParts))
        paths += QDir::home().filePath(path);
    return paths;
}

void Click(const QObject& parent, const char* button)
{
    auto* const widget = Child<QWidget>(parent, button);
    Demand(widget->isEnabled() && widget->isVisible(), button + QString(" takes no clicks"));
    // A check box reacts on its indicator and text only, which lie to the left; a link is in the middle.
    const int x = widget->width() / 2;
    QTest::mouseClick(widget, Qt::LeftButton, {},
                      {qobject_cast<QLabel*>(widget) ? x : qMin(10, x), widget->height() / 2});
}

void Choose(const QObject& parent, const char* comboBox, int index)
{
    auto* const box = Child<QComboBox>(parent, comboBox);
    Demand(box->isEnabled() && index < box->count(), comboBox + QString(" has no such choice"));
    box->showPopup();
    box->view()->setCurrentIndex(box->model()->index(index, 0));
    QAbstractItemView& list = *box->view();
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClick(&list, Qt::Key_Return); // X11 sends it once more when the list has closed
}

void Type(const QObject& parent, const char* lineEdit, const QString& text)
{
    auto* const edit = Child<QLineEdit>(parent, lineEdit);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    for (const QChar letter : text) // keyClicks() types ASCII only
        QTest::sendKeyEvent(QTest::Click, edit, Qt::Key_unknown, letter, {});
}

void DropOn(QWidget& window, const QStringList& paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls += QUrl::fromLocalFile(path);
    data.setUrls(urls);
    QDragEnterEvent enter({9, 9}, Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter);
    Demand(enter.isAccepted(), "the window takes no files");
    QDropEvent drop({9, 9}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
    QApplication::sendEvent(&window, &drop);
    DemandSame("what is done with dropped files", drop.dropAction(), Qt::CopyAction);
}

void Do(QWidget& window, const QString& act)
{
    const QByteArray name = act.section(' ', 0, 0).toLatin1();
    const QString rest = act.section(' ', 1);
    if (name == "close") {
        window.close();
    } else if (name == "keys") {
        for (const QString& key : rest.split(' '))
            QTest::keySequence(window.focusWidget(), QKeySequence(key));
    } else if (name == "focus") {
        Child<QWidget>(window, rest.toLatin1())->setFocus(Qt::TabFocusReason);
    } else if (name == "wheel") {
        TurnWheel(*Child<QWidget>(window, rest.toLatin1()));
    } else if (name.startsWith("combo")) {
        Choose(window, name, rest.toInt());
    } else if (name.startsWith("edit")) {
        Type(window, name, rest);
    } else {
        Click(window, name);
    }
}

void Act(QWidget& window, const QString& act, QList<Answer> answers)
{
    step.act = act;
    const QByteArray name = act.section(' ', 0, 0).toLatin1();
    const QString rest = act.section(' ', 1);
    const QString entry = name == "row" ? rest.section(' ', 1) : rest;
    if (menus.contains(name) && !entry.isEmpty())
        answers.prepend(Entry(menus[name], entry));
    Answers dialogs(answers);
    auto& list = *Child<QListWidget>(window, "listAudioFiles");
    const auto place = [&](int word) {
        const QListWidgetItem* const item = list.item(rest.section(' ', word, word).toInt());
        return item ? list.visualItemRect(item).center() : list.viewport()->rect().bottomLeft();
    };
    if (name == "drop") {
        DropOn(window, Paths(rest));
    } else if (name == "open") {
        for (const QString& path : Paths(rest))
            QApplication::sendEvent(qApp, std::make_unique<QFileOpenEvent>(path).get());
        QCoreApplication::processEvents();
    } else if (name == "hover") {
        QHelpEvent tip(QEvent::ToolTip, place(0), list.viewport()->mapToGlobal(place(0)));
        QApplication::sendEvent(list.viewport(), &tip);
    } else if (name == "press" || name == "row") {
        QCursor::setPos(list.viewport()->mapToGlobal(place(0)));
        QTest::mouseClick(list.viewport(), name == "row" ? Qt::RightButton : Qt::LeftButton, {}, place(0));
        QContextMenuEvent wanted(QContextMenuEvent::Mouse, place(0), QCursor::pos()); // the system sends it next
        if (name == "row")
            QApplication::sendEvent(list.viewport(), &wanted);
    } else if (name == "double") {
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, place(0));
    } else if (name == "drag") {
        QTest::mousePress(list.viewport(), Qt::LeftButton, {}, place(0));
        QMouseEvent drag(QEvent::MouseMove, place(1), list.viewport()->mapToGlobal(place(1)), Qt::NoButton,
                         Qt::LeftButton, {});
        QApplication::sendEvent(list.viewport(), &drag);
        QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, place(1));
    } else if (name.startsWith("action")) {
        Child<QAction>(window, name)->trigger();
    } else {
        Do(window, menus.contains(name) ? name : act);
    }
    const auto isOver = [&] { return !window.isVisible() || Child<QWidget>(window, "buttonOrganize")->isEnabled(); };
    Demand(QTest::qWaitFor(isOver, patience), "the window does not become idle");
    dialogs.Finish();
}

Outside::Outside()
{
    for (const char* scheme : {"http", "file"})
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "Open");
#ifdef Q_OS_MACOS
    // On macOS, "open -a APPLICATION PATH" hands a file over.
    QFile open(programs.filePath("open"));
    if (!open.open(QIODevice::WriteOnly) || open.write("#!/bin/sh\necho \"$3\" >>\"$0.log\"\n") < 0 ||
        !open.setPermissions(QFile::ReadUser | QFile::ExeUser))
        qFatal("cannot make %s", qPrintable(open.fileName()));
    qputenv("PATH", QFile::encodeName(programs.path()) + ':' + programFolders);
#endif
}

Outside::~Outside()
{
    for (const char* scheme : {"http", "file"})
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    qputenv("PATH", programFolders);
}

QStringList Outside::Take()
{
#ifdef Q_OS_MACOS
    QTest::qWait(200); // milliseconds; nothing waits for the other program
    QFile log(programs.filePath("open.log"));
    if (log.open(QIODevice::ReadOnly)) {
        for (const QByteArray& path : log.readAll().trimmed().split('\n'))
            Open(QUrl::fromLocalFile(QFile::decodeName(path)));
        log.remove();
    }
#endif
    return std::exchange(opened, {});
}

void Outside::Open(const QUrl& url)
{
    const QString home = QUrl::fromLocalFile(QDir::homePath()).toString(QUrl::FullyEncoded);
    opened += url.toString(QUrl::FullyEncoded).replace(home, "file://~");
}

Answers::Answers(QList<Answer> inOrder) : answers(std::move(inOrder))
{
    // Started again each time: a repeating timer stays silent while an answer is still inside the dialog it opened.
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [this] {
        timer.start(lookInterval);
        Look();
    });
    timer.start(lookInterval);
    qApp->installEventFilter(this);
}

bool Answers::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() == QEvent::Show && receiver->isWidgetType() && static_cast<QWidget*>(receiver)->isWindow())
        timer.start(0);
    return false;
}

Answers::~Answers()
{
    Demand(answers.isEmpty(), "a dialog that was expected did not come up");
}

void Answers::Finish()
{
    // Not QTRY_VERIFY, which waits three times as long for what fails.
    const auto isOver = [this] { return answers.isEmpty() && !QApplication::activeModalWidget(); };
    const bool inTime = QTest::qWaitFor(isOver, patience);
    Demand(inTime, answers.isEmpty() ? "a dialog stays open" : "a dialog that was expected did not come up");
}

void Answers::Look()
{
    QWidget* const popup = QApplication::activePopupWidget();
    QWidget* const shown = popup ? popup : QApplication::activeModalWidget();
    if (!shown || !shown->isVisible())
        return;
    if (shown == answered && ++ticks < ticksToClose)
        return;
    if (shown == answered || answers.isEmpty()) {
        Demand(false,
               QString("a dialog is in the way: %1 %2 %3")
                   .arg(shown->metaObject()->className(), shown->windowTitle(), shown->property("text").toString()));
        answers.clear();
        shown->close();
        return;
    }
    answered = shown;
    ticks = 0;
    if (!popup && Demand(shown->windowHandle()->transientParent(), "a dialog belongs to no window"))
        Demand(IsInTheMiddle(*shown), "a dialog is not in the middle of its window");
    answers.takeFirst()(shown);
    if (answered && !answered->isVisible())
        answered.clear(); // the same menu may come up again
}

Answer Entry(const QStringList& allEntries, const QString& entry)
{
    return [=](QWidget* shown) {
        auto* const menu = qobject_cast<QMenu*>(shown);
        if (!Demand(menu, "no menu, but a " + QString(shown->metaObject()->className())))
            return;
        QStringList entries;
        QAction* chosen = nullptr;
        for (QAction* const action : menu->actions()) {
            entries += action->isSeparator() ? QStringLiteral("-") : action->text();
            if (action->text() == entry)
                chosen = action;
        }
        DemandSame("menu", entries.join('|'), allEntries.join('|'));
        if (chosen)
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(chosen).center());
        else
            menu->close();
    };
}

Answer Box(QMessageBox::Icon icon, const QString& text, QMessageBox::StandardButtons buttons,
           QMessageBox::StandardButton answer, const QString& title)
{
    return [=](QWidget* shown) {
        auto* const box = qobject_cast<QMessageBox*>(shown);
        if (!Demand(box, "no message box, but a " + QString(shown->metaObject()->className())))
            return;
        DemandSame("text", box->text(), text);
        DemandSame("title", box->windowTitle(), title);
        DemandSame("title on the screen", box->windowHandle()->title(), title.isEmpty() ? "Orvanto" : title);
        DemandSame("icon", box->icon(), icon);
        DemandSame("buttons", box->standardButtons(), buttons);
        DemandSame("format", box->textFormat(), Qt::PlainText);
        Demand(!box->parent(), "the box has a parent");
        Demand(box->screen()->availableGeometry().contains(box->frameGeometry()), "the box is not on the screen");
        Demand(!(buttons & QMessageBox::Yes) || box->defaultButton() == box->button(QMessageBox::Yes),
               "Yes is no default");
        for (const int key : {Qt::Key_Escape, Qt::Key_Return}) {
            QKeyEvent held(QEvent::KeyPress, key, {}, QString(), true);
            QApplication::sendEvent(box->buttons().first(), &held);
        }
        Demand(box->isVisible(), "a key that is held answers the box");
        if (answer == QMessageBox::Escape)
            QTest::keyClick(box, Qt::Key_Escape);
        else
            QTest::mouseClick(box->button(answer), Qt::LeftButton);
    };
}

Answer Question(const QString& text, QMessageBox::StandardButton answer)
{
    return Box(QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No, answer);
}

Answer Warning(const QString& text, const QString& title)
{
    return Box(QMessageBox::Warning, text, QMessageBox::Ok, QMessageBox::Ok, title);
}

Answer Information(const QString& text)
{
    return Box(QMessageBox::Information, text, QMessageBox::Ok, QMessageBox::Ok);
}

Answer Success()
{
    return Information("Operation finished successfully!");
}

Answer Files(const QString& caption, const QString& paths, const QString& start)
{
    return Dialog(caption, [=](QWidget* shown) {
        auto* const dialog = qobject_cast<QFileDialog*>(shown);
        if (!Demand(dialog, "no file dialog, but a " + QString(shown->metaObject()->className())))
            return;
        if (!start.isEmpty())
            DemandSame("folder", dialog->directory().path(), Paths(start).first());
        if (paths.isEmpty()) {
            dialog->reject();
            return;
        }
        const QStringList all = Paths(paths);
        const QString typed = all.size() == 1 ? all.first() : '"' + all.join("\" \"") + '"';
        Child<QLineEdit>(*dialog, "fileNameEdit")->setText(typed);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

Answer Dialog(const QString& title, const Answer& answer)
{
    return [=](QWidget* shown) {
        DemandSame("title", shown->windowTitle(), title);
        answer(shown);
    };
}

Answer Fill(const QString& acts)
{
    return [=](QWidget* dialog) {
        for (const QString& act : acts.split("; "))
            Do(*dialog, act);
    };
}

Answer Shows(const QString& expected, const Answer& then)
{
    return [=](QWidget* dialog) {
        DemandSeen(Visible(*dialog), expected);
        then(dialog);
    };
}

Answer CloseSocial()
{
    return Dialog("Give Us a Like", Fill("close"));
}
