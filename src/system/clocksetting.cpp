#include "system/clocksetting.h"

#include "platform/command.h"

namespace {

constexpr int kYearBelowLowest = 1970;

} // namespace

namespace clocksetting {

int wrapped(int value, int step, int lowest, int highest)
{
    const int next = value + step;
    if (next > highest)
        return lowest;
    return next < lowest ? highest : next;
}

int dayAfter(int day, int step, int month, int year)
{
    return wrapped(day, step, 1, QDate(year, month, 1).daysInMonth());
}

int yearAfter(int year, int step)
{
    const int next = year + step;
    return step > 0 || next > kYearBelowLowest ? next : year;
}

void set(const QString &format, const QString &dateTime)
{
    QStringList arguments;
    if (!format.isEmpty())
        arguments << format;
    // "--s": as the unit's service script knows the call.
    arguments << (format.isEmpty() ? QStringLiteral("--set=") : QStringLiteral("--s=")) + dateTime;
    command::run(QStringLiteral("date"), arguments);
    command::run(QStringLiteral("hwclock"), {QStringLiteral("--systohc")});
}

} // namespace clocksetting
