#include "hw/i2c.h"

#include "platform/unit.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kAttempts = 3;

bool standsForBoard(int fd)
{
    struct stat info = {};
    return ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
}

int accessRegisterFile(int fd, char read_write, unsigned char command, int size, i2c_smbus_data *data)
{
    if (size != I2C_SMBUS_BYTE_DATA)
        return -EOPNOTSUPP;
    const ssize_t n = read_write == I2C_SMBUS_READ ? ::pread(fd, &data->byte, 1, command)
                                                   : ::pwrite(fd, &data->byte, 1, command);
    if (n == 1)
        return 0;
    return n < 0 ? -errno : -ENXIO;
}

// Selects the slave; 0 or the errno, after the message that service staff know: it names the register.
int selectSlave(int fd, int address, int reg)
{
    if (standsForBoard(fd) || ::ioctl(fd, I2C_SLAVE, static_cast<unsigned long>(address)) >= 0)
        return 0;
    const int reason = errno;
    std::fprintf(stderr, "Error: Could not set address to 0x%02x: %s\n", static_cast<unsigned>(reg),
                 qPrintable(qt_error_string(reason)));
    return reason;
}

// One register access: opens bus 4, selects the slave, tries `transfer` up to three times, closes.
// `slaveFailure` turns the errno of a failed selection into the caller's code.
template <typename SlaveFailure, typename Transfer>
int withBoard(int address, int reg, int lastFailure, SlaveFailure slaveFailure, Transfer transfer)
{
    char filename[20];
    const int fd = open_i2c_dev(kEncoderBoardBus, filename, sizeof filename, 0);
    if (fd < 0)
        return -1;
    int result = lastFailure;
    if (const int reason = selectSlave(fd, address, reg)) {
        result = slaveFailure(reason);
    } else {
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            if (const int answer = transfer(fd); answer >= 0) {
                result = answer;
                break;
            }
        }
    }
    ::close(fd);
    return result;
}

} // namespace

int open_i2c_dev(int i2cbus, char *filename, size_t size, int quiet)
{
    const auto tryOpen = [&](const char *pattern) {
        std::snprintf(filename, size, pattern, i2cbus);
        filename[size - 1] = '\0';
        return ::open(unit::path(UnitPath(QString::fromLatin1(filename))).encoded().constData(),
                      O_RDWR | O_CLOEXEC);
    };
    int file = tryOpen("/dev/i2c/%d");
    if (file < 0 && (errno == ENOENT || errno == ENOTDIR))
        file = tryOpen("/dev/i2c-%d");
    if (file < 0 && !quiet) {
        if (errno == ENOENT) {
            std::fprintf(stderr, "Error: Could not open file `/dev/i2c-%d' or `/dev/i2c/%d': %s\n", i2cbus,
                         i2cbus, qPrintable(qt_error_string(ENOENT)));
        } else {
            const int reason = errno;
            std::fprintf(stderr, "Error: Could not open file `%s': %s\n", filename,
                         qPrintable(qt_error_string(reason)));
            if (reason == EACCES)
                std::fprintf(stderr, "Run as root?\n");
        }
    }
    return file;
}

int i2c_smbus_access(int fd, char read_write, unsigned char command, int size, i2c_smbus_data *data)
{
    if (standsForBoard(fd))
        return accessRegisterFile(fd, read_write, command, size, data);
    i2c_smbus_ioctl_data request = {};
    request.read_write = static_cast<__u8>(read_write);
    request.command = command;
    request.size = static_cast<__u32>(size);
    request.data = data;
    const int result = ::ioctl(fd, I2C_SMBUS, &request);
    return result < 0 ? -errno : result;
}

int i2c_smbus_read_byte_data(int fd, unsigned char command)
{
    i2c_smbus_data data = {};
    const int result = i2c_smbus_access(fd, I2C_SMBUS_READ, command, I2C_SMBUS_BYTE_DATA, &data);
    return result < 0 ? result : data.byte;
}

int i2c_smbus_write_byte_data(int fd, unsigned char command, unsigned char value)
{
    i2c_smbus_data data = {};
    data.byte = value;
    return std::min(0, i2c_smbus_access(fd, I2C_SMBUS_WRITE, command, I2C_SMBUS_BYTE_DATA, &data));
}

int i2c_read(int address, int reg)
{
    return withBoard(
        address, reg, -128, [](int) { return -64; },
        [reg](int fd) { return i2c_smbus_read_byte_data(fd, static_cast<unsigned char>(reg)); });
}

short i2c_read_word(int address, int highByte, int lowByte)
{
    const int high = i2c_read(address, highByte);
    const int low = i2c_read(address, lowByte);
    return static_cast<short>(high * 256 | low);
}

int i2c_write(int address, int reg, int value)
{
    return withBoard(
        address, reg, -2, [](int reason) { return -reason; },
        [reg, value](int fd) {
            return i2c_smbus_write_byte_data(fd, static_cast<unsigned char>(reg),
                                             static_cast<unsigned char>(value));
        });
}
