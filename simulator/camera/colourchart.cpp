#include "colourchart.h"

#include <cmath>
#include <cstring>

namespace pipecam {

namespace {

static_assert(kPatchWidth % 2 == 0 && kPatchHeight % 2 == 0, "no colour sample lies on two patches");

struct Sample
{
    uint8_t y;
    uint8_t u;
    uint8_t v;
};

// What a decoder of PAL signals delivers for a colour: BT.601, luma 16 to 235, colour 16 to 240.
Sample sample(const Patch &patch)
{
    const double luma = 0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue;
    const auto rounded = [](double value) { return static_cast<uint8_t>(std::lround(value)); };
    return {rounded(16 + luma * 219 / 255), rounded(128 + (patch.blue - luma) / 1.772 * 224 / 255),
            rounded(128 + (patch.red - luma) / 1.402 * 224 / 255)};
}

void fill(uint8_t *plane, int stride, int x, int y, int width, int height, uint8_t value)
{
    for (int line = y; line < y + height; ++line)
        std::memset(plane + static_cast<ptrdiff_t>(line) * stride + x, value, static_cast<size_t>(width));
}

} // namespace

void drawChart(const Canvas &canvas)
{
    for (int number = 0; number < static_cast<int>(kPatches.size()); ++number) {
        const Sample colour = sample(kPatches[static_cast<size_t>(number)]);
        const int x = number % kPatchColumns * kPatchWidth, y = number / kPatchColumns * kPatchHeight;
        fill(canvas.y, canvas.strideY, x, y, kPatchWidth, kPatchHeight, colour.y);
        fill(canvas.u, canvas.strideU, x / 2, y / 2, kPatchWidth / 2, kPatchHeight / 2, colour.u);
        fill(canvas.v, canvas.strideV, x / 2, y / 2, kPatchWidth / 2, kPatchHeight / 2, colour.v);
    }
}

} // namespace pipecam
