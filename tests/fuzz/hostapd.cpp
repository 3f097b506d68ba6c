// The access point's configuration and what the wireless tools print: only the pass phrase is ever replaced.
#include "fuzz.h"
#include "settings/params.h"
#include "settings/wifi.h"

FUZZ(input)
{
    static const FuzzUnit unit({QStringLiteral("/etc"), QStringLiteral("/home/root/tubix4_app")});
    const UnitPath file = u"/etc/hostapd.conf"_unit;
    FuzzUnit::put(file, input);
    params &settings = *params::getInstance();
    settings.GetWIFIHotspotPW();
    const QString old = settings.getParams().WIFIHotSpotPW;
    settings.SetWIFIHotspotPW(old, QStringLiteral("TUBX-123456"));
    require(old.isEmpty()
                ? FuzzUnit::content(file) == input
                : FuzzUnit::content(file) == QByteArray(input).replace(old.toUtf8(), "TUBX-123456"));
    const QString text = QString::fromLocal8Bit(input);
    require(wifi::devicePassPhrase(wifi::addressesOf(text).mac).size() != 5);
    require(!wifi::lineValue(text, QStringLiteral("ssid=")).contains(QLatin1Char('\n')));
}
