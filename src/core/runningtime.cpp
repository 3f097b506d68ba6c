#include "core/runningtime.h"

QString runningTimeText(qint64 milliseconds)
{
    const auto part = [milliseconds](qint64 unit) {
        return QStringLiteral("%1").arg(milliseconds / unit % 60, 2, 10, QLatin1Char('0'));
    };
    return QStringLiteral("%1:%2:%3").arg(part(3600000), part(60000), part(1000));
}
