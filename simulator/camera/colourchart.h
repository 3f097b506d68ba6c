// A chart of flat colours, for judging what a picture path does to them.
#pragma once

#include "pipepicture.h"

#include <array>

namespace pipecam {

struct Patch
{
    const char *name;
    int red;
    int green;
    int blue;
};

// Row by row from the top left; the values are what a faithful path shows, 0 to 255.
inline constexpr std::array<Patch, 24> kPatches = {{
    {"black", 0, 0, 0},
    {"white", 255, 255, 255},
    {"grey 32", 32, 32, 32},
    {"grey 96", 96, 96, 96},
    {"grey 160", 160, 160, 160},
    {"grey 224", 224, 224, 224},
    {"red", 255, 0, 0},
    {"green", 0, 255, 0},
    {"blue", 0, 0, 255},
    {"cyan", 0, 255, 255},
    {"magenta", 255, 0, 255},
    {"yellow", 255, 255, 0},
    {"dark red", 128, 24, 24},
    {"dark green", 24, 96, 32},
    {"dark blue", 24, 32, 112},
    {"orange", 224, 128, 32},
    {"olive", 128, 128, 40},
    {"violet", 104, 64, 152},
    {"light skin", 232, 190, 172},
    {"skin", 196, 148, 124},
    {"dark skin", 112, 76, 60},
    {"rust", 148, 84, 44},
    {"concrete", 152, 148, 136},
    {"water", 84, 104, 100},
}};

inline constexpr int kPatchColumns = 6;
inline constexpr int kPatchWidth = kWidth / kPatchColumns;                                         // pixels
inline constexpr int kPatchHeight = kHeight / (static_cast<int>(kPatches.size()) / kPatchColumns); // pixels

// The middle of a patch on a PAL picture, pixels.
constexpr int patchX(int number)
{
    return number % kPatchColumns * kPatchWidth + kPatchWidth / 2;
}

constexpr int patchY(int number)
{
    return number / kPatchColumns * kPatchHeight + kPatchHeight / 2;
}

void drawChart(const Canvas &canvas);

} // namespace pipecam
