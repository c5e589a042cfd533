#pragma once

#include <QDialog>

#include <memory>

class Ui_DialogAbout;

/// Names the program, its version, its maker and TagLib.
class DialogAbout : public QDialog
{
    Q_OBJECT

public:
    explicit DialogAbout(QWidget* parent);
    ~DialogAbout() override;

private:
    std::unique_ptr<Ui_DialogAbout> ui;
};
