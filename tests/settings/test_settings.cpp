#include "testunit.h"

#include "settings/battery.h"
#include "settings/params.h"
#include "settings/settingsfile.h"
#include "settings/wifi.h"

#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kFile = u"/home/root/tubix4_app/globlsystemsettings_default.xml"_unit;

QByteArray wrapped(const QByteArray &inside)
{
    return "<?xml version=\"1.0\"?><systemsettings><settings>" + inside + "</settings></systemsettings>";
}

} // namespace

class TestSettings : public HeardTest
{
    Q_OBJECT

private:
    static _GlobalSystemSettings settingsOf(const QByteArray &file)
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        folder.put(kFile, file);
        params::resetForTests();
        return params::getInstance()->getParams();
    }

private slots:
    void aFileIsReadAsFarAsItGoes()
    {
        struct Row
        {
            const char *name;
            QByteArray file;
            int backlight, language;
        };
        const QByteArray deep = QByteArray("<x>").repeated(5000) + QByteArray("</x>").repeated(5000);
        for (const auto &[name, file, backlight, language] : {
                 Row{"empty", "", 0, 0},
                 {"any order, unknown between, deep",
                  wrapped("<LanguageIdx>3</LanguageIdx>" + deep + "<LCDBacklightValue>5</LCDBacklightValue>"),
                  5, 3},
                 {"unknown beside settings",
                  "<systemsettings><old><LCDBacklightValue>9</LCDBacklightValue></old><settings>"
                  "<LCDBacklightValue>5</LCDBacklightValue></settings></systemsettings>",
                  5, 0},
                 {"element inside a number",
                  wrapped("<LCDBacklightValue>5<b>1</b></LCDBacklightValue><LanguageIdx>2</LanguageIdx>"), 5,
                  2},
                 {"not a number", wrapped("<LCDBacklightValue>x</LCDBacklightValue>"), 0, 0},
                 {"breaks off in a number",
                  wrapped("<LCDBacklightValue>5</LCDBacklightValue><LanguageIdx>12").left(112), 5, 0},
                 {"foreign root", "<a><settings><LanguageIdx>3</LanguageIdx></settings></a>", 0, 0},
                 {"document type declaration",
                  "<!DOCTYPE s [<!ENTITY a \"aaaa\">]><systemsettings><settings>"
                  "<LanguageIdx>3</LanguageIdx></settings></systemsettings>",
                  0, 0},
                 {"far too large", wrapped(QByteArray(100000000, ' ') + "<LanguageIdx>3</LanguageIdx>"), 0,
                  0},
             }) {
            const _GlobalSystemSettings settings = settingsOf(file);
            QVERIFY2(int(settings.LCDBacklightValue) == backlight, name);
            QVERIFY2(int(settings.LanguageIdx) == language, name);
        }
    }

    void whatIsWrittenIsReadBack()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        params::resetForTests();
        _GlobalSystemSettings &settings = params::getInstance()->getParams();
        settings.AutoShutdownIdx = -1;
        settings.bMicrophoneActive = 2;
        settings.LanguageIdx = eJapanese;
        params::getInstance()->WriteGlobalSystemSettingsFile(false);
        QVERIFY(folder.content(kFile).contains("\n        <bMicrophoneActive>1</bMicrophoneActive>\n"));
        params::resetForTests();
        QCOMPARE(int(settings.AutoShutdownIdx), 0); // whoever holds the record keeps it
        const _GlobalSystemSettings &again = params::getInstance()->getParams();
        QCOMPARE(int(again.AutoShutdownIdx), -1);
        QCOMPARE(again.keyboardMap_filename, u":/keyboardwidget/keyboard_jp.xml"_s);

        params::getInstance()->WriteGlobalSystemSettingsFile(true);
        QCOMPARE(int(again.LanguageIdx), int(eJapanese)); // the record is left alone
        params::resetForTests();
        QCOMPARE(int(params::getInstance()->getParams().LCDBacklightValue), 7);
    }

    void theStoredBacklightIsApplied()
    {
        const QString brightness = u"/sys/class/backlight/backlight_lcdgrp.26/brightness"_s;
        const TestUnit folder({u"/home/root/tubix4_app"_s, brightness.section(u'/', 0, -2)});
        folder.put(brightness, "6");
        params::resetForTests();
        params::getInstance()->applyBacklight(); // none is stored: the screen must not go dark
        QCOMPARE(folder.content(brightness), "6");
        folder.put(kFile, wrapped("<LCDBacklightValue>3</LCDBacklightValue>"));
        params::resetForTests();
        params::getInstance()->applyBacklight();
        QCOMPARE(folder.content(brightness), "3");
    }

    void batteryGrades()
    {
        for (const auto &[reading, temperature, supply, status] : {std::tuple(913, 194, 0, eBattery100),
                                                                   {912, 194, 0, eBattery80},
                                                                   {650, 194, 0, eBattery20},
                                                                   {649, 194, 0, eBatteryEmpty},
                                                                   {-128, 194, 0, eBatteryError},
                                                                   {0, 194, 1, eBatteryExternalSupply},
                                                                   {900, 194, -128, eBatteryError},
                                                                   {900, 193, 1, eBatteryTemperatureWarning},
                                                                   {900, 84, 0, eBatteryTemperatureWarning},
                                                                   {900, 83, 0, eBatteryCriticalTemperature},
                                                                   {900, -1, 0, eBatteryError}})
            QCOMPARE(int(battery::grade(qint16(reading), qint16(temperature), supply)), int(status));
        for (const auto &[reading, status] :
             {std::pair(3681, eBattery100), {3081, eBattery20}, {3080, eBatteryEmpty}, {-1, eBatteryError}})
            QCOMPARE(int(battery::gradeOldFirmware(qint16(reading))), int(status));
    }

    void theBoardTellsVersionAndHead()
    {
        const TestUnit folder;
        params::resetForTests();
        params *settings = params::getInstance();
        QCOMPARE(settings->getParams().EncoderBoardFWVersion, u"6.1"_s);
        const auto headAfter = [&](const QString &command) {
            folder.control({u"head"_s, command});
            settings->selectActiveCameraInterface();
            return settings->getParams().ImagerType;
        };
        QCOMPARE(headAfter(u"30"_s), e30meter);
        QCOMPARE(int(folder.content(u"/dev/i2c-4"_s).at(6)), 2);
        QCOMPARE(headAfter(u"mini"_s), eMinimodule_10m);
        QCOMPARE(int(folder.content(u"/dev/i2c-4"_s).at(6)), 0);
        QCOMPARE(headAfter(u"60"_s), e60meter);
        QCOMPARE(headAfter(u"none"_s), eNoImagerAttached);
        QCOMPARE(int(folder.content(u"/dev/i2c-4"_s).at(6)), 1); // left as it was
        folder.control({u"battery"_s, u"lost"_s});
        settings->selectActiveCameraInterface();
        QCOMPARE(settings->getParams().ImagerType, e60meter);
        settings->ReadBatteryPotential();
        QCOMPARE(settings->getParams().BatteryStatus, eBatteryError);
    }

    void bothFormsOfAddressesAreUnderstood()
    {
        const auto classic = wifi::addressesOf(u"wlan0  Link encap:Ethernet  HWaddr 00:11:22:33:44:55  \n"
                                               "  inet addr:192.168.1.1  Bcast:192.168.1.255\n"_s);
        const auto today =
            wifi::addressesOf(u"wlan0: flags=4163<UP>\n  inet 192.168.1.1  netmask 255.0.0.0\n"
                              "  inet6 fe80::1  prefixlen 64\n  ether 00:11:22:33:44:55  txq\n"_s);
        for (const auto &addresses : {classic, today}) {
            QCOMPARE(addresses.mac, u"00:11:22:33:44:55"_s);
            QCOMPARE(addresses.ip, u"192.168.1.1"_s);
        }
        QCOMPARE(wifi::addressesOf(u"no such device"_s).ip, QString());
        QCOMPARE(wifi::valueAfter(u"ssid=a\nwpa_passphrase=last line"_s, u"wpa_passphrase="_s),
                 u"last line"_s);
        QCOMPARE(wifi::lineValue(u"ignore_broadcast_ssid=0\n#ssid=old\nssid=a<b> c\r\nx=1"_s, u"ssid="_s),
                 u"a<b> c"_s);
        QCOMPARE(wifi::devicePassPhrase(QString()), QString());
    }

    void aNewPassPhraseChangesNothingElse()
    {
        const TestUnit folder({u"/etc"_s});
        const QByteArray before = "# key 580294613\nssid=caf\xe9\nwpa_passphrase=580294613\nx=1";
        folder.put(u"/etc/ap.conf"_s, before);
        QFile::link(u"ap.conf"_s, unit::path(u"/etc/hostapd.conf"_unit));
        ::chmod(unit::path(u"/etc/hostapd.conf"_unit).encoded().constData(), 0600);
        params::resetForTests();
        params *settings = params::getInstance();
        settings->SetWIFIHotspotPW(u"580294613"_s, u"a\nmac_acl=1"_s);
        QCOMPARE(folder.content(u"/etc/hostapd.conf"_s), before);
        settings->SetWIFIHotspotPW(QString(), u"everywhere"_s);
        settings->SetWIFIHotspotPW(u"580294613"_s, QString());
        QCOMPARE(folder.content(u"/etc/hostapd.conf"_s), before);
        settings->SetWIFIHotspotPW(u"580294613"_s, u"Ünit-1"_s);
        QCOMPARE(folder.content(u"/etc/hostapd.conf"_s),
                 QByteArray(before).replace("580294613", u"Ünit-1"_s.toUtf8()));
        QCOMPARE(settings->getParams().WIFIHotSpotPW, u"Ünit-1"_s);
        struct stat info = {};
        QCOMPARE(::stat(unit::path(u"/etc/hostapd.conf"_unit).encoded().constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, 0600u);
        QVERIFY(QFileInfo(unit::path(u"/etc/hostapd.conf"_unit)).isSymLink());
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
