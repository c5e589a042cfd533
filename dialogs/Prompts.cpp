#include "dialogs/Prompts.h"

#include "platform/UserSettings.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>

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
    delete box.layout()->replaceWidget(*shown, text);
    (*shown)->hide();
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
    return static_cast<QMessageBox::StandardButton>(box.exec());
}
} // namespace

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
