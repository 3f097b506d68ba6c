// The embedded pictures, by file name.
#pragma once

#include <QString>

// The resource path of a picture: graphic("btn_stop.png").
inline QString graphic(const char *name)
{
    return QStringLiteral(":/MyGraphicResources/graphics/") + QLatin1String(name);
}
