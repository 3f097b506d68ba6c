// Battery grading from the encoder board's raw readings.
#pragma once

#include "settings/systemsettings.h"

namespace battery {

// Board firmware above this reports temperature and external supply as well, on another voltage scale.
inline constexpr int kLastFirmwareWithoutTemperature = 95;

// All three as read: negative means that the read failed. The temperature reading falls as the battery warms;
// `externalSupply` is 1 when one is present.
eBatteryStatus grade(qint16 reading, qint16 temperature, int externalSupply);

// The same for a board with old firmware, which knows the voltage alone.
eBatteryStatus gradeOldFirmware(qint16 reading);

} // namespace battery
