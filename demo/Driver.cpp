#include "demo/Driver.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>

namespace
{
constexpr int lookInterval = 5;   // milliseconds
constexpr int ticksToClose = 600; // looks at a dialog that was answered and stays
} // namespace

void Click(const QObject& parent, const char* button)
{
    auto* const widget = Child<QAbstractButton>(parent, button);
    QVERIFY2(widget->isEnabled() && widget->isVisible(), button);
    // A check box reacts on its indicator and text only, which lie to the left.
    QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(qMin(10, widget->width() / 2), widget->height() / 2));
}

void Choose(const QObject& parent, const char* comboBox, int index)
{
    auto* const box = Child<QComboBox>(parent, comboBox);
    QVERIFY2(box->isEnabled() && index < box->count(), comboBox);
    box->showPopup();
    box->view()->setCurrentIndex(box->model()->index(index, 0));
    QTest::keyClick(box->view(), Qt::Key_Return);
}

void Type(const QObject& parent, const char* lineEdit, const QString& text)
{
    auto* const edit = Child<QLineEdit>(parent, lineEdit);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, text);
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
    QVERIFY(enter.isAccepted());
    QDropEvent drop({9, 9}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(drop.proposedAction(), Qt::MoveAction);
    QApplication::sendEvent(&window, &drop);
    QCOMPARE(drop.dropAction(), Qt::CopyAction);
}

Outside::Outside()
{
    for (const char* scheme : {"http", "file"})
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "Open");
}

Outside::~Outside()
{
    for (const char* scheme : {"http", "file"})
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
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
    if (!answers.isEmpty())
        QTest::qFail("A dialog that was expected did not come up.", __FILE__, __LINE__);
}

void Answers::Finish()
{
    // Not QTRY_VERIFY, which waits three times as long for what fails.
    const auto isOver = [this] { return answers.isEmpty() && !QApplication::activeModalWidget(); };
    QVERIFY(QTest::qWaitFor(isOver, 4000));
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
        QTest::qFail(qPrintable("A dialog is in the way: " + shown->windowTitle() + " " +
                                shown->metaObject()->className() +
                                (qobject_cast<QMessageBox*>(shown) ? qobject_cast<QMessageBox*>(shown)->text() : "")),
                     __FILE__, __LINE__);
        answers.clear();
        shown->close();
        return;
    }
    answered = shown;
    ticks = 0;
    answers.takeFirst()(shown);
    if (answered && !answered->isVisible())
        answered.clear(); // the same menu may come up again
}

Answer Entry(const QStringList& allEntries, const QString& entry)
{
    return [=](QWidget* shown) {
        auto* const menu = qobject_cast<QMenu*>(shown);
        QVERIFY2(menu, shown->metaObject()->className());
        QStringList entries;
        QAction* chosen = nullptr;
        for (QAction* const action : menu->actions()) {
            entries += action->isSeparator() ? QStringLiteral("-") : action->text();
            if (action->text() == entry)
                chosen = action;
        }
        QCOMPARE(entries, allEntries);
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
        QVERIFY2(box, shown->metaObject()->className());
        QCOMPARE(box->text(), text);
        QCOMPARE(box->windowTitle(), title);
        QCOMPARE(box->icon(), icon);
        QCOMPARE(box->standardButtons(), buttons);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QVERIFY(!box->parent());
        if (buttons & QMessageBox::Yes)
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::Yes));
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

Answer Files(const QString& caption, const QStringList& paths)
{
    return Dialog(caption, [paths](QWidget* shown) {
        auto* const dialog = qobject_cast<QFileDialog*>(shown);
        QVERIFY2(dialog, shown->metaObject()->className());
        if (paths.isEmpty()) {
            dialog->reject();
            return;
        }
        const QString typed = paths.size() == 1 ? paths.first() : '"' + paths.join("\" \"") + '"';
        Child<QLineEdit>(*dialog, "fileNameEdit")->setText(typed);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

Answer Dialog(const QString& title, const Answer& answer)
{
    return [=](QWidget* shown) {
        QCOMPARE(shown->windowTitle(), title);
        answer(shown);
    };
}
