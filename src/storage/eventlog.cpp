#include "storage/eventlog.h"

#include "storage/tornline.h"

#include <QDateTime>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.storage")

const UnitPath kEventLog = u"/home/root/tubix4_app/eventlog.csv"_unit;

} // namespace

void UpdateEventLog(eEventLogOperation operation, const QString &text)
{
    const QString line =
        QStringLiteral("%1,%2,%3\n")
            .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd/hh:mm:ss")),
                 QString::number(operation), text.trimmed());
    if (!appendLine(kEventLog, line.toUtf8()))
        qCDebug(log) << "Couldn't open eventlog to write" << line;
}

void mendEventLog()
{
    mendTornLine(kEventLog);
}
