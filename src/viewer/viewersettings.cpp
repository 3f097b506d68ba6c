#include "viewer/viewersettings.h"

#include "platform/savefile.h"

#include <QList>

namespace {

constexpr qint64 kLargestFile = 65536;

bool setPorts(viewer::Settings &settings, const QString &value)
{
    bool firstIsNumber = false;
    bool lastIsNumber = false;
    settings.firstPort = value.section(QLatin1Char('-'), 0, 0).toUShort(&firstIsNumber);
    settings.lastPort = value.section(QLatin1Char('-'), -1).toUShort(&lastIsNumber);
    return firstIsNumber && lastIsNumber && settings.firstPort > 0 && settings.firstPort <= settings.lastPort;
}

bool set(viewer::Settings &settings, const QString &name, const QString &value)
{
    if (name == QLatin1String("VIEWER")) {
        settings.isOn = value == QLatin1String("on");
        return settings.isOn || value == QLatin1String("off");
    }
    if (name == QLatin1String("INTERFACE")) {
        settings.networkInterface = value;
        return !value.isEmpty();
    }
    return name == QLatin1String("PORT") && setPorts(settings, value);
}

} // namespace

namespace viewer {

Settings parseSettings(const QByteArray &text)
{
    Settings settings;
    for (const QByteArray &raw : text.split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0 || !set(settings, line.left(equals), line.mid(equals + 1)))
            settings.wrongLine = line;
    }
    return settings;
}

Settings readSettings()
{
    return parseSettings(savefile::read(kSettingsFile, kLargestFile).value_or(QByteArray()));
}

} // namespace viewer
