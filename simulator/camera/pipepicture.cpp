#include "pipepicture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace pipecam {

namespace {

constexpr int kMargin = 8; // of the tables around the picture, for the sway
constexpr int kTableWidth = kWidth + 2 * kMargin;
constexpr int kTableHeight = kHeight + 2 * kMargin;
constexpr double kFocus = 340; // pixels
constexpr double kLow = 26;    // the camera runs that many millimetres below the pipe's axis

constexpr int kRings = 608; // by radius in pixels
constexpr int kInnermost = 7;
constexpr int kColourRings = kRings / 2;

constexpr int kRippleSize = 256; // of the ripple pattern, both ways

// One picture point of the water.
struct WaterPoint
{
    uint32_t mirrored;  // index of the ring point that it mirrors
    uint16_t along;     // place on the ripple pattern
    uint8_t across;     // place on the ripple pattern
    uint8_t swing;      // how strongly the ripples move it
    uint8_t reflection; // how much it mirrors, of 255
    uint16_t ring;
};

// A run of water on one line of the tables.
struct WaterRun
{
    int y;
    int x;
    int count;
    size_t first;
};

double ringDepth(double ring)
{
    return kFocus * kRadius / std::max(ring, 1.);
}

struct Hit
{
    double depth;
    double x;
    double y;
};

// From a point in the pipe along (dx, dy, 1) to the wall.
Hit wallFrom(double x, double y, double dx, double dy)
{
    const double a = std::max(dx * dx + dy * dy, 1e-9);
    const double b = x * dx + y * dy;
    const double c = x * x + y * y - kRadius * kRadius;
    const double depth = (-b + std::sqrt(std::max(0., b * b - a * c))) / a;
    return {depth, x + dx * depth, y + dy * depth};
}

int column(const Hit &hit)
{
    const double angle = std::atan2(hit.y, hit.x) / (2 * M_PI);
    return static_cast<int>(std::lround(angle * kColumns)) & (kColumns - 1);
}

int ring(double depth)
{
    return std::clamp(static_cast<int>(std::lround(kFocus * kRadius / std::max(depth, 1.))), 0, kRings - 1);
}

// What never changes: built once for the process, on the first start of a camera.
struct Scene
{
    Scene();

