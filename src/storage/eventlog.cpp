#include "storage/eventlog.h"

#include "platform/unit.h"

#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.storage")

} // namespace

void UpdateEventLog(eEventLogOperation operation, const QString &text)
{
    const QString line = QStringLiteral("%1,%2,%3\n")
                             .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd/hh:mm:ss")),
                                  QString::number(operation), text.trimmed());
    QFile file(unit::path(QStringLiteral("/home/root/tubix4_app/eventlog.csv")));
    // Unbuffered: the line is one write, never two halves around a power cut.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        qCDebug(log) << "Couldn't open eventlog to write" << line;
        return;
    }
    file.write(line.toUtf8());
}
