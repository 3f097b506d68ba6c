#include "viewer/unitstate.h"

#include "platform/attribute.h"
#include "platform/command.h"
#include "platform/mounttable.h"
#include "platform/savefile.h"
#include "viewer/cardfiles.h"

#include <QXmlStreamReader>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <memory>

namespace {

const UnitPath kUnitSettings = u"/home/root/tubix4_app/globlsystemsettings_default.xml"_unit;
constexpr qint64 kLargestFile = 1024 * 1024;
const UnitPath kUsbState = u"/sys/class/extcon/ci_hdrc.0/state"_unit;
constexpr int kUsbHostIndex = 28; // the host cable's value in the board's extcon text

quint32 addressIn(const sockaddr *address)
{
    return ntohl(static_cast<const sockaddr_in *>(static_cast<const void *>(address))->sin_addr.s_addr);
}

bool usbHostIsAttached()
{
    const auto text = attribute::read(kUsbState, kUsbHostIndex + 1);
    return text && text->size() > kUsbHostIndex && text->at(kUsbHostIndex) == '1';
}

} // namespace

namespace viewer {

QString dotted(quint32 address)
{
    return QStringLiteral("%1.%2.%3.%4")
        .arg(address >> 24)
        .arg(address >> 16 & 255)
        .arg(address >> 8 & 255)
        .arg(address & 255);
}

Subnet subnetOf(const QString &networkInterface)
{
    ifaddrs *list = nullptr;
    if (::getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, ::freeifaddrs);
    for (const ifaddrs *each = list; each; each = each->ifa_next) {
        if (each->ifa_addr && each->ifa_netmask && each->ifa_addr->sa_family == AF_INET &&
            networkInterface == QLatin1String(each->ifa_name))
            return {addressIn(each->ifa_addr), addressIn(each->ifa_netmask)};
    }
    return {};
}

bool hotspotIsOn()
{
    QXmlStreamReader reader(savefile::read(kUnitSettings, kLargestFile).value_or(QByteArray()));
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement &&
            reader.name() == QLatin1String("bWIFIHotSpotActive"))
            return reader.readElementText().toShort() != 0 && !reader.hasError();
    }
    return false;
}

bool isInForeignNetwork(const QString &networkInterface)
{
    const auto link = command::run(QStringLiteral("iw"), {networkInterface, QStringLiteral("link")});
    return !link.started || link.standardOutput.contains("Connected to");
}

bool cardIsOurs()
{
    // The mount point stays when the card goes, an empty folder of the unit's own.
    return mounttable::shows(kCardDevice, kCardMountPoint) && !usbHostIsAttached();
}

} // namespace viewer
