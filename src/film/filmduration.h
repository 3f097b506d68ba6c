// How long a film is, as the film tool of the unit tells it.
#pragma once

#include "platform/unit.h"

#include <QString>

// Nanoseconds out of the tool's report ("Duration: 00:01:23.45"), worked out in single precision. A report
// without that word is read as far as its numbers parse; 0 when none does.
double durationInReport(const QString &report);

// Asks "avconv -i" (or "ffmpeg -i", where there is no avconv) about the film at `unitPath`; waits for it. 0
// when it cannot tell. GUI thread.
double filmDuration(const UnitPath &unitPath);
