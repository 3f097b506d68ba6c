#include "film/filmduration.h"

#include "platform/command.h"
#include "platform/unit.h"

#include <QStringList>

double durationInReport(const QString &report)
{
    constexpr int kWordAndBlank = 10;
    constexpr int kClockLength = 11; // 00:01:23.45
    const QString clock =
        report.mid(report.indexOf(QLatin1String("Duration:")) + kWordAndBlank, kClockLength);
    const QStringList parts = clock.split(QLatin1Char(':'));
    float seconds = 0;
    for (int i = 0; i < 3; ++i)
        seconds = seconds * 60 + (i < parts.size() ? parts[i].toFloat() : 0);
    return seconds > 0 ? double(seconds * 1e9f) : 0;
}

double filmDuration(const UnitPath &unitPath)
{
    for (const char *tool : {"avconv", "ffmpeg"}) {
        const command::Result result =
            command::run(QLatin1String(tool), {QStringLiteral("-i"), unit::path(unitPath)});
        if (result.started)
            return durationInReport(QString::fromUtf8(result.standardOutput + result.standardError));
    }
    return 0;
}
