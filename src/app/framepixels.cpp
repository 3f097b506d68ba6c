#include "app/framepixels.h"

#include <algorithm>
#include <cstring>

namespace {

// By way of void: a line of an image starts at a multiple of four bytes, which its type does not tell.
void *aligned(uchar *line)
{
    return line;
}

const void *aligned(const uchar *line)
{
    return line;
}

// Halves of 16 bits, of which the compiler works on twice as many at a time.
void expand(const quint16 *pixels, int count, quint32 *expanded)
{
    for (int i = 0; i < count; ++i) {
        const quint16 pixel = pixels[i];
        const auto alphaRed = quint16(0xff00 | (pixel >> 8 & 0xf8) | pixel >> 13);
        const auto greenBlue =
            quint16((pixel << 5 & 0xfc00) | (pixel >> 1 & 0x300) | (pixel << 3 & 0xf8) | (pixel >> 2 & 7));
        expanded[i] = quint32(alphaRed) << 16 | greenBlue;
    }
}

} // namespace

FrameStretcher::FrameStretcher(const QImage &frame, const QRect &crop, QSize picture)
    : m_frame(frame), m_crop(crop), m_picture(picture)
{
    if (crop.width() == picture.width())
        return;
    m_line.resize(size_t(crop.width()));
    m_columns.resize(size_t(picture.width()));
    for (int x = 0; x < picture.width(); ++x)
        m_columns[size_t(x)] = x * crop.width() / picture.width();
}

void FrameStretcher::fill(QImage &rows, int first)
{
    int expandedRow = -1;
    for (int y = 0; y < rows.height(); ++y) {
        auto *to = static_cast<quint32 *>(aligned(rows.scanLine(y)));
        const int row =
            m_crop.y() + std::min(first + y, m_picture.height() - 1) * m_crop.height() / m_picture.height();
        if (row == expandedRow) {
            std::memcpy(to, rows.constScanLine(y - 1), size_t(rows.bytesPerLine()));
            continue;
        }
        expandedRow = row;
        const auto *from = static_cast<const quint16 *>(aligned(m_frame.constScanLine(row))) + m_crop.x();
        if (m_columns.empty()) {
            expand(from, m_picture.width(), to);
            continue;
        }
        expand(from, m_crop.width(), m_line.data());
        for (size_t x = 0; x < m_columns.size(); ++x)
            to[x] = m_line[size_t(m_columns[x])];
    }
}