    Wall wall;
    Findings findings;
    std::vector<uint32_t> luma;   // for each point of the table, its place in the rings
    std::vector<uint32_t> colour; // the same for the colour planes
    std::vector<WaterPoint> water;
    std::vector<WaterRun> runs;
    std::vector<int8_t> ripples;

private:
    void aim(int x, int y);
    void addWater(int x, int y, double dx, double dy, double depth);
    void makeRipples();
};

const Scene &scene()
{
    // Never destroyed: a streaming thread may outlive the process's static objects.
    static const Scene &theScene = *new Scene;
    return theScene;
}

Scene::Scene() : luma(kTableWidth * kTableHeight), colour(kTableWidth / 2 * (kTableHeight / 2))
{
    for (int y = 0; y < kTableHeight; ++y) {
        for (int x = 0; x < kTableWidth; ++x)
            aim(x, y);
    }
    makeRipples();
}

void Scene::aim(int x, int y)
{
    const double dx = (x + 0.5 - kTableWidth / 2.) / kFocus;
    const double dy = (y + 0.5 - kTableHeight / 2.) / kFocus;
    const Hit hit = wallFrom(0, kLow, dx, dy);
    const int at = ring(hit.depth), around = column(hit);
    luma[static_cast<size_t>(y * kTableWidth + x)] = static_cast<uint32_t>(at * kColumns + around);
    const double surface = dy > 0 ? (kWater - kLow) / dy : 1e9;
    const bool wet = surface < hit.depth;
    if (wet)
        addWater(x, y, dx, dy, surface);
    if (x % 2 == 0 && y % 2 == 0) {
        // Behind the rings' colours lies one for the water of each ring.
        const int place =
            wet ? kColourRings * kColourColumns + ring(surface) / 2 : at / 2 * kColourColumns + around / 2;
        colour[static_cast<size_t>(y / 2 * (kTableWidth / 2) + x / 2)] = static_cast<uint32_t>(place);
    }
}

void Scene::addWater(int x, int y, double dx, double dy, double depth)
{
    const double across = dx * depth;
    const Hit mirrored = wallFrom(across, kWater, dx, -dy);
    const double steep = dy / std::sqrt(dx * dx + dy * dy + 1);
    WaterPoint point = {};
    // Ripples may lead two rings astray.
    const int at = std::clamp(ring(depth + mirrored.depth), 3, kRings - 4);
    point.mirrored = static_cast<uint32_t>(at * kColumns + column(mirrored));
    point.along = static_cast<uint16_t>(static_cast<int>(depth / 1.2) & 0xffff);
    point.across = static_cast<uint8_t>(static_cast<int>((across + 128) / 0.7) & 0xff);
    point.swing = static_cast<uint8_t>(std::clamp(255 * 190 / depth, 30., 255.));
    point.reflection = static_cast<uint8_t>(255 * std::min(0.9, 0.24 + 0.7 * std::pow(1 - steep, 2)));
    point.ring = static_cast<uint16_t>(ring(depth));
    if (runs.empty() || runs.back().y != y || runs.back().x + runs.back().count != x)
        runs.push_back({y, x, 0, water.size()});
    ++runs.back().count;
    water.push_back(point);
}

// A pattern of crossing waves that repeats both ways; its slopes are what the eye sees of the water.
void Scene::makeRipples()
{
    std::vector<double> height(kRippleSize * kRippleSize);
    Dice dice(21);
    double largest = 0;
    for (int wave = 0; wave < 26; ++wave) {
        const double along = std::floor(dice.between(2, 15)), across = std::floor(dice.between(-9, 10));
        const double size = 1 / std::pow(along * along + across * across, 0.45),
                     phase = dice.between(0, 6.28);
        for (int y = 0; y < kRippleSize; ++y) {
            for (int x = 0; x < kRippleSize; ++x) {
                const double angle = 2 * M_PI * (along * y + across * x) / kRippleSize + phase;
                height[static_cast<size_t>(y * kRippleSize + x)] += size * std::sin(angle);
            }
        }
    }
    for (const double value : height)
        largest = std::max(largest, std::abs(value));
    for (const double value : height)
        ripples.push_back(static_cast<int8_t>(127 * value / largest));
}

// How bright the LEDs around the lens light a ring of the wall: less with the distance, and less again right
// beside the camera, where their cone has not yet opened.
double brightness(double depth, double light)
{
    constexpr double kAmbient = 0.62;
    constexpr double kLeds = 2.5;
    const double far = 1 / (1 + std::pow(depth / 280, 1.9));
    const double near = 0.6 + 0.4 * std::clamp((depth - 70) / 130, 0., 1.);
    return (kAmbient + kLeds * std::pow(light, 0.9)) * far * near;
}

// A camera's soft shoulder: twice the light is less than twice the signal.
double exposed(double amount)
{
    return 1.55 * (1 - std::exp(-amount / 1.25));
}

} // namespace

Picture::Picture()
    : m_luma(kRings * kColumns, 16), m_u(kColourRings * (kColourColumns + 1), 128), m_v(m_u.size(), 128),
      m_ringLight(kRings)
{
    scene();
}

// Lights the rings anew; nothing to do while the cable stands.
void Picture::prepare(double position, double light)
{
    if (std::abs(position - m_position) < 0.02 && std::abs(light - m_light) < 0.001)
        return;
    m_position = position;
    m_light = light;
    Row row = {};
    for (int r = 0; r < kRings; ++r) {
        const double depth = ringDepth(r), length = depth / std::max(r, 1);
        const double amount = r < kInnermost ? 0 : exposed(brightness(depth, light));
        const int gain = static_cast<int>(amount * 256);
        m_ringLight[static_cast<size_t>(r)] = std::min(255, gain);
        if (r < kInnermost)
            continue;
        scene().wall.sample(position + depth - length / 2, length, row);
        scene().findings.apply(position + depth - length / 2, length, row);
        uint8_t *out = &m_luma[static_cast<size_t>(r) * kColumns];
        for (size_t a = 0; a < kColumns; ++a)
            out[a] = static_cast<uint8_t>(std::min(235, 16 + ((row.luma[a] * gain) >> 8)));
        if (r % 2 != 0)
            continue;
        const auto colour = static_cast<size_t>(r / 2);
        const int tint = std::min(gain, 300);
        for (size_t a = 0; a < kColourColumns; ++a) {
            m_u[colour * kColourColumns + a] = static_cast<uint8_t>(128 + row.u[a] * tint / 256);
            m_v[colour * kColourColumns + a] = static_cast<uint8_t>(128 + row.v[a] * tint / 256);
        }
        m_u[kColourRings * kColourColumns + colour] = static_cast<uint8_t>(128 - 11 * tint / 256);
        m_v[kColourRings * kColourColumns + colour] = static_cast<uint8_t>(128 + 4 * tint / 256);
    }
}

