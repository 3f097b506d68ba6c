// Where the unit's file system lies on this host. On a real unit the root is "/" and a path stays as it is;
// anywhere else the unit is a folder, and nothing outside that folder is ever named. Hence two types: what
// takes the one does not compile with the other.
#pragma once

#include <QByteArray>
#include <QDebug>
#include <QString>

class HostPath;

// A path as the unit has it ("/etc/hostapd.conf"): what is stored, compared, shown and handed to its
// commands.
class UnitPath
{
public:
    UnitPath() = default;
    explicit UnitPath(QString text) : m_text(std::move(text)) {}
    UnitPath(const HostPath &) = delete;

    const QString &text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }
    QString name() const { return m_text.section(QLatin1Char('/'), -1); }
    UnitPath parent() const { return UnitPath(m_text.section(QLatin1Char('/'), 0, -2)); }
    bool isBelow(const UnitPath &folder) const { return m_text.startsWith(folder.m_text + QLatin1Char('/')); }

    friend UnitPath operator/(const UnitPath &folder, const QString &name)
    {
        return UnitPath(folder.m_text + QLatin1Char('/') + name);
    }
    friend bool operator==(const UnitPath &, const UnitPath &) = default;
    friend QDebug operator<<(QDebug debug, const UnitPath &path) { return debug << path.m_text; }

private:
    QString m_text;
};

inline UnitPath operator""_unit(const char16_t *text, size_t length)
{
    return UnitPath(QString::fromUtf16(text, qsizetype(length)));
}

namespace unit {
HostPath path(const UnitPath &unitPath);
}

// The same place as the host has it: for the call that opens it, which takes it as plain text. Only the
// functions below make one; a file in a folder comes by its name.
class HostPath
{
public:
    operator const QString &() const { return m_text; }
    QByteArray encoded() const; // for the kernel and for libraries
    friend HostPath operator/(const HostPath &folder, const QString &name)
    {
        return HostPath(folder.m_text + QLatin1Char('/') + name);
    }

private:
    friend HostPath unit::path(const UnitPath &unitPath);
    explicit HostPath(QString text) : m_text(std::move(text)) {}

    QString m_text;
};

namespace unit {

// Sets the root once, before anything else runs. `hostFolder`: "/" or an absolute folder. Any thread.
void setRoot(const QString &hostFolder);

// The root without a trailing slash: empty on a real unit.
QString root();

// True when the root is "/", so that commands and device nodes are the machine's own.
bool isReal();

// The unit path of a place below the root that a foreign library names; one outside comes back empty.
UnitPath fromHost(const QString &hostPath);

} // namespace unit
