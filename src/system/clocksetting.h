// Setting the unit's clock: how the figures of the dialogs step, and the commands that take the result.
#pragma once

#include <QDate>
#include <QString>

namespace clocksetting {

// `value` + `step`, beyond one end of the range the other end.
int wrapped(int value, int step, int lowest, int highest);

// The day one up or down within the shown month; a day that the month does not have comes round as well.
int dayAfter(int day, int step, int month, int year);

// The year one up or down; 1971 is the lowest.
int yearAfter(int year, int step);

// Sets the system clock with "date", then the hardware clock by it; waits for both. `format`: what date
// prints, empty for its own way. `dateTime`: "2015-06-30 14:05:09"; one that is no date is refused by date,
// and the hardware clock takes the system's time all the same. GUI thread.
void set(const QString &format, const QString &dateTime);

} // namespace clocksetting