void Picture::draw(const Canvas &canvas, double position, double light, double seconds, double sway)
{
    prepare(position, light);
    const int shiftX =
        static_cast<int>(std::lround(sway * (3.4 * std::sin(1.9 * seconds) + 2.2 * std::sin(4.3 * seconds))));
    const int shiftY = static_cast<int>(
        std::lround(sway * (2.2 * std::sin(2.7 * seconds + 1) + 1.6 * std::sin(5.1 * seconds))));
    const Scene &theScene = scene();
    for (int y = 0; y < kHeight; ++y) {
        const uint32_t *table =
            &theScene.luma[static_cast<size_t>((y + kMargin + shiftY) * kTableWidth + kMargin + shiftX)];
        uint8_t *line = canvas.y + static_cast<ptrdiff_t>(y) * canvas.strideY;
        for (int x = 0; x < kWidth; ++x)
            line[x] = m_luma[table[x]];
    }
    for (int y = 0; y < kHeight / 2; ++y) {
        const int row = y + (kMargin + shiftY) / 2, first = (kMargin + shiftX) / 2;
        const uint32_t *table = &theScene.colour[static_cast<size_t>(row * (kTableWidth / 2) + first)];
        uint8_t *lineU = canvas.u + static_cast<ptrdiff_t>(y) * canvas.strideU;
        uint8_t *lineV = canvas.v + static_cast<ptrdiff_t>(y) * canvas.strideV;
        for (int x = 0; x < kWidth / 2; ++x) {
            lineU[x] = m_u[table[x]];
            lineV[x] = m_v[table[x]];
        }
    }
    drawWater(canvas, shiftX, shiftY, seconds);
}

// Two layers of ripples run down the pipe at their own pace. They bend what the surface mirrors, and a slope
// that faces the LEDs glints.
void Picture::drawWater(const Canvas &canvas, int shiftX, int shiftY, double seconds) const
{
    const Scene &theScene = scene();
    const int travelled = static_cast<int>(m_position / 1.2);
    const int slow = travelled + static_cast<int>(seconds * 110);
    const int fast = travelled + static_cast<int>(seconds * 190);
    for (const WaterRun &run : theScene.runs) {
        const int y = run.y - kMargin - shiftY;
        if (y < 0 || y >= kHeight)
            continue;
        uint8_t *line = canvas.y + static_cast<ptrdiff_t>(y) * canvas.strideY;
        for (int i = 0; i < run.count; ++i) {
            const int x = run.x + i - kMargin - shiftX;
            if (x < 0 || x >= kWidth)
                continue;
            const WaterPoint &point = theScene.water[run.first + static_cast<size_t>(i)];
            const int one =
                theScene
                    .ripples[static_cast<size_t>(((point.along + slow) & 255) * kRippleSize + point.across)];
            const int two = theScene.ripples[static_cast<size_t>(
                ((point.along * 2 + fast) & 255) * kRippleSize + ((point.across + 77) & 255))];
            const int slope = (one + two) * point.swing >> 8;
            const int bend = slope * 3 / 4 + (slope >> 6) * kColumns;
            const int mirrored = m_luma[static_cast<size_t>(static_cast<int>(point.mirrored) + bend)];
            const int lit = m_ringLight[point.ring];
            const int body = 16 + ((30 + slope / 7) * lit >> 8);
            const int glint = std::max(0, slope - 92) * lit * 3 >> 8;
            line[x] = static_cast<uint8_t>(
                std::min(235, body + (std::max(0, mirrored - 16) * point.reflection >> 8) + glint));
        }
    }
}

void Picture::drawNoSignal(const Canvas &canvas)
{
    for (int y = 0; y < kHeight; ++y)
        std::memset(canvas.y + static_cast<ptrdiff_t>(y) * canvas.strideY, 38, kWidth);
    for (int y = 0; y < kHeight / 2; ++y) {
        std::memset(canvas.u + static_cast<ptrdiff_t>(y) * canvas.strideU, 172, kWidth / 2);
        std::memset(canvas.v + static_cast<ptrdiff_t>(y) * canvas.strideV, 116, kWidth / 2);
    }
}

} // namespace pipecam
