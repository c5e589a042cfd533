#include "dialogs/LongTexts.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

void ShowPlainToolTip(const QHelpEvent& event, const QString& text, QWidget* widget)
{
    constexpr int longestLine = 100; // characters
    // Only rich text wraps, and markup in a path has to be escaped.
    const bool isRich = text.size() > longestLine || Qt::mightBeRichText(text);
    QToolTip::showText(event.globalPos(), isRich ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text, widget);
}

bool PathLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    // Not the toolTip property: a screen reader would describe the label by it, markup included.
    ShowPlainToolTip(*static_cast<QHelpEvent*>(event), text(), this);
    return true;
}

void PathLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect room = contentsRect();
    style()->drawItemText(&painter, room, static_cast<int>(alignment()), palette(), isEnabled(),
                          fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width()), foregroundRole());
}

void StartVisibleLineEdit::ShowText(const QString& text)
{
    setText(text);
    home(false);
}

void StartVisibleLineEdit::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    if (!selectedText().isEmpty() && selectedText() == text()) {
        end(false);
        home(true);
    }
}
