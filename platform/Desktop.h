#pragma once

#include <QKeySequence>
#include <QString>

// These hand a file to another application. Nothing waits for that application, and a failed start is ignored. On macOS
// the application is fixed: TextEdit and iTunes, or Music where iTunes is not installed. Elsewhere it is the one that
// the user has chosen for the file's type.

void PlayInMusicApplication(const QString& path);
void ShowInTextEditor(const QString& path);

/// The keys that remove what is selected. A menu shows the first.
QList<QKeySequence> RemovalKeys();
