#include "app/NativeLookingApplication.h"

#include <QEvent>
#include <QFontInfo>
#include <QLabel>
#include <QPushButton>
#include <QTextCodec>
#include <QToolButton>

#include <algorithm>

namespace
{
/// Whether a caption is drawn whole in the room that its widget has.
bool Fits(const QWidget* widget)
{
    const QFontMetrics metrics = widget->fontMetrics();
    if (const auto* const label = qobject_cast<const QLabel*>(widget)) {
        const QSize room = label->contentsRect().size();
        const QSize text = metrics.boundingRect({{}, room}, Qt::TextWordWrap, label->text()).size();
        return text.width() <= room.width() && text.height() <= room.height();
    }
    if (const auto* const button = qobject_cast<const QPushButton*>(widget)) {
        // Its size hint has a least width that a form may fall below.
        const int icon = button->icon().isNull() ? 0 : button->iconSize().width() + 4; // as the styles leave
        return metrics.size(Qt::TextShowMnemonic, button->text()).width() + icon <= button->width();
    }
    return widget->sizeHint().width() <= widget->width();
}

/// Captions whose room the form has fixed are drawn smaller where a user's large font would be cut off.
void FitCaptions(const QWidget& window)
{
    QList<QWidget*> captions;
    for (auto* const label : window.findChildren<QLabel*>()) {
        if (label->maximumHeight() < QWIDGETSIZE_MAX && !label->text().isEmpty())
            captions += label;
    }
    for (auto* const button : window.findChildren<QAbstractButton*>()) {
        if (!qobject_cast<QToolButton*>(button))
            captions += button;
    }
    for (QWidget* const caption : qAsConst(captions)) {
        constexpr qreal smallest = 6, step = 0.5; // points
        QFont font = caption->font();
        while (!Fits(caption) && QFontInfo(font).pointSizeF() > smallest) {
            font.setPointSizeF(QFontInfo(font).pointSizeF() - step);
            caption->setFont(font);
        }
    }
}
} // namespace

NativeLookingApplication::NativeLookingApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void NativeLookingApplication::Prepare()
{
    setAttribute(Qt::AA_EnableHighDpiScaling);
    setAttribute(Qt::AA_UseHighDpiPixmaps);
    // Wayland has no other way to a window's icon.
    setDesktopFileName(QStringLiteral(ORVANTO_APPLICATION_ID));
    // File names are UTF-8 everywhere today, also where the locale is missing or says otherwise.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

bool NativeLookingApplication::notify(QObject* receiver, QEvent* event)
{
    if (!receiver || !receiver->isWidgetType())
        return QApplication::notify(receiver, event);
    auto* const widget = static_cast<QWidget*>(receiver);
    if (event->type() == QEvent::Show && widget->isWindow())
        FitCaptions(*widget);
    if (event->type() == QEvent::Polish) {
        constexpr Qt::WidgetAttribute sizes[] = {Qt::WA_MacMiniSize, Qt::WA_MacSmallSize, Qt::WA_MacNormalSize,
                                                 Qt::WA_MacVariableSize};
        constexpr const char* smallClasses[] = {"QLabel",    "QLineEdit",    "QComboBox",
                                                "QCheckBox", "QRadioButton", "QAbstractItemView"};
        const bool sized = std::any_of(std::begin(sizes), std::end(sizes),
                                       [widget](Qt::WidgetAttribute size) { return widget->testAttribute(size); });
        const bool isSmall = std::any_of(std::begin(smallClasses), std::end(smallClasses),
                                         [widget](const char* name) { return widget->inherits(name); });
        if (!sized && isSmall)
            widget->setAttribute(Qt::WA_MacSmallSize);
    }
    return QApplication::notify(receiver, event);
}
