// The wireless interface "wlan0": access point or client, its pass phrase and addresses.
#include "settings/params.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "settings/wifi.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.settings")

const UnitPath kHostapdConfiguration = u"/etc/hostapd.conf"_unit;
constexpr qint64 kLargestConfiguration = 1024LL * 1024;
const UnitPath kHotspotScript = u"/home/root/tubix4_app/hotspot.sh"_unit;
const UnitPath kInfraScript = u"/home/root/tubix4_app/infra.sh"_unit;

QString outputOf(const QString &program, const QStringList &arguments)
{
    return QString::fromLocal8Bit(command::run(program, arguments).standardOutput);
}

} // namespace

void params::GetWIFIHotspotPW()
{
    if (const auto content = savefile::read(kHostapdConfiguration, kLargestConfiguration)) {
        g_GlobalSystemSettings.WIFIHotSpotPW =
            wifi::lineValue(QString::fromUtf8(*content), QStringLiteral("wpa_passphrase="));
    }
}

void params::SetWIFIHotspotPW(const QString &oldText, const QString &newText)
{
    auto content = savefile::read(kHostapdConfiguration, kLargestConfiguration);
    if (!content || oldText.isEmpty() || newText.isEmpty())
        return; // an access point without a pass phrase would not come up
    if (newText.contains(QLatin1Char('\n')) || newText.contains(QLatin1Char('\r')))
        return; // would add a line of its own to the daemon's configuration
    content->replace(oldText.toUtf8(), newText.toUtf8());
    QString error;
    if (!savefile::writeThrough(kHostapdConfiguration, *content, &error))
        qCDebug(log) << error;
    GetWIFIHotspotPW();
}

void params::GetWifiStatus()
{
    const wifi::Addresses addresses =
        wifi::addressesOf(outputOf(QStringLiteral("ifconfig"), {QStringLiteral("wlan0")}));
    g_GlobalSystemSettings.WIFImacAddress = addresses.mac;
    g_GlobalSystemSettings.WIFIipAddr = addresses.ip;
    g_GlobalSystemSettings.WIFIConnectedSSID =
        wifi::valueAfter(outputOf(QStringLiteral("iw"), {QStringLiteral("wlan0"), QStringLiteral("link")}),
                         QStringLiteral("SSID: "));
    if (const auto content = savefile::read(kHostapdConfiguration, kLargestConfiguration)) {
        g_GlobalSystemSettings.WIFIHotSpotSSID =
            wifi::lineValue(QString::fromUtf8(*content), QStringLiteral("ssid="));
    }
}

void params::configureWifi()
{
    command::run(g_GlobalSystemSettings.bWIFIHotSpotActive ? kHotspotScript.text() : kInfraScript.text());
    GetWifiStatus();
}

void params::toggleWifiMode()
{
    g_GlobalSystemSettings.bWIFIHotSpotActive = !g_GlobalSystemSettings.bWIFIHotSpotActive;
    configureWifi();
    WriteGlobalSystemSettingsFile(false);
}
