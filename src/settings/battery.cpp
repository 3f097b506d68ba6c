#include "settings/battery.h"

#include <array>

namespace {

struct Threshold
{
    int above;
    eBatteryStatus status;
};

constexpr std::array kThresholds = {Threshold{912, eBattery100}, Threshold{849, eBattery80},
                                    Threshold{822, eBattery60}, Threshold{798, eBattery40},
                                    Threshold{649, eBattery20}};

constexpr std::array kOldThresholds = {Threshold{3680, eBattery100}, Threshold{3580, eBattery80},
                                       Threshold{3324, eBattery60}, Threshold{3240, eBattery40},
                                       Threshold{3080, eBattery20}};

constexpr int kCriticalTemperature = 83;
constexpr int kWarmTemperature = 193;

template <size_t N> eBatteryStatus gradeBy(const std::array<Threshold, N> &thresholds, qint16 reading)
{
    if (reading < 0)
        return eBatteryError;
    for (const Threshold &threshold : thresholds) {
        if (reading > threshold.above)
            return threshold.status;
    }
    return eBatteryEmpty;
}

} // namespace

namespace battery {

eBatteryStatus grade(qint16 reading, qint16 temperature, int externalSupply)
{
    if (temperature < 0)
        return eBatteryError;
    if (temperature <= kCriticalTemperature)
        return eBatteryCriticalTemperature;
    if (temperature <= kWarmTemperature)
        return eBatteryTemperatureWarning;
    if (externalSupply < 0)
        return eBatteryError;
    if (externalSupply == 1)
        return eBatteryExternalSupply;
    return gradeBy(kThresholds, reading);
}

eBatteryStatus gradeOldFirmware(qint16 reading)
{
    return gradeBy(kOldThresholds, reading);
}

} // namespace battery
