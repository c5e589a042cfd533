#pragma once

#include <QString>

/// The system's words for the last error of this thread, from errno.
QString SystemReason();

constexpr char notCopied[] = "Could not copy";
constexpr char notSaved[] = "Could not save the tags of";

/// Logs, as a warning of the category "orvanto.files", what was not done with the file at @p path, and why. The window
/// says little of it, by design. Never pass the text of a tag.
void LogFailure(const char* notDone, const QString& path, const QString& reason = SystemReason());
