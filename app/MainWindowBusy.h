#pragma once

#include "app/MainWindow.h"

#include <QPointer>

/// Sets the window's activity while it lives, then restores the previous one. With a status text the window also looks
/// busy: its controls are disabled, its progress bar is enabled and has the focus. The outermost guard
/// ends that.
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
