#include "pipefindings.h"

#include <algorithm>
#include <cmath>

namespace pipecam {

namespace {

constexpr int kPeriod = 24000; // millimetres, after which the findings come again

// One column is that many millimetres wide.
constexpr double kColumnWidth = 2 * M_PI * kRadius / kColumns;

// The crown's and the sides' columns.
constexpr int kRight = 0;
constexpr int kLeft = kColumns / 2;
constexpr int kCrown = kColumns * 3 / 4;

double soft(double low, double high, double x)
{
    const double t = std::clamp((x - low) / (high - low), 0., 1.);
    return t * t * (3 - 2 * t);
}

} // namespace

Findings::Drawing::Drawing(int drawingWidth, int drawingLength) : width(drawingWidth), length(drawingLength)
{
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(length);
    cover.resize(size);
    luma.resize(size);
    u.resize(size);
    v.resize(size);
}

void Findings::Drawing::dab(int x, int y, double amount, double newLuma, double newU, double newV)
{
    if (x < 0 || x >= width || y < 0 || y >= length || amount <= 0)
        return;
    const size_t at = static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    const double old = cover[at] / 255. * (1 - amount);
    const double all = old + amount;
    const auto blend = [&](double before, double after) { return (before * old + after * amount) / all; };
    luma[at] = static_cast<uint8_t>(std::clamp(blend(luma[at], newLuma), 0., 255.));
    u[at] = static_cast<int8_t>(blend(u[at], newU));
    v[at] = static_cast<int8_t>(blend(v[at], newV));
    cover[at] = static_cast<uint8_t>(std::min(1., all) * 255);
}

// `x` in columns, `y` and `radius` in millimetres.
void Findings::Drawing::spot(double x, double y, double radius, double amount, double newLuma, double newU,
                             double newV)
{
    const int reach = static_cast<int>(radius / kColumnWidth) + 2;
    const int rise = static_cast<int>(radius) + 2;
    for (int dy = -rise; dy <= rise; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            const int column = static_cast<int>(x) + dx, line = static_cast<int>(y) + dy;
            const double distance = std::hypot((column + 0.5 - x) * kColumnWidth, line + 0.5 - y);
            dab(column, line, amount * std::clamp(radius + 0.5 - distance, 0., 1.), newLuma, newU, newV);
        }
    }
}

Findings::Drawing Findings::crackAlong(uint32_t seed, int length)
{
    Dice dice(seed);
    Drawing drawing(420, length);
    const auto run = [&](double x, double y, double to, double lean, double width) {
        double drift = lean;
        const double start = y;
        for (; y < to; y += 0.5) {
            drift += dice.between(-0.35, 0.35) - (drift - lean) * 0.06;
            x += drift;
            const double end = std::min({1., (y - start) / 60 + 0.25, (to - y) / 90 + 0.1});
            const double radius = width * end * dice.between(0.75, 1.25);
            drawing.spot(x + 2.6 * radius / kColumnWidth, y, radius * 0.7, 0.22, 215, -4, 4);
            drawing.spot(x, y, radius, 0.9, 22, -3, 4);
        }
    };
    run(210, 4, length - 4, 0, 1.2);
    for (int branch = 0; branch < length / 160; ++branch) {
        const double from = dice.between(0.1, 0.8) * length;
        run(210 + dice.between(-14, 14), from, std::min(from + dice.between(60, 190), length - 4.),
            dice.between(-0.9, 0.9), 0.6);
    }
    return drawing;
}

Findings::Drawing Findings::crackAround(uint32_t seed, int width)
{
    Dice dice(seed);
    Drawing drawing(width, 120);
    const auto run = [&](double from, double to, double y, double lean, double thickness) {
        double drift = lean;
        for (double x = from; x < to; x += 0.7) {
            drift += dice.between(-0.16, 0.16) - (drift - lean) * 0.05 - (y - 60) * 0.0006;
            y += drift * 0.5;
            const double end = std::min({1., (x - from) / 120 + 0.2, (to - x) / 120 + 0.2});
            const double radius = thickness * end * dice.between(0.75, 1.25);
            drawing.spot(x, y + 2 * radius, radius * 0.8, 0.16, 205, -4, 4);
            drawing.spot(x, y, radius, 0.92, 20, -3, 4);
        }
    };
    run(4, width - 4, 60, 0, 0.85);
    run(width * 0.3, width * 0.5, 58, 0.25, 0.5);
    run(width * 0.6, width * 0.85, 62, -0.2, 0.55);
    return drawing;
}

