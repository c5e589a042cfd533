#pragma once

#include <QListWidget>
#include <QPixmap>

/// The file list, with the program's logo faintly behind its rows. Selecting a row by key counts as a press on it:
/// itemPressed() reports both. A row stays selected until another is.
class ListAudioFiles : public QListWidget
{
    Q_OBJECT

public:
    explicit ListAudioFiles(QWidget* parent);

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const QPixmap watermark;
};
