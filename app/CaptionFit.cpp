#include "app/CaptionFit.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QPushButton>

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
    // The size hint of a push button has a least width that a form may fall below.
    constexpr int frame = 4, gap = 4; // pixels; the gap is that of Qt's styles between icon and text
    const int icon = button.icon().isNull() ? 0 : button.iconSize().width() + gap;
    const int text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
    return text + icon + 2 * frame <= button.width();
}

/// Draws a caption that does not fit one pixel smaller. @return whether it did.
template <class Caption>
bool Shrink(Caption& caption)
{
    constexpr int smallest = 8; // pixels
    QFont font = caption.font();
    // In pixels, as asked for and not as drawn: some systems round, so that a smaller step would never end.
    const int size = font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
    if (caption.text().isEmpty() || size <= smallest || Fits(caption))
        return false;
    font.setPixelSize(size - 1);
    caption.setFont(font);
    return true;
}
} // namespace

void FitCaptions(const QWidget& window)
{
    for (bool shrunk = true; shrunk;) {
        shrunk = false;
        for (auto* const label : window.findChildren<QLabel*>()) {
            const bool elastic = label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
            shrunk |= label->isVisibleTo(&window) && !elastic && Shrink(*label);
        }
        for (auto* const button : window.findChildren<QAbstractButton*>())
            shrunk |= button->isVisibleTo(&window) && Shrink(*button);
        // What one caption gives up is room for those beside it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
}