// Strands that hang from a joint at the crown, each with its shadow.
Findings::Drawing Findings::roots(uint32_t seed)
{
    Dice dice(seed);
    Drawing drawing(1300, 320);
    for (int strand = 0; strand < 95; ++strand) {
        double x = 650 + dice.between(-330, 330) * dice.unit();
        double y = 44 + dice.between(-4, 4);
        double heading = dice.between(-0.9, 0.9) + (x < 650 ? -0.7 : 0.7) * dice.unit();
        const double bend = dice.between(-0.012, 0.012);
        double thickness = strand % 6 == 0 ? dice.between(2.6, 4.2) : dice.between(0.6, 1.7);
        const double shrink = thickness / dice.between(260, 620);
        const double tone = dice.between(85, 165);
        while (thickness > 0.4 && y > 6 && y < drawing.length - 6) {
            heading += bend + dice.between(-0.14, 0.14);
            heading = std::clamp(heading, -1.5, 1.5);
            x += std::sin(heading) / kColumnWidth * 0.8;
            y += std::cos(heading) * 0.8;
            // Thin out before the drawing ends.
            const double margin = std::min({x, drawing.width - x, 4 * (drawing.length - y)});
            thickness -= margin < 160 ? std::max(shrink, thickness * 0.03) : shrink;
            drawing.spot(x + 3 * thickness, y + 1.6 * thickness, thickness * 1.1, 0.28, 30, -4, 5);
            drawing.spot(x, y, thickness, 0.95, tone * 0.62, -12, 11);
            drawing.spot(x - 0.5 * thickness, y - 0.3 * thickness, thickness * 0.55, 0.8, tone, -14, 12);
        }
    }
    return drawing;
}

// The mouth of a side pipe of 100 mm, with a mortar rim and a run of slime below it.
Findings::Drawing Findings::inlet(uint32_t seed)
{
    Dice dice(seed);
    constexpr double kMouth = 48;
    Drawing drawing(760, 140);
    const double x0 = 300, y0 = 70;
    std::array<double, 48> edge = {};
    for (double &value : edge)
        value = dice.between(-1, 1);
    for (int y = 0; y < drawing.length; ++y) {
        for (int x = 0; x < drawing.width; ++x) {
            const double dx = (x + 0.5 - x0) * kColumnWidth, dy = y + 0.5 - y0;
            const double around = (std::atan2(dy, dx) / (2 * M_PI) + 0.5) * 48;
            const auto sector = static_cast<size_t>(around);
            const double part = soft(0, 1, around - std::floor(around));
            const double rough = edge[sector % 48] * (1 - part) + edge[(sector + 1) % 48] * part;
            const double distance = std::hypot(dx, dy) + rough;
            const double grain = dice.between(-9, 9);
            if (dx > 0) {
                const double run = soft(44, 22, std::abs(dy) + 4 * rough) * soft(230, 80, dx);
                drawing.dab(x, y, 0.7 * run, 66 + 7 * rough + grain, -13, 5);
            }
            // Mortar, lit where it faces the camera: on the far side of the mouth.
            const double facing = dy / std::max(1., std::hypot(dx, dy));
            const double ridge =
                soft(kMouth + 12, kMouth + 5, distance) * soft(kMouth - 1, kMouth + 4, distance);
            drawing.dab(x, y, 0.9 * soft(kMouth + 13 + 3 * rough, kMouth + 8, distance),
                        104 + 44 * facing + 38 * ridge + grain, -6, 3);
            // Inside, the side pipe's far wall catches the light and goes dark with its depth.
            const double lit = soft(-0.75, 1.15, dy / kMouth);
            drawing.dab(x, y, soft(kMouth + 1, kMouth - 1.5, distance),
                        8 + 105 * lit * lit + grain * lit * 0.6, -9 * lit, 4 * lit);
        }
    }
    return drawing;
}

