#include "media/zoom.h"

#include "media/gst_includes.h"

namespace {

constexpr double kFactorOfStep = 0.0555;

} // namespace

namespace zoom {

QRect liveCrop(quint8 step)
{
    const double scale = 1.0 - step * kFactorOfStep;
    const int width = static_cast<int>(scale * kFrameWidth);
    const int height = static_cast<int>(scale * kFrameHeight);
    return {(kFrameWidth - width) / 2, (kFrameHeight - height) / 2, width, height};
}

QRect stillCutOut(quint8 step)
{
    const QRect centred = liveCrop(step);
    return {centred.y() & 0xff, centred.x() & 0xff, centred.width(), centred.height()};
}

PipelineCrop pipelineCrop(unsigned char step)
{
    const float factor = static_cast<float>(1.0 - step * kFactorOfStep);
    const auto margin = [factor](int size) {
        const auto kept = static_cast<qint16>(static_cast<double>(factor) * size);
        return (size - kept) / 2 & 0xff;
    };
    return {margin(kFrameWidth), margin(kFrameHeight)};
}

QString label(quint8 step)
{
    return QString::asprintf("%01.1fx", step / 10.0 + 1);
}

} // namespace zoom
