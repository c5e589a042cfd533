#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// How a run ended.
enum class RunEnd {
    Complete,
    Aborted,    ///< by the user, in the tag editor
    Interrupted ///< on request
};

/// The first lines of a run's failure text; the sources that were not copied follow, one a line.
extern const QString failureHeading;

/// What a run says at its end.
struct SRunReport
{
    bool failed;
    QString shown;  ///< to the user
    QString logged; ///< without the advice for the user; ends with a line feed
};

/// @p failures is the failure text of the run, empty when nothing failed. A run that was aborted counts as finished
/// successfully: the user ended it, and every file is whole.
SRunReport ReportOf(RunEnd end, const QString& failures);

/// The block that one run appends to the log, in UTF-8: @p logged between two lines of dashes, below the time.
QByteArray RunLogBlock(const QDateTime& time, const QString& logged);
