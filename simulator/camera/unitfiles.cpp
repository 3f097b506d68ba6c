#include "unitfiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Registers of the encoder board.
constexpr size_t kMeterCountHigh = 4;
constexpr size_t kMeterCountLow = 5;
constexpr size_t kEqualiserLock = 10;

// The brightest value of the LED drive, by the family of the camera head.
constexpr int kReelMaximum = 60;
constexpr int kMiniMaximum = 30;

} // namespace

std::string unitFolder(const std::string &device)
{
    const auto parent = [](const std::string &path) {
        const size_t slash = path.find_last_of('/');
        if (slash == std::string::npos)
            return std::string(path == "." ? ".." : ".");
        return slash == 0 ? std::string("/") : path.substr(0, slash);
    };
    return parent(parent(device));
}

WatchedFile::~WatchedFile()
{
    close();
}

void WatchedFile::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

bool WatchedFile::exists() const
{
    struct stat info = {};
    return ::stat(m_path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

size_t WatchedFile::read(char *bytes, size_t size)
{
    struct stat info = {};
    if (::stat(m_path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        close();
        return 0;
    }
    if (m_fd >= 0 && (info.st_dev != m_device || info.st_ino != m_inode))
        close();
    if (m_fd < 0) {
        m_fd = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        // Between the two calls the file may have been replaced: what counts is the one that is open.
        if (m_fd < 0 || ::fstat(m_fd, &info) != 0 || !S_ISREG(info.st_mode)) {
            close();
            return 0;
        }
        m_device = info.st_dev;
        m_inode = info.st_ino;
    }
    const ssize_t count = ::pread(m_fd, bytes, size, 0);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

UnitFiles::UnitFiles(const std::string &device)
    : m_camera(device), m_board(unitFolder(device) + "/dev/i2c-4"),
      m_led(unitFolder(device) + "/sys/class/backlight/extledcontrol.27/brightness"),
      m_decoder(unitFolder(device) +
                "/sys/devices/soc0/soc.1/2100000.aips-bus/21a8000.i2c/i2c-2/2-0020/adv7180_reg")
{
}

void UnitFiles::update()
{
    std::array<char, 15> registers = {};
    if (m_board.read(registers.data(), registers.size()) == registers.size()) {
        const auto value = [&](size_t number) { return static_cast<unsigned char>(registers[number]); };
        m_meterCount = value(kMeterCountHigh) * 256 + value(kMeterCountLow);
        m_equaliserLocked = value(kEqualiserLock) != 0;
    }
    // The application truncates an attribute before it writes: an empty one is about to be filled.
    std::array<char, 8> text = {};
    if (m_led.read(text.data(), text.size() - 1) > 0)
        m_brightness = std::atoi(text.data());
    text = {};
    if (m_decoder.read(text.data(), text.size() - 1) > 0)
        m_decoderLocked = (std::strtol(text.data(), nullptr, 0) & 1) != 0;
}

double UnitFiles::light() const
{
    const int maximum = m_equaliserLocked ? kReelMaximum : kMiniMaximum;
    return static_cast<double>(std::clamp(m_brightness, 0, maximum)) / maximum;
}
