// How long a film may get: FAT32 ends a file at 4 GiB.
#pragma once

#include <QtGlobal>

namespace filmlimit {

// Bytes at which a film ends and the next number goes on. What is left up to 4 GiB is for the pictures until
// somebody looks again, and for the index. GUI thread.
qint64 bytes();

void setForTests(qint64 bytes); // 0: as it was

} // namespace filmlimit
