// Where the unit's file system lies on this host. On a real unit the root is "/" and a path stays as it is;
// anywhere else the unit is a folder, and nothing outside that folder is ever named.
#pragma once

#include <QString>

namespace unit {

// Sets the root once, before anything else runs. `hostFolder`: "/" or an absolute folder. Any thread.
void setRoot(const QString &hostFolder);

// The root without a trailing slash: empty on a real unit.
QString root();

// True when the root is "/", so that commands and device nodes are the machine's own.
bool isReal();

// The host path of an absolute unit path ("/etc/hostapd.conf"). Only for the call that opens it:
// what is stored, compared and shown stays a unit path.
QString path(const QString &unitPath);

// The unit path of a host path that lies below the root; a path outside the root comes back empty.
QString fromHost(const QString &hostPath);

} // namespace unit
