#include "testunit.h"

#include "hw/hardware.h"
#include "hw/i2c.h"

#include <QTest>

#include <cstdarg>
#include <linux/i2c-dev.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kDecoder =
    u"/sys/devices/soc0/soc.1/2100000.aips-bus/21a8000.i2c/i2c-2/2-0020/adv7180_reg"_unit;

// What went to a bus that is no plain file, and what the slave answers.
struct Bus
{
    QList<QPair<unsigned long, unsigned long>> requests; // number, and the slave's address or the register
    unsigned char value = 0;
} g_bus;

} // namespace

// Stands in for the C library's: the linker takes this one first.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list list;
    va_start(list, request);
    const unsigned long argument = va_arg(list, unsigned long);
    va_end(list);
    if (QFile::symLinkTarget(u"/proc/self/fd/%1"_s.arg(fd)) != u"/dev/null"_s)
        return int(::syscall(SYS_ioctl, fd, request, argument));
    if (request == I2C_SMBUS) {
        const auto *transfer = reinterpret_cast<const i2c_smbus_ioctl_data *>(argument);
        g_bus.requests << qMakePair(request, static_cast<unsigned long>(transfer->command));
        if (transfer->read_write == I2C_SMBUS_READ)
            transfer->data->byte = g_bus.value;
        else
            g_bus.value = transfer->data->byte;
    } else {
        g_bus.requests << qMakePair(request, argument);
    }
    return 0;
}

class TestHw : public HeardTest
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
        QFile::remove(unit::path(u"/dev/i2c-4"_unit));
        QDir().mkpath(unit::path(u"/dev/i2c-4"_unit)); // opens, but is no bus
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiFWVersion), -1);
    }

    // The board itself, as far as the kernel: the numbers are its own.
    void aRealBusIsAskedInTheKernelsWords()
    {
        const TestUnit folder({u"/dev/i2c"_s}); // the bus's other name comes first
        QVERIFY(QFile::link(u"/dev/null"_s, unit::path(u"/dev/i2c/4"_unit)));
        QCOMPARE(i2c_write(kEncoderBoardAddress, twiMeterCountAlgorithm, 2), 0);
        QCOMPARE(i2c_read(kEncoderBoardAddress, twiFWVersion), 2);
        const decltype(g_bus.requests) expected = {
            {I2C_SLAVE, 0x67}, {I2C_SMBUS, 6}, {I2C_SLAVE, 0x67}, {I2C_SMBUS, 1}};
        QCOMPARE(g_bus.requests, expected);
    }

    void theDecoderIsReadInAnyBase()
    {
        const TestUnit folder({kDecoder.parent()});
        QCOMPARE(int(getADV7180Status()), 0);
        folder.put(kDecoder, "0x45\n");
        QCOMPARE(int(getADV7180Status()), 0x45);
        folder.put(kDecoder, "64\n");
        QCOMPARE(int(getADV7180Status()), 64);
        QCOMPARE(folder.content(kDecoder), QByteArray("64\n"));
    }
};

QTEST_GUILESS_MAIN(TestHw)
#include "test_hw.moc"
