#pragma once

#include "app/MainWindow.h"

#include <QPointer>

/// Says what the window is doing for as long as this lives; afterwards, that is what it was before. With a status text
/// the window also looks busy: its controls are disabled, its progress bar is enabled and has the focus. The outermost
/// guard ends that.
class MainWindow::ActivityGuard
{
public:
    ActivityGuard(MainWindow& busyWindow, Activity activity, const QString& status = QString());
    ~ActivityGuard();
    Q_DISABLE_COPY(ActivityGuard)

private:
    MainWindow& window;
    const Activity outer;
    const QPointer<QWidget> focused; ///< what had the focus before; null when there was none
};
