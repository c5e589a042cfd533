#pragma once

#include <QMessageBox>
#include <QString>

/// The program's message boxes: modal, without parent, their text always plain. A long text scrolls.

/// Asks with the question icon; @p buttons besides Yes, which is the default.
QMessageBox::StandardButton Ask(const QString& text, QMessageBox::StandardButtons buttons);

/// A question with Yes and No. @return whether the answer was Yes.
bool AskYesNo(const QString& text);

void Warn(const QString& title, const QString& text);
void Inform(const QString& text);
