#include "core/cablelength.h"

#include <cstdlib>

namespace {

constexpr int kDamageNoteReach = 9; // centimetres
constexpr double kFeetOfMetre = 3.28084;

} // namespace

QString cableLengthText(int centimetres, eUnitofMeasure unit)
{
    const double metres = centimetres / 100.0;
    const bool isFeet = unit == eFeet;
    // Fixed point, two decimals, at least four characters.
    return QStringLiteral("%1 %2")
        .arg(isFeet ? metres * kFeetOfMetre : metres, 4, 'f', 2, QLatin1Char('0'))
        .arg(isFeet ? QStringLiteral("ft") : QStringLiteral("m"));
}

QString rawCountText(int counts)
{
    return QStringLiteral("%1 cnt").arg(counts);
}

QString burntInLength(int meterCount, const QString &shown)
{
    return meterCount < 0 ? kUnknownLength : shown;
}

bool hasLeftDamageNote(int meterCount, int notedAt)
{
    return std::abs(meterCount - notedAt) > kDamageNoteReach;
}
