#include "files/FailureLog.h"

#include <QLoggingCategory>

#include <cerrno>

namespace
{
Q_LOGGING_CATEGORY(filesLog, "orvanto.files", QtWarningMsg)
} // namespace

QString SystemReason()
{
    return qt_error_string(errno);
}

void LogFailure(const char* notDone, const QString& path, const QString& reason)
{
    qCWarning(filesLog, "%s %s: %s", notDone, qUtf8Printable(path), qUtf8Printable(reason));
}
