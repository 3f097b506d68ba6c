#include "pipewall.h"

#include <algorithm>
#include <cmath>

namespace pipecam {

namespace {

constexpr double kJointDistance = 1000; // millimetres
constexpr double kJointReach = 60;      // how far a joint changes the wall, to either side
constexpr int kProfileSteps = 4;        // of the running sum, a millimetre
constexpr double kProfileReach = 256;

float smoothStep(float low, float high, float x)
{
    const float t = std::clamp((x - low) / (high - low), 0.f, 1.f);
    return t * t * (3 - 2 * t);
}

float mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

// Smooth noise between -1 and 1 that closes around the pipe and repeats along it.
class Noise
{
public:
    Noise(int around, int along, uint32_t seed) : m_around(around), m_along(along)
    {
        Dice dice(seed);
        m_values.resize(static_cast<size_t>(around) * static_cast<size_t>(along));
        for (float &value : m_values)
            value = static_cast<float>(dice.between(-1, 1));
        const int span = kColumns / around;
        for (int x = 0; x < span; ++x)
            m_across.push_back(smoothStep(0, 1, static_cast<float>(x) / static_cast<float>(span)));
    }

    // Adds `gain` times row `y` of `rows` to `line`.
    void add(int y, int rows, float gain, std::array<float, kColumns> &line) const
    {
        const float position = static_cast<float>(y) * static_cast<float>(m_along) / static_cast<float>(rows);
        const int cell = static_cast<int>(position);
        const float t = smoothStep(0, 1, position - static_cast<float>(cell));
        const float *upper = &m_values[static_cast<size_t>(cell % m_along * m_around)];
        const float *lower = &m_values[static_cast<size_t>((cell + 1) % m_along * m_around)];
        float *out = line.data();
        for (int i = 0; i < m_around; ++i) {
            const int next = i + 1 == m_around ? 0 : i + 1;
            const float left = mix(upper[i], lower[i], t) * gain;
            const float right = mix(upper[next], lower[next], t) * gain;
            for (const float across : m_across)
                *out++ += mix(left, right, across);
        }
    }

private:
    int m_around;
    int m_along;
    std::vector<float> m_values;
    std::vector<float> m_across; // weights of the right neighbour between two values
};

// The noises that make up one point of the wall.
struct Noises
{
    float large;
    float middle;
    float small;
    float run;
    float chalk;
};

struct Texel
{
    float luma;
    float u;
    float v;
};

// `down`: -1 at the crown, 1 at the bottom.
Texel wallTexel(float down, const Noises &n, float grain)
{
    float luma = 152 + 24 * n.large + 15 * n.middle + 9 * n.small;
    luma += grain;
    luma -= 46 * smoothStep(1.0f, 1.5f, n.small + 0.3f * n.middle);
    float u = -8 - 2 * n.large, v = 3.5f + 2 * n.large;
    // Rust-brown runs down the sides.
    const float stain =
        0.75f * smoothStep(0.3f, 1.6f, n.run + 0.25f * n.middle) * smoothStep(-0.95f, 0.1f, down);
    luma *= 1 - 0.4f * stain;
    u = mix(u, -21, stain);
    v = mix(v, 15, stain);
    // Lime on the upper half.
    const float white = smoothStep(0.6f, 1.15f, n.chalk) * smoothStep(0.5f, -0.5f, down);
    luma = mix(luma, 200 + 12 * n.small, 0.6f * white);
    u = mix(u, -3, white);
    v = mix(v, 1, white);
    // Slime above the water, thicker towards it, and the dark line that the water leaves.
    const float slime = smoothStep(0.44f, 0.84f, down + 0.13f * n.middle + 0.16f * n.large);
    const float tone = 74 + 20 * n.middle + 14 * n.small + 8 * n.large;
    luma = mix(luma, tone, 0.86f * slime);
    u = mix(u, -13 - 4 * n.middle, slime);
    v = mix(v, 3 + 3 * n.middle, slime);
    luma *= 1 - 0.55f * smoothStep(0.8f, 0.86f, down + 0.015f * n.middle);
    return {std::clamp(luma, 8.f, 240.f), u, v};
}

// Brightness of the wall at `s` millimetres from the middle of a joint, 1 for the plain wall: the near edge
// turns away from the light, the gap is dark, the far edge catches the light.
float jointBrightness(double s)
{
    const auto x = static_cast<float>(s);
    float brightness = 1 - 0.2f * std::exp(-std::abs(x) / 16);
    brightness *= mix(1, 0.66f, smoothStep(-8, -2, x) * (1 - smoothStep(-2, -1, x)));
    brightness *= mix(1, 0.1f, smoothStep(-2.6f, -1.2f, x) * (1 - smoothStep(1.2f, 2.6f, x)));
    brightness *= mix(1, 1.38f, smoothStep(1.6f, 3, x) * (1 - smoothStep(4, 8, x)));
    return brightness;
}

} // namespace

uint32_t Dice::next()
{
    m_state ^= m_state << 13;
    m_state ^= m_state >> 17;
    m_state ^= m_state << 5;
    return m_state;
}

Wall::Wall()
{
    for (int level = 0; level < kLevels; ++level) {
        const auto rows = static_cast<size_t>(kTile >> level);
        m_levels[static_cast<size_t>(level)].luma.resize(rows * kColumns);
        m_levels[static_cast<size_t>(level)].u.resize(rows * kColourColumns);
        m_levels[static_cast<size_t>(level)].v.resize(rows * kColourColumns);
    }
    paint();
    for (int level = 1; level < kLevels; ++level)
        reduce(level);

    const int steps = static_cast<int>(2 * kProfileReach * kProfileSteps);
    m_profile.resize(static_cast<size_t>(steps) + 1);
    for (int i = 0; i < steps; ++i) {
        const double s = (i + 0.5) / kProfileSteps - kProfileReach;
        m_profile[static_cast<size_t>(i) + 1] = m_profile[static_cast<size_t>(i)] + jointBrightness(s);
    }
    std::array<float, kColumns> wobble = {};
    Noise(16, 1, 71).add(0, 1, 4, wobble);
    Noise(128, 1, 72).add(0, 1, 2, wobble);
    for (size_t a = 0; a < kColumns; ++a)
        m_wobble[a] = static_cast<int8_t>(wobble[a]);
}

void Wall::paint()
{
    const Noise broad(8, 8, 1), patches(32, 32, 2), pits(128, 128, 3), fine(512, 512, 4);
    const Noise runs(8, 128, 5), runsFine(16, 256, 10), runsBroad(8, 16, 6);
    const Noise lines(512, 4, 7), lime(16, 16, 8), grit(1024, 1024, 9);
    Level &top = m_levels[0];
    Dice dice(11);
    std::array<float, kColumns> depth = {}; // how far down a column lies, -1 at the crown to 1 at the bottom
    for (size_t i = 0; i < kColumns; ++i)
        depth[i] = static_cast<float>(std::sin(2 * M_PI * static_cast<double>(i) / kColumns));
    for (int y = 0; y < kTile; ++y) {
        std::array<float, kColumns> large = {}, middle = {}, small = {}, run = {}, chalk = {};
        broad.add(y, kTile, 1, large);
        patches.add(y, kTile, 1, middle);
        pits.add(y, kTile, 0.6f, middle);
        fine.add(y, kTile, 1, small);
        grit.add(y, kTile, 0.8f, small);
        lines.add(y, kTile, 0.5f, small);
        runs.add(y, kTile, 0.8f, run);
        runsFine.add(y, kTile, 0.5f, run);
        runsBroad.add(y, kTile, 0.8f, run);
        lime.add(y, kTile, 1, chalk);
        pits.add(y, kTile, 0.35f, chalk);
        for (int a = 0; a < kColumns; ++a) {
            const auto i = static_cast<size_t>(a);
            const Texel texel = wallTexel(depth[i], {large[i], middle[i], small[i], run[i], chalk[i]},
                                          static_cast<float>(dice.between(-6, 6)));
            top.luma[static_cast<size_t>(y) * kColumns + i] = static_cast<uint8_t>(texel.luma);
            if (y % 2 == 0 && a % 2 == 0) {
                const size_t at = static_cast<size_t>(y) * kColourColumns + i / 2;
                top.u[at] = top.u[at + kColourColumns] = static_cast<int8_t>(texel.u);
                top.v[at] = top.v[at + kColourColumns] = static_cast<int8_t>(texel.v);
            }
        }
    }
}

// Halves the rows. Around the pipe the number of columns stays, but from the third level on neighbours are
// mixed: the far rings are small circles on the picture.
void Wall::reduce(int level)
{
    const Level &from = m_levels[static_cast<size_t>(level) - 1];
    Level &to = m_levels[static_cast<size_t>(level)];
    const int reach = level < 3 ? 0 : 1 << (level / 2 - 1);
    for (int y = 0; y < kTile >> level; ++y) {
        const auto upper = static_cast<size_t>(2 * y) * kColumns, lower = upper + kColumns;
        for (int a = 0; a < kColumns; ++a) {
            int sum = 0;
            for (int shift = -reach; shift <= reach; ++shift) {
                const auto column = static_cast<size_t>((a + shift) & (kColumns - 1));
                sum += from.luma[upper + column] + from.luma[lower + column];
            }
            to.luma[static_cast<size_t>(y) * kColumns + static_cast<size_t>(a)] =
                static_cast<uint8_t>(sum / (2 * (2 * reach + 1)));
        }
        const auto colour = static_cast<size_t>(2 * y) * kColourColumns;
        for (size_t a = 0; a < kColourColumns; ++a) {
            const size_t at = static_cast<size_t>(y) * kColourColumns + a;
            to.u[at] = static_cast<int8_t>((from.u[colour + a] + from.u[colour + kColourColumns + a]) / 2);
            to.v[at] = static_cast<int8_t>((from.v[colour + a] + from.v[colour + kColourColumns + a]) / 2);
        }
    }
}

void Wall::sample(double from, double length, Row &row) const
{
    int level = 0;
    while (level + 1 < kLevels && length >= (2 << level))
        ++level;
    const Level &texture = m_levels[static_cast<size_t>(level)];
    const int rows = kTile >> level;
    const double position = (from + length / 2) / (1 << level) - 0.5;
    const double whole = std::floor(position);
    const int weight = static_cast<int>((position - whole) * 256);
    const int first = static_cast<int>(static_cast<int64_t>(whole) & (rows - 1));
    const int second = (first + 1) & (rows - 1);
    const uint8_t *a = &texture.luma[static_cast<size_t>(first) * kColumns];
    const uint8_t *b = &texture.luma[static_cast<size_t>(second) * kColumns];
    for (size_t i = 0; i < kColumns; ++i)
        row.luma[i] = static_cast<uint8_t>((a[i] * (256 - weight) + b[i] * weight) >> 8);
    const auto nearer = static_cast<size_t>(weight < 128 ? first : second) * kColourColumns;
    std::copy_n(&texture.u[nearer], kColourColumns, row.u.begin());
    std::copy_n(&texture.v[nearer], kColourColumns, row.v.begin());

    if (length > 2 * kJointReach)
        return; // so far away that a joint is lost in the dark
    const double joint = std::round((from + length / 2) / kJointDistance) * kJointDistance;
    if (joint > 0 && from < joint + kJointReach && from + length > joint - kJointReach)
        addJoint(joint, from, length, row);
}

void Wall::addJoint(double joint, double from, double length, Row &row) const
{
    const int start = static_cast<int>((from - joint + kProfileReach) * kProfileSteps);
    const int width = std::max(1, static_cast<int>(length * kProfileSteps));
    const float share = 1.f / static_cast<float>(width);
    // Every joint has its own edge.
    const auto turn = static_cast<size_t>(Dice(static_cast<uint32_t>(joint)).next() >> 8);
    for (size_t i = 0; i < kColumns; ++i) {
        const auto at = static_cast<size_t>(start + m_wobble[(i + turn) & (kColumns - 1)]);
        const float brightness = (m_profile[at + static_cast<size_t>(width)] - m_profile[at]) * share;
        row.luma[i] = static_cast<uint8_t>(std::min(250.f, static_cast<float>(row.luma[i]) * brightness));
    }
}

} // namespace pipecam
