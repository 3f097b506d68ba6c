// The cable length as the screen and the film show it.
#pragma once

#include "settings/systemsettings.h"

#include <QString>

// "12.34 m", "40.49 ft", or the raw difference of counts as "1234 cnt", from MeterCount and MeterOffset.
QString cableLengthText(const _GlobalSystemSettings &settings);

// True when the camera has left the place of a damage note: more than 9 cm to either side.
bool hasLeftDamageNote(const _GlobalSystemSettings &settings);
