// The embedded pictures, by file name.
#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

// The resource path of a picture: graphic("btn_stop.png").
inline QString graphic(const char *name)
{
    return QStringLiteral(":/MyGraphicResources/graphics/") + QLatin1String(name);
}

// The picture on a button. Made of the pixmap, which is shared: an icon from the file would leave a copy of
// its own in the pixmap cache with every touch.
inline QIcon graphicIcon(const char *name)
{
    return QIcon(QPixmap(graphic(name)));
}
