#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QString>

class QDialog;
class QWidget;

/// Places a dialog without a parent as if the main window were its parent: in the middle of it, and above it. Where the
/// dialog has no title, the desktop shows the program's name.
void PlaceOverMainWindow(QDialog& dialog);

// The program's message boxes: modal, always with plain text. A long text scrolls. They have no parent, so that none
// inherits its style or is destroyed with it; each is placed over the main window all the same.

/// Asks a question; @p buttons are offered besides Yes, which is the default.
QMessageBox::StandardButton Ask(const QString& text, QMessageBox::StandardButtons buttons);

/// A question with Yes and No. @return whether the answer was Yes. While it is open, @p standing, if given, points to
/// its box, so that it can be closed without an answer.
bool AskYesNo(const QString& text, QPointer<QDialog>* standing = nullptr);

void Warn(const QString& text, const QString& title = {});

void Inform(const QString& text);

/// Asks for a folder, starting at the one that is stored under @p settingsKey. @return an empty text when cancelled.
/// The caller stores what was chosen.
QString AskForFolder(QWidget* parent, const QString& settingsKey);
