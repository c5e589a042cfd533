#pragma once

#include "files/FileFacts.h"

#include <QString>

#include <functional>

enum class CopyResult { Copied, Failed, Stopped };

struct SCopy
{
    CopyResult result;
    std::optional<SFileFacts> source; ///< of the file that was copied, when it was opened
};

/// Copies a regular file with its permissions, its time of modification, its extended attributes and its access
/// control lists. The copy appears whole or not at all, flushed, and replaces nothing. A source that somebody writes
/// meanwhile is not copied. Between two steps, @p goOn says whether to.
SCopy CopyFile(const QString& source, const QString& destination, const std::function<bool()>& goOn);

/// Waits until the names in @p folder are on the disk, too. @return false when they may be lost.
bool FlushFolder(const QString& folder);
