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
/// meanwhile is not copied. It asks @p goOn before each step and gives up on a no.
SCopy CopyFile(const QString& source, const QString& destination, const std::function<bool()>& goOn);

/// Waits until the names in @p folder are on the disk, as far as it may be read. @return false when they may be lost.
bool FlushFolder(const QString& folder);
