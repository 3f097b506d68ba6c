#include "app/picturelabel.h"

#include <QPainter>

void PictureLabel::showFrame(const QImage &frame, const QRect &crop)
{
    m_frame = frame;
    m_crop = crop;
    update();
}

void PictureLabel::setPixmap(const QPixmap &picture)
{
    m_frame = QImage();
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
    painter.drawImage(rect(), m_frame, m_crop);
    painter.end();
    emit framePainted();
}
