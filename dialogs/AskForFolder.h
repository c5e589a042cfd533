#pragma once

#include <QString>

class QWidget;

/// Asks for a folder, starting at the one that is stored under @p settingsKey. @return an empty text when cancelled.
/// The caller stores what was chosen, each at its own time.
QString AskForFolder(QWidget* parent, const QString& settingsKey);
