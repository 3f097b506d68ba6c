// The cable length as the screen and the film show it.
#pragma once

#include "settings/systemsettings.h"

#include <QString>

// "12.34 m", "40.49 ft", or the raw difference of counts as "1234 cnt", from MeterCount and MeterOffset.
QString cableLengthText(const _GlobalSystemSettings &settings);

// What stands for a length that is not known on the screen and in pictures.
inline const QString kUnknownLength = QStringLiteral("-!-");

// What is burnt into stills and films: the length as `shown` on the screen, unless the last poll failed.
QString burntInLength(const _GlobalSystemSettings &settings, const QString &shown);

// True when the camera has left the place of a damage note: more than 9 cm to either side.
bool hasLeftDamageNote(const _GlobalSystemSettings &settings);
