#include "app/cablelength.h"

#include <cstdlib>

namespace {

constexpr int kDamageNoteReach = 9; // centimetres
constexpr double kFeetOfMetre = 3.28084;

// Fixed point, two decimals, at least four characters.
QString length(double value, const QString &unitName)
{
    return QStringLiteral("%1 %2").arg(value, 4, 'f', 2, QLatin1Char('0')).arg(unitName);
}

} // namespace

QString cableLengthText(const _GlobalSystemSettings &settings)
{
    const double metres = (settings.MeterCount - settings.MeterOffset) / 100.0;
    if (settings.ReadRawEncoderValues)
        return QStringLiteral("%1 cnt").arg(metres * 100);
    return settings.UnitofMeasure == eFeet ? length(metres * kFeetOfMetre, QStringLiteral("ft"))
                                           : length(metres, QStringLiteral("m"));
}

QString burntInLength(const _GlobalSystemSettings &settings, const QString &shown)
{
    return settings.MeterCount < 0 ? kUnknownLength : shown;
}

bool hasLeftDamageNote(const _GlobalSystemSettings &settings)
{
    return std::abs(settings.MeterCount - settings.currDamageCatelogMeterCount) > kDamageNoteReach;
}
