// Texts of the wireless tools and of the access-point daemon's configuration, taken apart. No I/O.
#pragma once

#include <QByteArray>
#include <QString>

namespace wifi {

// The text after the first `key` up to the next line feed, or the end; empty without the key.
QString valueAfter(const QString &text, const QString &key);

// The same for a file of key=value lines: a line that begins with `key` goes before one that holds it further
// on ("ignore_broadcast_ssid=", a comment).
QString lineValue(const QString &text, const QString &key);

struct Addresses
{
    QString mac;
    QString ip;
};

// From the output of "ifconfig wlan0", in the classic form ("HWaddr ", "inet addr:") or today's ("ether ",
// "inet "). What is not told stays empty.
Addresses addressesOf(const QString &ifconfigOutput);

// The pass phrase of one unit: a fixed prefix and the last six characters of its MAC address. Empty while the
// address is not known: an access point refuses a pass phrase below eight characters.
QString devicePassPhrase(const QString &macAddress);

// The pass phrase that the system image writes, replaced at the first start.
inline const QString kFactoryPassPhrase = QStringLiteral("580294613");

} // namespace wifi
