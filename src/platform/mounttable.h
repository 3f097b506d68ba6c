// The system's table of mounts. Any thread.
#pragma once

#include <QString>

namespace mounttable {

// True when `device` is mounted at `place` (unit paths), a dead mount of a pulled card included. False
// without a table. Cheap: no command is run.
bool shows(const QString &device, const QString &place);

} // namespace mounttable
