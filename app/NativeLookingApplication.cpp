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
    // Rounding would make 200 % of 150 %, and 100 % of 125 %.
    setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    // Wayland finds a window's icon only by this name.
    setDesktopFileName(QStringLiteral(ORVANTO_APPLICATION_ID));
    // Where the size of files is limited (ulimit -f), a write beyond that then fails like any other, and is undone.
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
    // Qt's own dialogs, whose class names begin with a Q, make room for their captions themselves.
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
