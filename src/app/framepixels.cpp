#include "app/framepixels.h"

#include <cstring>
#include <vector>

namespace {

void expand(const quint16 *pixels, int count, quint32 *expanded)
{
    for (int i = 0; i < count; ++i) {
        const quint32 pixel = pixels[i];
        const quint32 red = pixel >> 11;
        const quint32 green = pixel >> 5 & 0x3f;
        const quint32 blue = pixel & 0x1f;
        expanded[i] = 0xff000000 | (red << 3 | red >> 2) << 16 | (green << 2 | green >> 4) << 8 |
                      (blue << 3 | blue >> 2);
    }
}

} // namespace

void stretchFrame(const QImage &frame, const QRect &crop, QImage &target)
{
    const int width = target.width();
    const int height = target.height();
    std::vector<quint32> line(size_t(crop.width()));
    std::vector<int> column(static_cast<size_t>(width));
    for (int x = 0; x < width; ++x)
        column[size_t(x)] = x * crop.width() / width;
    int expandedRow = -1;
    for (int y = 0; y < height; ++y) {
        auto *to = reinterpret_cast<quint32 *>(target.scanLine(y));
        const int row = crop.y() + y * crop.height() / height;
        if (row == expandedRow) {
            std::memcpy(to, target.constScanLine(y - 1), size_t(width) * sizeof *to);
            continue;
        }
        expandedRow = row;
        const auto *from = reinterpret_cast<const quint16 *>(frame.constScanLine(row)) + crop.x();
        if (crop.width() == width) {
            expand(from, width, to);
            continue;
        }
        expand(from, crop.width(), line.data());
        for (int x = 0; x < width; ++x)
            to[x] = line[size_t(column[size_t(x)])];
    }
}
