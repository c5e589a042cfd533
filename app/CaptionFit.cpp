#include "app/CaptionFit.h"

#include <QHash>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>

namespace
{
/// Whether a caption is drawn whole in the room that its widget has.
bool Fits(const QWidget* caption)
{
    if (const auto* const label = qobject_cast<const QLabel*>(caption)) {
        if (!label->wordWrap())
            return label->sizeHint().width() <= label->width();
        const QRect room = label->contentsRect();
        const QRect text = label->fontMetrics().boundingRect(room, Qt::TextWordWrap, label->text());
        return text.width() <= room.width() && label->heightForWidth(label->width()) <= label->height();
    }
    if (const auto* const button = qobject_cast<const QPushButton*>(caption)) {
        // Its size hint has a least width that a form may fall below.
        constexpr int frame = 4, gap = 4; // pixels; the gap is that of Qt's styles between icon and text
        const int icon = button->icon().isNull() ? 0 : button->iconSize().width() + gap;
        const int text = button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width();
        return text + icon + 2 * frame <= button->width();
    }
    return caption->sizeHint().width() <= caption->width();
}

/// The captions in @p window that cannot have more room, by the widget that they are in.
QHash<const QObject*, QList<QWidget*>> FixedCaptions(const QWidget& window)
{
    const bool fixedWindow = window.minimumSize() == window.maximumSize();
    const QSize unlimited(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    QHash<const QObject*, QList<QWidget*>> captions;
    for (auto* const label : window.findChildren<QLabel*>()) {
        const bool elastic = label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
        if ((fixedWindow || label->maximumSize() != unlimited) && !elastic && !label->text().isEmpty())
            captions[label->parent()] += label;
    }
    for (auto* const button : window.findChildren<QAbstractButton*>()) {
        if (!qobject_cast<QToolButton*>(button) && !button->text().isEmpty())
            captions[button->parent()] += button;
    }
    return captions;
}
} // namespace

void FitCaptions(const QWidget& window)
{
    constexpr int smallest = 8; // pixels
    for (const QList<QWidget*>& neighbours : FixedCaptions(window)) {
        // In whole pixels: some systems round points, so that a step of less never ends.
        int size = 0;
        for (const QWidget* caption : neighbours)
            size = qMax(size, QFontInfo(caption->font()).pixelSize());
        for (; size > smallest; --size) {
            const bool fit = std::all_of(neighbours.begin(), neighbours.end(), [&window](const QWidget* caption) {
                return !caption->isVisibleTo(&window) || Fits(caption);
            });
            if (fit)
                break;
            for (QWidget* const caption : neighbours) {
                QFont font = caption->font();
                if (QFontInfo(font).pixelSize() < size)
                    continue;
                font.setPixelSize(size - 1);
                caption->setFont(font);
            }
        }
    }
}