// Lime that has grown over a joint: a crust of many small lumps, lit from the camera's side.
Findings::Drawing Findings::encrustation(uint32_t seed)
{
    Dice dice(seed);
    Drawing drawing(640, 220);
    for (int smear = 0; smear < 60; ++smear) {
        const double x = 320 + dice.between(-260, 260) * dice.unit();
        const double y = 82 + dice.between(-40, 80) * dice.unit();
        drawing.spot(x, y, dice.between(10, 24), 0.14, 176, -8, 5);
    }
    for (int lump = 0; lump < 4200; ++lump) {
        const double x = 320 + dice.between(-290, 290) * dice.unit() * (0.6 + 0.4 * dice.unit());
        const double y = 78 + dice.between(-58, 110) * dice.unit() * dice.unit();
        const double size = dice.between(0.7, 1.2 + 2.6 * dice.unit() * dice.unit());
        const double tone = dice.between(120, 200), warm = dice.between(-14, -5);
        drawing.spot(x, y + 0.6 * size, size, 0.3, tone * 0.5, warm, 6);
        drawing.spot(x, y, size, 0.6, tone * 0.9, warm, 5);
        drawing.spot(x, y - 0.4 * size, size * 0.5, 0.3, tone + 24, warm / 2, 3);
    }
    return drawing;
}

// Rust water that comes in at a joint and runs down the side; columns run down the pipe.
Findings::Drawing Findings::seepage(uint32_t seed)
{
    Dice dice(seed);
    Drawing drawing(520, 190);
    for (int trickle = 0; trickle < 70; ++trickle) {
        double y = 40 + dice.between(-34, 90) * dice.unit();
        const double begin = dice.between(10, 90), end = begin + dice.between(90, 400);
        const double width = dice.between(1, 8);
        const bool lime = trickle % 5 == 4;
        for (double x = begin; x < end; x += 1.5) {
            y += dice.between(-0.3, 0.3);
            const double fade = soft(end, begin + 0.3 * (end - begin), x) * soft(begin, begin + 40, x);
            drawing.spot(x, y, width * (0.4 + 0.6 * fade), 0.045 * fade, lime ? 190 : 84, lime ? -5 : -19,
                         lime ? 3 : 15);
        }
    }
    return drawing;
}

// A piece of the wall has broken out; the soil shows, and fine cracks run from the edge.
Findings::Drawing Findings::hole(uint32_t seed)
{
    Dice dice(seed);
    Drawing drawing(380, 170);
    const double x0 = 190, y0 = 85;
    for (int fine = 0; fine < 6; ++fine) {
        double heading = fine * M_PI / 3 + dice.between(-0.4, 0.4);
        double x = x0, y = y0, drift = 0;
        const int steps = static_cast<int>(dice.between(100, 155));
        for (int step = 0; step < steps; ++step) {
            drift += dice.between(-0.12, 0.12) - drift * 0.1;
            heading += drift;
            x += std::cos(heading) * 0.6 / kColumnWidth;
            y += std::sin(heading) * 0.6;
            drawing.spot(x, y, 0.8 * (steps - step) / steps + 0.25, 0.85, 24, -3, 4);
        }
    }
    std::array<double, 11> corner = {};
    for (double &value : corner)
        value = dice.between(0.72, 1.0);
    for (int y = 0; y < drawing.length; ++y) {
        for (int x = 0; x < drawing.width; ++x) {
            const double dx = (x + 0.5 - x0) * kColumnWidth, dy = (y + 0.5 - y0) * 1.25;
            const double around = (std::atan2(dy, dx) / (2 * M_PI) + 0.5) * 11;
            const auto sector = static_cast<size_t>(around);
            const double part = around - std::floor(around);
            const double radius = 56 * (corner[sector % 11] * (1 - part) + corner[(sector + 1) % 11] * part);
            const double distance = std::hypot(dx, dy);
            const double facing = dy / std::max(1., distance), grain = dice.between(-12, 12);
            drawing.dab(x, y, soft(radius + 1, radius - 1, distance), 112 + 70 * facing + grain, -6, 4);
            const double deep = soft(radius - 5, radius - 8, distance);
            drawing.dab(x, y, deep, 30 + 22 * facing * distance / radius + 0.8 * grain, -6, 4);
        }
    }
    for (int stone = 0; stone < 45; ++stone) {
        const double angle = dice.between(0, 2 * M_PI), out = 36 * dice.unit(), tone = dice.between(34, 74);
        const double x = x0 + std::cos(angle) * out / kColumnWidth, y = y0 + std::sin(angle) * out * 0.8;
        const double size = dice.between(1.2, 4.5);
        drawing.spot(x, y + 0.6 * size, size, 0.6, 14, -4, 3);
        drawing.spot(x, y, size, 0.8, tone, -7, 5);
    }
    return drawing;
}

