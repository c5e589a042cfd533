#include "dialogs/Prompts.h"

#include "platform/UserSettings.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QPlainTextEdit>
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

void MoveToMiddle(QDialog& dialog)
{
    if (const QWidget* const main = MainWindowOnScreen())
        dialog.move(main->geometry().center() - dialog.rect().center());
}

/// A message box has its size only once it is shown.
class Box : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

protected:
    void showEvent(QShowEvent* event) override
    {
        QMessageBox::showEvent(event);
        MoveToMiddle(*this);
    }
};

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
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setMinimumSize(scrolledText);
    text->setTabChangesFocus(true); // it takes no text, and the buttons are what comes next
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
    if (text.size() > longestText || text.count(QLatin1Char('\n')) > mostLines)
        MakeScrollable(box);
    NameIcon(box);
    for (QAbstractButton* const button : box.buttons())
        button->setIcon(QIcon()); // some desktops still put dated icons on buttons
    PlaceOverMainWindow(box);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}
} // namespace

void PlaceOverMainWindow(QDialog& dialog)
{
    dialog.setWindowIcon(QIcon(QStringLiteral(":/res/Logo-transparent.png")));
    dialog.winId(); // makes the window that the desktop knows
    QWindow* const window = dialog.windowHandle();
    if (dialog.windowTitle().isEmpty()) {
        window->setTitle(QStringLiteral("Orvanto"));
        dialog.setAccessibleName(QStringLiteral("Orvanto"));
    }
    if (const QWidget* const main = MainWindowOnScreen())
        window->setTransientParent(main->windowHandle());
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
    return QFileDialog::getExistingDirectory(parent, QCoreApplication::translate("AskForFolder", "Select folder"),
                                             StoredFolder(settingsKey));
}
