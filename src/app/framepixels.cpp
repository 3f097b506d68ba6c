#include "app/framepixels.h"

#include <algorithm>
#include <cstring>

#include <libyuv.h>

FrameStretcher::FrameStretcher(const QImage &frame, const QRect &crop, QSize picture)
    : m_frame(frame), m_crop(crop), m_picture(picture), m_line(crop.width(), 1, QImage::Format_RGB32)
{
}

void FrameStretcher::expandRow(int row, uchar *to)
{
    const uchar *from = m_frame.constScanLine(row) + m_crop.x() * m_frame.depth() / 8;
    if (m_crop.width() == m_picture.width()) {
        libyuv::RGB565ToARGB(from, 0, to, 0, m_picture.width(), 1);
        return;
    }
    libyuv::RGB565ToARGB(from, 0, m_line.bits(), 0, m_crop.width(), 1);
    libyuv::ARGBScale(m_line.constBits(), 0, m_crop.width(), 1, to, 0, m_picture.width(), 1,
                      libyuv::kFilterNone);
}

void FrameStretcher::fill(QImage &rows, int first)
{
    int expandedRow = -1;
    for (int y = 0; y < rows.height(); ++y) {
        const int below = std::min(first + y, m_picture.height() - 1);
        const int row = m_crop.y() + (2 * below + 1) * m_crop.height() / (2 * m_picture.height());
        if (row == expandedRow)
            std::memcpy(rows.scanLine(y), rows.constScanLine(y - 1), size_t(rows.bytesPerLine()));
        else
            expandRow(row, rows.scanLine(y));
        expandedRow = row;
    }
}
