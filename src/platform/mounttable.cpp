#include "platform/mounttable.h"

#include "platform/unit.h"

#include <QFile>

namespace mounttable {

bool shows(const UnitPath &device, const UnitPath &place)
{
    QFile table(unit::path(u"/proc/mounts"_unit));
    // Such a file tells no size: it is read to its end.
    return table.open(QIODevice::ReadOnly) &&
           ('\n' + table.readAll())
               .contains(QStringLiteral("\n%1 %2 ").arg(device.text(), place.text()).toUtf8());
}

} // namespace mounttable