Findings::Findings()
{
    const auto add = [this](Drawing drawing, std::initializer_list<Place> places) {
        m_drawings.push_back(std::move(drawing));
        for (Place place : places) {
            place.drawing = m_drawings.size() - 1;
            m_places.push_back(place);
        }
    };
    // Places: millimetres, then the column of the drawing's left edge. Joints lie at full metres.
    add(crackAlong(1, 780), {{260, kCrown + 60}, {14200, kLeft + 60}});
    add(seepage(2), {{1960, kCrown + 160}, {8960, kCrown + 210}, {18960, kCrown + 120}});
    add(inlet(3), {{2480, kCrown + 60}, {10330, kCrown + 60}, {20420, kCrown + 30}});
    add(roots(4), {{3956, kCrown - 700}, {15956, kCrown - 560}});
    add(crackAround(5, 1150), {{5340, kLeft + 30}, {17280, kCrown - 340}});
    add(encrustation(6), {{6930, kRight + 1700}, {12930, kLeft - 120}, {21930, kCrown - 250}});
    add(hole(7), {{11560, kCrown + 220}, {22600, kLeft + 120}});
    add(crackAlong(8, 1300), {{18100, kCrown - 330}, {7600, kRight + 1780}});
}

void Findings::apply(double from, double length, Row &row) const
{
    const double start = from - std::floor(from / kPeriod) * kPeriod;
    for (const Place &place : m_places) {
        const Drawing &drawing = m_drawings[place.drawing];
        double first = start - place.from;
        if (first + length < 0)
            first += kPeriod; // a drawing may reach over the end of the period
        if (first < drawing.length && first + length > 0)
            lay(drawing, first, length, place.column, row);
    }
}

// Lays the mean of `length` millimetres from `first` on over the target: of less than two, a blend of the two
// nearest rows, of many, a sample. What lies outside the drawing covers nothing.
void Findings::lay(const Drawing &drawing, double first, double length, int column, Row &target)
{
    constexpr int kMost = 5;
    std::array<const uint8_t *, kMost> covers = {};
    std::array<int, kMost> weights = {};
    size_t samples = 0;
    int outside = 0;
    const auto take = [&](double y, int weight) {
        const int line = static_cast<int>(std::floor(y));
        if (line < 0 || line >= drawing.length) {
            outside += weight;
            return;
        }
        covers[samples] = &drawing.cover[static_cast<size_t>(line) * static_cast<size_t>(drawing.width)];
        weights[samples++] = weight;
    };
    if (length < 2) {
        const double middle = first + length / 2 - 0.5;
        const int weight = static_cast<int>((middle - std::floor(middle)) * 256);
        take(middle, 256 - weight);
        take(middle + 1, weight);
    } else {
        const int count = std::min(kMost, static_cast<int>(length));
        for (int i = 0; i < count; ++i)
            take(first + length * (i + 0.5) / count, 256);
    }
    int total = outside;
    for (size_t i = 0; i < samples; ++i)
        total += weights[i];

    for (int x = 0; x < drawing.width; ++x) {
        int cover = 0, luma = 0, u = 0, v = 0;
        for (size_t i = 0; i < samples; ++i) {
            const uint8_t *texel = covers[i] + x;
            const int part = *texel * weights[i];
            if (part == 0)
                continue;
            const auto at = static_cast<size_t>(texel - drawing.cover.data());
            cover += part;
            luma += drawing.luma[at] * part;
            u += drawing.u[at] * part;
            v += drawing.v[at] * part;
        }
        if (cover == 0)
            continue;
        const int share = cover / total; // 0 to 255
        const auto a = static_cast<size_t>((column + x) & (kColumns - 1));
        const auto over = [&](int before, int after) { return before + (after - before) * share / 255; };
        target.luma[a] = static_cast<uint8_t>(over(target.luma[a], luma / cover));
        if (x % 2 == 0) {
            target.u[a / 2] = static_cast<int8_t>(over(target.u[a / 2], u / cover));
            target.v[a / 2] = static_cast<int8_t>(over(target.v[a / 2], v / cover));
        }
    }
}

} // namespace pipecam
