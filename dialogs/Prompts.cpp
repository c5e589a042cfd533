#include "dialogs/Prompts.h"

#include "platform/UserSettings.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace
{
constexpr int longestText = 1000; // characters
constexpr int mostLines = 12;
constexpr QSize scrolledText(500, 300);

const QWidget* MainWindowOnScreen()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto main = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return qobject_cast<const QMainWindow*>(window) && window->isVisible();
    });
    return main == windows.end() ? nullptr : *main;
}

/// Moves @p dialog to the middle of the main window, or as near to it as leaves the dialog whole on the screen.
void MoveToMiddle(QDialog& dialog)
{
    const QWidget* const main = MainWindowOnScreen();
    if (!main)
        return;
    const QRect screen = main->screen()->availableGeometry();
    const QSize frame = main->frameGeometry().size() - main->geometry().size(); // a dialog's has the same size
    const QPoint last = screen.bottomRight() - dialog.rect().bottomRight() - QPoint(frame.width(), frame.height());
    const QPoint middle = main->geometry().center() - dialog.rect().center();
    dialog.move(qMax(screen.left(), qMin(middle.x(), last.x())), qMax(screen.top(), qMin(middle.y(), last.y())));
}

class Box : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

    /// A key that is held, such as the one that brought the box up, does not answer it.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        return (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->isAutoRepeat()) ||
               QMessageBox::eventFilter(watched, event);
    }

protected:
    /// Only now the box has its size.
    void showEvent(QShowEvent* event) override
    {
        QMessageBox::showEvent(event);
        MoveToMiddle(*this);
    }
};

/// Whether a label would cut off @p text, or grow the box beyond the screen.
bool IsLong(const QString& text)
{
    if (text.size() > longestText || text.count(QLatin1Char('\n')) > mostLines)
        return true;
    // A label is at least as wide as its longest word, such as a file name.
    QLabel label(text);
    label.setTextFormat(Qt::PlainText);
    label.setWordWrap(true);
    return label.minimumSizeHint().width() > scrolledText.width();
}

/// Shows the text of @p box in a field that scrolls, so that neither its size nor its layout grows with the text.
/// A box that shows its text in no label is left as it is.
void MakeScrollable(QMessageBox& box)
{
    const QList<QLabel*> labels = box.findChildren<QLabel*>();
    const auto shown =
        std::find_if(labels.begin(), labels.end(), [&box](const QLabel* label) { return label->text() == box.text(); });
    if (shown == labels.end())
        return;
    auto* const text = new QPlainTextEdit(box.text(), &box);
    text->setReadOnly(true);
    // With a caret the keys reach every place, and a screen reader reads line by line.
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setStyleSheet(QStringLiteral("QPlainTextEdit { border: 1px solid transparent; }"
                                       "QPlainTextEdit:focus { border-color: palette(highlight); }"));
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setMinimumSize(scrolledText);
    text->setTabChangesFocus(true); // it takes no text: Tab goes on to the buttons
    text->setAccessibleName(QCoreApplication::translate("Prompts", "Report"));
    delete box.layout()->replaceWidget(*shown, text);
    (*shown)->hide();
}

/// Says in words what the icon of @p box shows, for those who do not see it.
void NameIcon(const QMessageBox& box)
{
    const QString name = box.icon() == QMessageBox::Question  ? QStringLiteral("Question")
                         : box.icon() == QMessageBox::Warning ? QStringLiteral("Warning")
                                                              : QStringLiteral("Information");
    for (QLabel* const label : box.findChildren<QLabel*>()) {
        if (!label->pixmap(Qt::ReturnByValue).isNull())
            label->setAccessibleName(name);
    }
}

/// Keeps @p dialog above the main window, and gives it the program's name and icon.
void PutAboveMainWindow(QDialog& dialog)
{
    dialog.setWindowIcon(QIcon(QStringLiteral(":/res/Logo-transparent.png")));
    dialog.winId(); // creates the native window
    QWindow* const window = dialog.windowHandle();
    if (dialog.windowTitle().isEmpty()) {
        window->setTitle(QStringLiteral("Orvanto"));
        dialog.setAccessibleName(QStringLiteral("Orvanto"));
    }
    if (const QWidget* const main = MainWindowOnScreen())
        window->setTransientParent(main->windowHandle());
}

QMessageBox::StandardButton Show(QMessageBox::Icon icon, const QString& title, const QString& text,
                                 QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton,
                                 QPointer<QDialog>* standing = nullptr)
{
    Box box(icon, title, QString(), buttons);
    if (standing)
        *standing = &box;
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setDefaultButton(defaultButton);
    if (IsLong(text))
        MakeScrollable(box);
    NameIcon(box);
    box.installEventFilter(&box);
    for (QAbstractButton* const button : box.buttons()) {
        button->installEventFilter(&box);
        button->setIcon(QIcon()); // some desktops still put dated icons on buttons
    }
    PutAboveMainWindow(box);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}
} // namespace

void PlaceOverMainWindow(QDialog& dialog)
{
    PutAboveMainWindow(dialog);
    MoveToMiddle(dialog);
}

QMessageBox::StandardButton Ask(const QString& text, QMessageBox::StandardButtons buttons)
{
    return Show(QMessageBox::Question, QString(), text, QMessageBox::Yes | buttons, QMessageBox::Yes);
}

bool AskYesNo(const QString& text, QPointer<QDialog>* standing)
{
    return Show(QMessageBox::Question, QString(), text, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes,
                standing) == QMessageBox::Yes;
}

void Warn(const QString& text, const QString& title)
{
    Show(QMessageBox::Warning, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void Inform(const QString& text)
{
    Show(QMessageBox::Information, QString(), text, QMessageBox::Ok, QMessageBox::Ok);
}

QString AskForFolder(QWidget* parent, const QString& settingsKey)
{
    return QFileDialog::getExistingDirectory(parent, QCoreApplication::translate("Prompts", "Select folder"),
                                             StoredFolder(settingsKey));
}
