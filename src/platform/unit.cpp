#include "platform/unit.h"

#include <QDir>
#include <QFile>

namespace {
// Written by setRoot() at start (and by tests), read everywhere.
QString g_root;
} // namespace

QByteArray HostPath::encoded() const
{
    return QFile::encodeName(m_text);
}

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

HostPath path(const UnitPath &unitPath)
{
    return HostPath(g_root + unitPath.text());
}

UnitPath fromHost(const QString &hostPath)
{
    if (isReal())
        return UnitPath(hostPath);
    if (hostPath == g_root)
        return u"/"_unit;
    return hostPath.startsWith(g_root + QLatin1Char('/')) ? UnitPath(hostPath.mid(g_root.size()))
                                                          : UnitPath();
}

} // namespace unit
