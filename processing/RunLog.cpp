#include "processing/RunLog.h"

const QString failureHeading = QStringLiteral("Could not copy the following:\n\n");

SRunReport ReportOf(RunEnd end, const QString& failures)
{
    const bool stopped = end == RunEnd::Interrupted;
    if (failures.isEmpty()) {
        const QString sentence =
            stopped ? QStringLiteral("Operation stopped.") : QStringLiteral("Operation finished successfully!");
        return {false, sentence, sentence + QLatin1Char('\n')};
    }
    const QString logged = (stopped ? QStringLiteral("Operation stopped.\n\n") : QString()) + failures;
    return {true,
            logged + QStringLiteral("\nOrvanto could not fix the invalid tags. For better results try to manually edit "
                                    "the tags or try a different organize/rename pattern."),
            logged};
}

QByteArray RunLogBlock(const QDateTime& time, const QString& logged)
{
    const QString dashes(62, QLatin1Char('-'));
    const QString block = dashes + QLatin1Char('\n') + time.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")) +
                          QStringLiteral("\n\n") + logged + dashes + QStringLiteral("\n\n");
    return block.toUtf8();
}
