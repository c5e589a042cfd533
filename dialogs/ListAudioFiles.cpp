#include "dialogs/ListAudioFiles.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

ListAudioFiles::ListAudioFiles(QWidget* parent) : QListWidget(parent), watermark(QStringLiteral(":/res/Logo-list.png"))
{
    // Scrolling moves the painted rows; a full repaint keeps the watermark where it is.
    for (const QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, viewport(), QOverload<>::of(&QWidget::update));
}

void ListAudioFiles::keyPressEvent(QKeyEvent* event)
{
    const QList<QListWidgetItem*> before = selectedItems();
    QListWidget::keyPressEvent(event);
    const QList<QListWidgetItem*> now = selectedItems();
    if (!now.isEmpty() && now != before)
        emit itemPressed(now.first());
}

void ListAudioFiles::mouseMoveEvent(QMouseEvent* event)
{
    // Dragging over the rows would select another one than the row that was pressed.
    if (event->buttons() == Qt::NoButton)
        QListWidget::mouseMoveEvent(event);
}

void ListAudioFiles::paintEvent(QPaintEvent* event)
{
    {
        const QSize size = watermark.size() / watermark.devicePixelRatio();
        QPainter painter(viewport());
        painter.setOpacity(0.4);
        painter.drawPixmap((width() - size.width()) / 2, (height() - size.height()) / 2, watermark);
    }
    QListWidget::paintEvent(event);
}
