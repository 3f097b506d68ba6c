// The picture that the camera sees in the pipe: perspective, light, water.
#pragma once

#include "pipefindings.h"
#include "pipewall.h"

#include <cstdint>
#include <vector>

namespace pipecam {

inline constexpr int kWidth = 720;
inline constexpr int kHeight = 576;

// Where a picture goes: planes of Y, U and V, the latter two at half the size, with their line strides in
// bytes.
struct Canvas
{
    uint8_t *y;
    uint8_t *u;
    uint8_t *v;
    int strideY;
    int strideU;
    int strideV;
};

class Picture
{
public:
    Picture();

    // Draws the pipe as it looks `position` millimetres from its start, lit by `light` (0 to 1) of the LEDs.
    // `seconds` moves the water, `sway` (0 to 1) is how much the cable shakes the camera.
    void draw(const Canvas &canvas, double position, double light, double seconds, double sway);

    // What the video decoder delivers without a camera.
    static void drawNoSignal(const Canvas &canvas);

private:
    void prepare(double position, double light);
    void drawWater(const Canvas &canvas, int shiftX, int shiftY, double seconds) const;

    // The rings of wall in front of the camera, lit: what the perspective tables point into. Row r of luma is
    // the ring that has a radius of r pixels on the picture.
    std::vector<uint8_t> m_luma;
    std::vector<uint8_t> m_u;
    std::vector<uint8_t> m_v;
    std::vector<int> m_ringLight; // of the water in that ring, 0 to 255
    double m_position = -1;
    double m_light = -1;
};

} // namespace pipecam
