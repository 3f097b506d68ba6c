#include "cameradials.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr CameraDials::Size kPal = {720, 576};

// The first word of a file; empty without one.
std::string word(WatchedFile &file)
{
    std::array<char, 32> text = {};
    const std::string line(text.data(), file.read(text.data(), text.size()));
    return line.substr(0, line.find_first_of(" \n"));
}

} // namespace

CameraDials::CameraDials(const std::string &device)
    : m_delay(unitFolder(device) + "/.simulator/camera_delay"),
      m_signal(unitFolder(device) + "/.simulator/camera_signal"),
      m_view(unitFolder(device) + "/.simulator/camera_view"),
      m_size(unitFolder(device) + "/.simulator/camera_size")
{
}

double CameraDials::delay()
{
    return std::atof(word(m_delay).c_str());
}

bool CameraDials::isSilent()
{
    return word(m_signal) == "silent";
}

bool CameraDials::isFrozen()
{
    return word(m_signal) == "frozen";
}

bool CameraDials::hasChart()
{
    return word(m_view) == "chart";
}

CameraDials::Size CameraDials::size()
{
    Size size = kPal;
    return std::sscanf(word(m_size).c_str(), "%dx%d", &size.width, &size.height) == 2 ? size : kPal;
}
