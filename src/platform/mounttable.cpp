#include "platform/mounttable.h"

#include "platform/unit.h"

#include <QFile>

namespace mounttable {

bool shows(const QString &device, const QString &place)
{
    QFile table(unit::path(QStringLiteral("/proc/mounts")));
    // Such a file tells no size: it is read to its end.
    return table.open(QIODevice::ReadOnly) &&
           ('\n' + table.readAll()).contains(QStringLiteral("\n%1 %2 ").arg(device, place).toUtf8());
}

} // namespace mounttable
