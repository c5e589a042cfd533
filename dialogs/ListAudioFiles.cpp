#include "dialogs/ListAudioFiles.h"

#include "dialogs/LongTexts.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

ListAudioFiles::ListAudioFiles(QWidget* parent) : QListWidget(parent), watermark(QStringLiteral(":/res/Logo-list.png"))
{
    // Scrolling moves the painted rows; a full repaint keeps the watermark where it is.
    for (const QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, viewport(), QOverload<>::of(&QWidget::update));
}

bool ListAudioFiles::event(QEvent* event)
{
    // Only some desktops send this for the Menu key, and without a row: the window has shortcuts for that menu.
    if (event->type() == QEvent::ContextMenu &&
        static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard)
        return true;
    return QListWidget::event(event);
}

/// Each row shows its path as its tool tip. A row carries no other data than its path and its icon.
bool ListAudioFiles::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QListWidget::viewportEvent(event);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const QListWidgetItem* const item = itemAt(help.pos());
    ShowPlainToolTip(help, item ? item->text() : QString(), viewport());
    return true;
}

QItemSelectionModel::SelectionFlags ListAudioFiles::selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const
{
    // Ctrl would deselect a row whose file stays the window's current one.
    const QItemSelectionModel::SelectionFlags command = QListWidget::selectionCommand(index, event);
    return command & QItemSelectionModel::Deselect ? QItemSelectionModel::NoUpdate : command;
}

void ListAudioFiles::keyPressEvent(QKeyEvent* event)
{
    const QList<QListWidgetItem*> before = selectedItems();
    const int key = event->key();
    const bool isStep = key == Qt::Key_Up || key == Qt::Key_Down;
    const bool isLeap = key == Qt::Key_Home || key == Qt::Key_End || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    // The row with the focus may not be selected yet: then a step selects it, and so does a leap that ends there.
    if (!isStep || !before.isEmpty() || !currentItem())
        QListWidget::keyPressEvent(event);
    if ((isStep || isLeap) && selectedItems().isEmpty() && currentItem()) {
        currentItem()->setSelected(true);
        // A screen reader announced this row when the list took the focus, and repeats it only if the focus comes back.
        QAccessibleEvent list(this, QAccessible::Focus);
        QAccessible::updateAccessibility(&list);
        QAccessibleEvent row(this, QAccessible::Focus);
        row.setChild(currentRow());
        QAccessible::updateAccessibility(&row);
    }
    const QList<QListWidgetItem*> now = selectedItems();
    if (!now.isEmpty() && now != before)
        emit itemPressed(now.first());
}

void ListAudioFiles::mouseMoveEvent(QMouseEvent* event)
{
    // Dragging over the rows would select a row other than the one that was pressed.
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
    // Where no row can show the focus, the list itself does.
    if (hasFocus() && !currentItem()) {
        // With fractional scaling, a frame of lines would lose half its width at the right and the bottom.
        const QRect room = viewport()->rect();
        QPainter painter(viewport());
        painter.setClipRegion(QRegion(room) - room.adjusted(1, 1, -1, -1));
        painter.fillRect(room, palette().color(QPalette::Highlight));
    }
}
