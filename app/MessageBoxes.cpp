#include "app/MessageBoxes.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

namespace
{
/// Puts the text of @p box in a scroll area when the box would not fit on the screen, so that its buttons can be seen.
void LimitHeight(QMessageBox& box)
{
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    const QSize limit = QGuiApplication::primaryScreen()->availableSize() * 0.6;
    if (!label || label->sizeHint().height() <= limit.height())
        return;
    auto* const area = new QScrollArea(&box);
    delete box.layout()->replaceWidget(label, area);
    area->setWidget(label);
    const int scrollBar = area->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    area->setMinimumSize(qMin(label->sizeHint().width() + 2 * scrollBar, limit.width()), limit.height());
}

QMessageBox::StandardButton Show(QMessageBox::Icon icon, const QString& title, const QString& text,
                                 QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
    QMessageBox box(icon, title, QString(), buttons);
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setDefaultButton(defaultButton);
    LimitHeight(box);
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
