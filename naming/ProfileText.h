#pragma once

#include "naming/SRunSettings.h"

#include <QByteArray>
#include <QIODevice>

/// The exact content of a profile file with these settings: UTF-8, one "key=value" line each, in a fixed order, each
/// line ended by one line feed.
QByteArray ProfileText(const SRunSettings& settings);

/// Reads the settings from eight lines of @p device, opened without translation of line ends. A line counts by its
/// position, its value is what follows its first "=" (all of it without one); keys are not looked at and numbers not
/// range-checked. Missing lines read as 0, false or empty. A line longer than any profile's is cut, and the rest of the
/// file is not read.
SRunSettings ReadProfile(QIODevice& device);
