// The cable length as the screen and the film show it.
#pragma once

#include "core/settingvalues.h"

#include <QString>

// "12.34 m" or "40.49 ft". `centimetres`: from the zero point.
QString cableLengthText(int centimetres, eUnitofMeasure unit);

// "1234 cnt"; `counts`: of the raw encoder, from the zero point.
QString rawCountText(int counts);

// What stands for a length that is not known on the screen and in pictures.
inline const QString kUnknownLength = QStringLiteral("-!-");

// What is burnt into stills and films: the length as `shown` on the screen, unless the last poll failed
// (`meterCount` is negative).
QString burntInLength(int meterCount, const QString &shown);

// True when the camera has left the place of a damage note: more than 9 cm to either side.
bool hasLeftDamageNote(int meterCount, int notedAt);
