#pragma once

#include <QLabel>
#include <QLineEdit>

class QHelpEvent;

// Widgets for texts that may not fit, such as paths.

/// Shows @p text at the place that @p event asks about; markup in it is shown as it is. An empty text
/// hides the tool tip.
void ShowPlainToolTip(const QHelpEvent& event, const QString& text, QWidget* widget);

/// Shows a path on one line. Where it does not fit, its middle is left out, and the tool tip has all of it.
class PathLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// A line edit that shows the beginning of its text, also when the Tab key has selected all of it.
class StartVisibleLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    using QLineEdit::QLineEdit;

    /// Replaces the text and shows its beginning.
    void ShowText(const QString& text);

protected:
    void focusInEvent(QFocusEvent* event) override;
};
