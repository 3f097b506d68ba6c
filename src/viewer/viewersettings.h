// What the owner wrote into /etc/default/tubix4-viewer.
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QString>

namespace viewer {

inline const UnitPath kSettingsFile = u"/etc/default/tubix4-viewer"_unit;

struct Settings
{
    bool isOn = false;
    QString networkInterface = QStringLiteral("wlan0");
    quint16 firstPort = 80; // the first free one of these is taken
    quint16 lastPort = 80;
    QString wrongLine; // not understood: then nothing is to be served
};

// Lines of NAME=VALUE: VIEWER=on, INTERFACE=wlan0, PORT=80 or PORT=8080-8089. Empty lines and lines that
// begin with "#" do not count.
Settings parseSettings(const QByteArray &text);

// Those of this unit. Off when there is no such file.
Settings readSettings();

} // namespace viewer
