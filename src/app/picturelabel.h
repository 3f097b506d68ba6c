// The label of the live picture: it paints a camera frame by itself, without a pixmap between.
#pragma once

#include <QImage>
#include <QLabel>

class PictureLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    // Shows the part `crop` of `frame`, stretched over the label. The frame's memory must stay.
    void showFrame(const QImage &frame, const QRect &crop);

    void setPixmap(const QPixmap &picture); // hides QLabel's: a picture replaces the frame

    QPixmap shownPicture() const; // what the label shows now, in its own size

signals:
    void framePainted(); // after every painted camera frame

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage m_frame; // null: the label shows its pixmap
    QRect m_crop;
};
