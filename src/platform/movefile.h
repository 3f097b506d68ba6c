// A new name for a file, without ever replacing another one.
#pragma once

#include "platform/unit.h"

// Renames the file at `from` to `to` on the same file system. False when it cannot, or when `to` is
// there already; both files then stand as they were.
bool moveFile(const UnitPath &from, const UnitPath &to);
