// The values that a touch on the tools page steps a setting through. No widgets, no I/O.
#pragma once

#include "core/settingvalues.h"

#include <QString>

#include <array>

namespace toolscycle {

// The power-off delays, in minutes.
using DelayOptions = std::array<quint32, 4>;

// Index into the delays: downwards, from the first to the last. An index that the settings file made up comes
// back into the range.
qint8 autoShutdownAfter(qint8 index);

// 2..7: a level below 2 could not be read to set it up again.
quint8 backlightAfter(quint8 level);

// One of so many languages; from the last to the first.
quint8 languageAfter(quint8 index, int languages);

// The delays as a wheel of three: `chosen` with the one above and the one the next touch selects. An index
// that is not there powers nothing off, as the first entry.
struct Delays
{
    QString above, chosen, next;
};
Delays delaysAround(const DelayOptions &options, int index);

// How a camera head is called on its button and in the event log. The board's number for the way it counts
// the cable is the type's value.
struct Head
{
    eImagerTypes type;
    const char *label;
    const char *logged;
};

// The mini module gives way to the reel that `fitted` names, a reel to the mini module; never "none".
const Head &headAfter(eImagerTypes current, eImagerTypes fitted);

// Null where no head is attached.
const Head *headOf(eImagerTypes type);

} // namespace toolscycle
