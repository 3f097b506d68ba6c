// The camera frame on a 32-bit screen: every colour, and the edges of a cut-out.
#include "heard.h"

#include "app/framepixels.h"

#include <QPainter>
#include <QTest>

namespace {

// Each of the 65536 colours once; the colour tells the place.
QImage everyColour()
{
    QImage frame(256, 256, QImage::Format_RGB16);
    for (int y = 0; y < frame.height(); ++y) {
        auto *line = static_cast<quint16 *>(static_cast<void *>(frame.scanLine(y)));
        for (int x = 0; x < frame.width(); ++x)
            line[x] = static_cast<quint16>(y << 8 | x);
    }
    return frame;
}

// Put together from strips that do not divide the height.
QImage stretched(const QImage &frame, const QRect &crop)
{
    QImage picture(frame.size(), QImage::Format_RGB32);
    FrameStretcher stretcher(frame, crop, picture.size());
    QImage rows(picture.width(), 7, QImage::Format_RGB32);
    QPainter painter(&picture);
    for (int y = 0; y < picture.height(); y += rows.height()) {
        stretcher.fill(rows, y);
        painter.drawImage(0, y, rows);
    }
    return picture;
}

} // namespace

class TestFramePixels : public HeardTest
{
    Q_OBJECT

private slots:
    void coloursAreThePaintersOwn()
    {
        const QImage frame = everyColour();
        QCOMPARE(stretched(frame, frame.rect()), frame.convertToFormat(QImage::Format_RGB32));
    }

    void cutOutFillsTheTarget()
    {
        const QImage frame = everyColour();
        const QImage wide = frame.convertToFormat(QImage::Format_RGB32);
        for (const QRect &crop : {QRect(64, 96, 128, 64), QRect(78, 80, 99, 96), QRect(0, 100, 256, 57)}) {
            const QImage target = stretched(frame, crop);
            QCOMPARE(target.pixel(0, 0), wide.pixel(crop.topLeft()));
            QCOMPARE(target.pixel(255, 0), wide.pixel(crop.topRight()));
            QCOMPARE(target.pixel(0, 255), wide.pixel(crop.bottomLeft()));
            QCOMPARE(target.pixel(255, 255), wide.pixel(crop.bottomRight()));
            QCOMPARE(target.pixel(128, 128),
                     wide.pixel(crop.x() + crop.width() / 2, crop.y() + crop.height() / 2));
        }
    }
};

QTEST_APPLESS_MAIN(TestFramePixels)
#include "test_framepixels.moc"
