// The inside of the pipe, unrolled: a sheet of kColumns around by millimetres along.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace pipecam {

// Around the pipe: column 0 is the right-hand side, a quarter is the bottom, a half the left, three quarters
// the crown. Colour has half the columns.
inline constexpr int kColumns = 2048;
inline constexpr int kBottom = kColumns / 4;
inline constexpr int kColourColumns = kColumns / 2;

inline constexpr double kRadius = 125; // millimetres
inline constexpr double kWater = 108;  // the water level below the axis

struct Row
{
    std::array<uint8_t, kColumns> luma;
    std::array<int8_t, kColourColumns> u;
    std::array<int8_t, kColourColumns> v;
};

// A seeded generator: every unit shows the same pipe.
class Dice
{
public:
    explicit Dice(uint32_t seed) : m_state(seed * 2654435761u + 1) {}
    uint32_t next();
    double unit() { return next() / 4294967296.0; } // 0 to 1
    double between(double low, double high) { return low + (high - low) * unit(); }

private:
    uint32_t m_state;
};

// The material between the joints: a sheet that repeats along the pipe, at halving resolutions, so that what
// is far away is averaged and does not sparkle.
class Wall
{
public:
    Wall();
    // Fills `row` with the mean of the wall from `from`, `length` millimetres on, joints included.
    void sample(double from, double length, Row &row) const;

private:
    static constexpr int kLevels = 9;
    static constexpr int kTile = 2048; // rows of the finest level, one a millimetre

    struct Level
    {
        std::vector<uint8_t> luma;
        std::vector<int8_t> u;
        std::vector<int8_t> v;
    };

    void paint();
    void reduce(int level);
    void addJoint(double joint, double from, double length, Row &row) const;

    std::array<Level, kLevels> m_levels;
    std::vector<float> m_profile;               // running sum of a joint's brightness along the pipe
    std::array<int8_t, kColumns> m_wobble = {}; // of a joint's edge, in quarters of a millimetre
};

} // namespace pipecam
