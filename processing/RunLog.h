#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// The block that one run appends to the log, in UTF-8: @p report between two lines of dashes, below the time.
QByteArray RunLogBlock(const QDateTime& time, const QString& report);
