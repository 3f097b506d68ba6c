// What an inspection finds in the pipe: cracks, roots, inlets, deposits, laid over the wall at their places.
#pragma once

#include "pipewall.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pipecam {

class Findings
{
public:
    Findings();
    // Lays what there is from `from`, `length` millimetres on, over `row`.
    void apply(double from, double length, Row &row) const;

private:
    // A drawing on the unrolled wall: `length` rows of a millimetre, `width` columns. Colour in every column.
    struct Drawing
    {
        Drawing(int drawingWidth, int drawingLength);
        // Paints one texel, `cover` 0 to 1 over what is there.
        void dab(int x, int y, double cover, double luma, double u, double v);
        // Paints a round spot with a soft edge.
        void spot(double x, double y, double radius, double cover, double luma, double u, double v);

        int width;
        int length;
        std::vector<uint8_t> cover, luma;
        std::vector<int8_t> u, v;
    };
    // Where it lies: millimetres from the start of the pipe's period and first column.
    struct Place
    {
        int from = 0;
        int column = 0;
        size_t drawing = 0;
    };

    static Drawing crackAlong(uint32_t seed, int length);
    static Drawing crackAround(uint32_t seed, int width);
    static Drawing roots(uint32_t seed);
    static Drawing inlet(uint32_t seed);
    static Drawing encrustation(uint32_t seed);
    static Drawing seepage(uint32_t seed);
    static Drawing hole(uint32_t seed);
    static void lay(const Drawing &drawing, double first, double length, int column, Row &target);

    std::vector<Drawing> m_drawings;
    std::vector<Place> m_places;
};

} // namespace pipecam
