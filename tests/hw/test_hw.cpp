#include "testunit.h"

#include "hw/hardware.h"
#include "hw/i2c.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString kDecoder = u"/sys/devices/soc0/soc.1/2100000.aips-bus/21a8000.i2c/i2c-2/2-0020/adv7180_reg"_s;

}

class TestHw : public QObject
{
    Q_OBJECT

private slots:
    void aMissingBoardAnswersWithItsCodes()
    {
        const TestUnit folder({u"/dev"_s});
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiFWVersion), -1);
        QCOMPARE(i2c_write(kEncoderBoardAddress, twiMeterCountAlgorithm, 1), -1);
        folder.put(u"/dev/i2c-4"_s, "\x01\x61"); // answers for two registers alone
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiFWVersion), 0x61);
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiCable60Meter), -128);
        QFile::remove(unit::path(u"/dev/i2c-4"_s));
        QDir().mkpath(unit::path(u"/dev/i2c-4"_s)); // opens, but is no bus
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiFWVersion), -1);
    }

    void theOtherNameOfTheBusComesFirst()
    {
        const TestUnit folder({u"/dev/i2c"_s});
        folder.put(u"/dev/i2c/4"_s, QByteArray(16, '\x09'));
        char name[20];
        const int fd = open_i2c_dev(kEncoderBoardBus, name, sizeof name, 1);
        QVERIFY(fd >= 0);
        QCOMPARE(name, "/dev/i2c/4");
        QCOMPARE(i2c_smbus_write_byte_data(fd, 6, 2), 0);
        QCOMPARE(i2c_smbus_read_byte_data(fd, 6), 2);
        ::close(fd);
    }

    void theDecoderIsReadInAnyBase()
    {
        const TestUnit folder({kDecoder.section(u'/', 0, -2)});
        QCOMPARE(int(getADV7180Status()), 0);
        folder.put(kDecoder, "0x45\n");
        QCOMPARE(int(getADV7180Status()), 0x45);
        folder.put(kDecoder, "64\n");
        QCOMPARE(int(getADV7180Status()), 64);
        QCOMPARE(folder.content(kDecoder), QByteArray("64\n"));
    }

    void aUsbHostIsTheTwentyNinthCharacter()
    {
        const TestUnit folder({u"/sys/class/extcon/ci_hdrc.0"_s});
        const QString state = u"/sys/class/extcon/ci_hdrc.0/state"_s;
        QVERIFY(!USBHostDeviceAttached());
        folder.put(state, QByteArray(28, '1'));
        QVERIFY(!USBHostDeviceAttached());
        folder.put(state, QByteArray(28, '0') + "1\n");
        QVERIFY(USBHostDeviceAttached());
        folder.put(state, QByteArray(28, '1') + "0\n");
        QVERIFY(!USBHostDeviceAttached());
    }

    void theBacklightTakesANegativeValueToo()
    {
        const TestUnit folder({u"/sys/class/backlight/backlight_lcdgrp.26"_s});
        const QString file = u"/sys/class/backlight/backlight_lcdgrp.26/brightness"_s;
        SetLCDBrightness(7);
        QVERIFY(!QFile::exists(unit::path(file)));
        folder.put(file, "100\n");
        SetLCDBrightness(char(-3));
        QCOMPARE(folder.content(file), QByteArray("-3"));
    }
};

QTEST_GUILESS_MAIN(TestHw)
#include "test_hw.moc"
