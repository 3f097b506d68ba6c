// Camera frames as a 32-bit screen shows them. Any thread.
#pragma once

#include <QImage>
#include <QRect>

// Stretches a part of a 16-bit frame over a 32-bit picture, each pixel the nearest one; a few rows at a time,
// so that they are painted while they are in the cache. Several times as fast as QPainter, which has no
// direct way from 16 to 32 bits and spreads the work over threads. The frame has to outlive it.
class FrameStretcher
{
public:
    FrameStretcher(const QImage &frame, const QRect &crop, QSize picture);

    // The picture's rows from `first` on, into all of `rows` (RGB32, of the picture's width). Rows below the
    // picture repeat its last one.
    void fill(QImage &rows, int first);

private:
    void expandRow(int row, uchar *to); // a row of the frame to one of the picture

    const QImage &m_frame;
    QRect m_crop;
    QSize m_picture;
    QImage m_line; // of the cut-out
};
