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
                                 QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
    QMessageBox box(icon, title, QString(), buttons);
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setDefaultButton(defaultButton);
    if (text.size() > longestText || text.count(QLatin1Char('\n')) > mostLines)
        MakeScrollable(box);
    NameIcon(box);
    for (QAbstractButton* const button : box.buttons())
        button->setIcon(QIcon()); // some desktops still give those of another age
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
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto main = std::find_if(windows.begin(), windows.end(), [](const QWidget* candidate) {
        return qobject_cast<const QMainWindow*>(candidate) && candidate->isVisible();
    });
    if (main == windows.end())
        return;
    window->setTransientParent((*main)->windowHandle());
    dialog.adjustSize();
    dialog.move((*main)->geometry().center() - dialog.rect().center());
}

QMessageBox::StandardButton Ask(const QString& text, QMessageBox::StandardButtons buttons)
{
    return Show(QMessageBox::Question, QString(), text, QMessageBox::Yes | buttons, QMessageBox::Yes);
}

bool AskYesNo(const QString& text)
{
    return Ask(text, QMessageBox::No) == QMessageBox::Yes;
}

void Warn(const QString& title, const QString& text)
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
