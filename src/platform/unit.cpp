#include "platform/unit.h"

#include <QDir>

namespace {
// Written by setRoot() at start (and by tests), read everywhere.
QString g_root;
} // namespace

namespace unit {

void setRoot(const QString &hostFolder)
{
    const QString clean = QDir::cleanPath(hostFolder);
    g_root = clean == QLatin1String("/") ? QString() : clean;
}

QString root()
{
    return g_root;
}

bool isReal()
{
    return g_root.isEmpty();
}

QString path(const QString &unitPath)
{
    return g_root + unitPath;
}

QString fromHost(const QString &hostPath)
{
    if (isReal())
        return hostPath;
    if (hostPath == g_root)
        return QStringLiteral("/");
    return hostPath.startsWith(g_root + QLatin1Char('/')) ? hostPath.mid(g_root.size()) : QString();
}

} // namespace unit
