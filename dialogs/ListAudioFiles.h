#pragma once

#include <QListWidget>
#include <QPixmap>

/// The file list with the program's mark faintly in its middle, behind the rows.
class ListAudioFiles : public QListWidget
{
    Q_OBJECT

public:
    explicit ListAudioFiles(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QPixmap watermark;
};
