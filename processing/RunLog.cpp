#include "processing/RunLog.h"

QByteArray RunLogBlock(const QDateTime& time, const QString& report)
{
    const QString dashes(62, QLatin1Char('-'));
    const QString block = dashes + QLatin1Char('\n') + time.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")) +
                          QStringLiteral("\n\n") + report + dashes + QStringLiteral("\n\n");
    return block.toUtf8();
}
