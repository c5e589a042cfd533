#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QString>

class QDialog;
class QWidget;

/// Gives a dialog without parent the place of one that has the main window as its parent: in the middle of that, and
/// above it. Where it has no title, the desktop shows the program's name.
void PlaceOverMainWindow(QDialog& dialog);

// The program's message boxes: modal, their text always plain. A long text scrolls. They have no parent, so that none
// takes over its style or goes with it; PlaceOverMainWindow() and its like make up for that.

/// Asks with the question icon; @p buttons besides Yes, which is the default.
QMessageBox::StandardButton Ask(const QString& text, QMessageBox::StandardButtons buttons);

/// A question with Yes and No. @return whether the answer was Yes. While it stands, @p standing, if given, is its box,
/// which can be closed without an answer.
bool AskYesNo(const QString& text, QPointer<QDialog>* standing = nullptr);

void Warn(const QString& text, const QString& title = {});

void Inform(const QString& text);

/// Asks for a folder, starting at the one that is stored under @p settingsKey. @return an empty text when cancelled.
/// The caller stores what was chosen, each at its own time.
QString AskForFolder(QWidget* parent, const QString& settingsKey);
