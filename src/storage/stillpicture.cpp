#include "storage/stillpicture.h"

#include "platform/savefile.h"

#include <QBuffer>
#include <QFont>
#include <QPainter>

namespace {

constexpr int kBandHeight = 24;

void draw(QPainter &painter, int pointSize, int x, int y, const QString &text)
{
    painter.setFont(QFont(QStringLiteral("Arial"), pointSize, QFont::Normal));
    painter.drawText(x, y, text);
}

} // namespace

namespace stillpicture {

QImage compose(const QImage &band, const QImage &frame, const QRect &cutOut, const Texts &texts)
{
    QImage picture(band.size(), QImage::Format_RGB16);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(picture.rect(), Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(0, 0, band);
    painter.drawImage(0, kBandHeight, frame.copy(cutOut).scaledToWidth(band.width(), Qt::FastTransformation));
    painter.setPen(QPen(Qt::white, 2));
    draw(painter, 12, 442, 18, texts.cableLength);
    draw(painter, 14, 2, 588, texts.damageNote);
    draw(painter, 12, 568, 18, texts.timeAndDate);
    return picture;
}

QImage underBand(const QImage &band, const QImage &frame)
{
    QImage picture(band.size(), QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.drawImage(0, 0, band);
    painter.drawImage(0, kBandHeight, frame);
    return picture;
}

bool save(const QImage &picture, const UnitPath &unitPath)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    return buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "JPG") &&
           savefile::write(unitPath, bytes);
}

} // namespace stillpicture
