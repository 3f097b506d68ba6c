// Arithmetic of the digital zoom, steps 0 to 10. The crops of screen, still and pipeline differ on purpose.
#pragma once

#include <QRect>
#include <QString>

namespace zoom {

inline constexpr quint8 kLargestStep = 10;

// The centred cut-out of a 720 x 576 frame that the live label stretches to its full size.
QRect liveCrop(quint8 step);

// The cut-out of a frame that a still shows. Its margins are crossed over: x takes the vertical one, y the
// horizontal one.
QRect stillCutOut(quint8 step);

// The margins that the live pipeline cuts off: `topLeft` (from the width) goes to top and left, `bottomRight`
// (from the height) to bottom and right.
struct PipelineCrop
{
    int topLeft;
    int bottomRight;
};
PipelineCrop pipelineCrop(unsigned char step);

// "1.0x" to "2.0x": the figure on the screen, on its own scale.
QString label(quint8 step);

} // namespace zoom
