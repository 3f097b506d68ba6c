#include "app/framepixels.h"

#include <algorithm>
#include <cstring>

#include <libyuv.h>

namespace {

constexpr int kFramePixelBytes = 2;
constexpr int kRowPixelBytes = 4;

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

void FrameStretcher::expandRow(int row, uchar *to)
{
    const uchar *from = m_frame.constScanLine(row) + m_crop.x() * kFramePixelBytes;
    if (m_columns.empty()) {
        libyuv::RGB565ToARGB(from, 0, to, 0, m_picture.width(), 1);
        return;
    }
    libyuv::RGB565ToARGB(from, 0, static_cast<uchar *>(static_cast<void *>(m_line.data())), 0, m_crop.width(),
                         1);
    for (const int column : m_columns) {
        std::memcpy(to, &m_line[size_t(column)], kRowPixelBytes);
        to += kRowPixelBytes;
    }
}

void FrameStretcher::fill(QImage &rows, int first)
{
    int expandedRow = -1;
    for (int y = 0; y < rows.height(); ++y) {
        const int row =
            m_crop.y() + std::min(first + y, m_picture.height() - 1) * m_crop.height() / m_picture.height();
        if (row == expandedRow)
            std::memcpy(rows.scanLine(y), rows.constScanLine(y - 1), size_t(rows.bytesPerLine()));
        else
            expandRow(row, rows.scanLine(y));
        expandedRow = row;
    }
}
