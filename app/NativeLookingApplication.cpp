#include "app/NativeLookingApplication.h"

#include "app/CaptionFit.h"
#include "platform/QtVersion.h"

#include <QFileOpenEvent>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <csignal>
#include <utility>

NativeLookingApplication::NativeLookingApplication(int& argc, char** argv) : QApplication(argc, argv) {}

void NativeLookingApplication::Prepare()
{
    PrepareQt();
    // Rounded, 150 % would fill the screen with twice the size, and 125 % would change nothing.
    setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    // Wayland has no other way to a window's icon.
    setDesktopFileName(QStringLiteral(ORVANTO_APPLICATION_ID));
    // Where the user limits the size of files, a write beyond that fails and is put back, like any other.
    std::signal(SIGXFSZ, SIG_IGN);
}

bool NativeLookingApplication::event(QEvent* event)
{
    if (event->type() != QEvent::FileOpen)
        return QApplication::event(event);
    // One event for each file, one right after the other.
    if (requestedPaths.isEmpty()) {
        QTimer::singleShot(0, this, [this] {
            const QStringList paths = std::exchange(requestedPaths, {});
            emit OpenRequested(paths);
        });
    }
    requestedPaths += static_cast<QFileOpenEvent*>(event)->file();
    return true;
}

bool NativeLookingApplication::notify(QObject* receiver, QEvent* event)
{
    if (!receiver || !receiver->isWidgetType())
        return QApplication::notify(receiver, event);
    auto* const widget = static_cast<QWidget*>(receiver);
    // Qt's own dialogs, whose classes are named with a Q, make room for their captions themselves.
    if (event->type() == QEvent::Show && !event->spontaneous() && widget->isWindow() &&
        widget->metaObject()->className()[0] != 'Q')
        FitCaptions(*widget);
    if (event->type() == QEvent::Polish) {
        constexpr const char* smallClasses[] = {"QLabel",    "QLineEdit",    "QComboBox",
                                                "QCheckBox", "QRadioButton", "QAbstractItemView"};
        const bool sized = std::any_of(std::begin(controlSizes), std::end(controlSizes),
                                       [widget](Qt::WidgetAttribute size) { return widget->testAttribute(size); });
        const bool isSmall = std::any_of(std::begin(smallClasses), std::end(smallClasses),
                                         [widget](const char* name) { return widget->inherits(name); });
        if (!sized && isSmall)
            widget->setAttribute(Qt::WA_MacSmallSize);
    }
    return QApplication::notify(receiver, event);
}
