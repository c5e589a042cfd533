#include "app/CaptionFit.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QMap>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace
{
/// Whether a label is drawn whole in the room that it has.
bool Fits(const QLabel& label)
{
    if (!label.wordWrap())
        return label.sizeHint().width() <= label.width() && label.sizeHint().height() <= label.height();
    const QRect room = label.contentsRect();
    const QRect text = label.fontMetrics().boundingRect(room, Qt::TextWordWrap, label.text());
    return text.width() <= room.width() && label.heightForWidth(label.width()) <= label.height();
}

bool Fits(const QAbstractButton& button)
{
    if (!qobject_cast<const QPushButton*>(&button))
        return button.sizeHint().width() <= button.width();
    // A push button's size hint has a minimum width, which a form may undercut.
    constexpr int frame = 4, gap = 4; // pixels; the gap is that of Qt's styles between icon and text
    const int icon = button.icon().isNull() ? 0 : button.iconSize().width() + gap;
    const int text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
    return text + icon + 2 * frame <= button.width();
}

/// Whether a label or a button shows a text that is cut off.
bool IsCut(const QWidget* caption)
{
    if (const auto* const label = qobject_cast<const QLabel*>(caption)) {
        const bool elastic = label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
        return !elastic && !label->text().isEmpty() && !Fits(*label);
    }
    const auto* const button = qobject_cast<const QAbstractButton*>(caption);
    return button && !button->text().isEmpty() && !Fits(*button);
}

/// The group box that @p caption is in, else the caption itself.
QWidget* GroupOf(QWidget* caption)
{
    QWidget* box = caption->parentWidget();
    while (box && !box->isWindow() && !qobject_cast<QGroupBox*>(box))
        box = box->parentWidget();
    return qobject_cast<QGroupBox*>(box) ? box : caption;
}

/// Makes @p captions, which share one font size, one pixel smaller. @return false when they are as small as allowed.
bool Shrink(const QWidgetList& captions)
{
    constexpr int smallest = 8; // pixels
    QFont font = captions.first()->font();
    // In pixels, as requested rather than as drawn: where a system rounds, a smaller step would never end.
    const int size = font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
    if (size <= smallest)
        return false;
    font.setPixelSize(size - 1);
    for (QWidget* const caption : captions)
        caption->setFont(font);
    return true;
}
} // namespace

void FitCaptions(const QWidget& window)
{
    QMap<QWidget*, QWidgetList> groups;
    for (auto* const widget : window.findChildren<QWidget*>()) {
        if (widget->isVisibleTo(&window) && (widget->inherits("QLabel") || widget->inherits("QAbstractButton")))
            groups[GroupOf(widget)] += widget;
    }
    for (bool shrunk = true; shrunk;) {
        shrunk = false;
        for (const QWidgetList& captions : std::as_const(groups)) {
            const bool cut = std::any_of(captions.begin(), captions.end(), IsCut);
            shrunk |= cut && Shrink(captions);
        }
        // Room that one caption gives up goes to those beside it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
}
