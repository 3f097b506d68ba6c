// The system's table of mounts. Any thread.
#pragma once

#include "platform/unit.h"

namespace mounttable {

// True when `device` is mounted at `place`, a dead mount of a pulled card included. False
// without a table. Cheap: no command is run.
bool shows(const UnitPath &device, const UnitPath &place);

} // namespace mounttable
