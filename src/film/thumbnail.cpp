#include "film/thumbnail.h"

#include "film/firstframe.h"

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>

namespace {

constexpr QPoint kMarkCentre(64, 48);
constexpr int kFastScaling = 40; // below 50 the reader scales without smoothing

} // namespace

QImage pictureThumbnail(const QString &hostPath)
{
    QImageReader reader(hostPath);
    const QSize size = reader.size();
    if (size.isEmpty()) {
        const QImage picture = reader.read(); // a format that tells its size only when it is read
        return picture.isNull() ? QImage() : picture.scaledToWidth(kThumbnailWidth);
    }
    reader.setScaledSize(
        {kThumbnailWidth, qMax(1, qRound(double(kThumbnailWidth) * size.height() / size.width()))});
    reader.setQuality(kFastScaling);
    return reader.read();
}

QImage filmThumbnail(const QString &hostFilm, const QString &hostStored)
{
    const QFileInfo stored(hostStored);
    if (stored.exists() && stored.lastModified() >= QFileInfo(hostFilm).lastModified()) {
        if (const QImage picture = pictureThumbnail(hostStored); !picture.isNull())
            return picture;
    }
    const QImage frame = firstFrameOfFilm(hostFilm);
    return frame.isNull() ? QImage() : frame.scaledToWidth(kThumbnailWidth);
}

QImage withMark(const QImage &picture, const QImage &mark)
{
    // Painting wants a format that it knows well; a grey or 8-bit picture has none.
    QImage marked = picture.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&marked);
    painter.drawImage(kMarkCentre - QPoint(mark.width() / 2, mark.height() / 2), mark);
    return marked;
}
