#include "app/picturelabel.h"

#include "app/framepixels.h"

#include <QPainter>

namespace {

constexpr int kRowsAtOnce = 8; // 23 KB: they stay in the nearest cache

} // namespace

void PictureLabel::showFrame(const QImage &frame, const QRect &crop)
{
    m_frame = frame;
    m_crop = crop;
    setAttribute(Qt::WA_OpaquePaintEvent); // the frame covers it all: no ground is painted under it
    update();
}

void PictureLabel::setPixmap(const QPixmap &picture)
{
    m_frame = QImage();
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    QLabel::setPixmap(picture);
    update();
}

QPixmap PictureLabel::shownPicture() const
{
    return m_frame.isNull() ? pixmap() : QPixmap::fromImage(m_frame.copy(m_crop));
}

void PictureLabel::paintEvent(QPaintEvent *event)
{
    if (m_frame.isNull()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    if (depth() == 16) { // the painter has a direct way
        painter.drawImage(rect(), m_frame, m_crop);
    } else {
        FrameStretcher stretcher(m_frame, m_crop, size());
        QImage rows(width(), kRowsAtOnce, QImage::Format_RGB32);
        for (int y = 0; y < height(); y += kRowsAtOnce) {
            stretcher.fill(rows, y);
            painter.drawImage(0, y, rows);
        }
    }
    painter.end();
    emit framePainted();
}
