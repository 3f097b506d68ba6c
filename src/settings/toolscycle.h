// The values that a touch on the tools page steps a setting through. No widgets, no I/O.
#pragma once

#include "settings/systemsettings.h"

namespace toolscycle {

// Index into AutoShutdownOptions: downwards, from the first to the last. An index that the settings file made
// up comes back into the range.
qint8 autoShutdownAfter(qint8 index);

// 2..7: a level below 2 could not be read to set it up again.
quint8 backlightAfter(quint8 level);

// eLanguages, from the last to the first.
quint8 languageAfter(quint8 index);

// The power-off delays as a wheel of three: `chosen` with the one above and the one the next touch selects.
struct Delays
{
    QString above, chosen, next;
};
Delays delaysAround(const _GlobalSystemSettings &settings);

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
