#include "film/thumbnail.h"

#include "film/firstframe.h"
#include "film/picturefile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QPainter>

namespace {

constexpr QPoint kMarkCentre(64, 48);

} // namespace

QImage filmThumbnail(const HostPath &film, const HostPath &storedFile)
{
    const QFileInfo stored(storedFile);
    if (stored.exists() && stored.lastModified() >= QFileInfo(film).lastModified()) {
        if (const QImage picture = readSmallPicture(storedFile, kThumbnailWidth); !picture.isNull())
            return picture;
    }
    return firstFrameOfFilm(film, kThumbnailWidth);
}

QImage withMark(const QImage &picture, const QImage &mark)
{
    // Painting wants a format that it knows well; a grey or 8-bit picture has none.
    QImage marked = picture.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&marked);
    painter.drawImage(kMarkCentre - QPoint(mark.width() / 2, mark.height() / 2), mark);
    return marked;
}

QImage fitted(const QImage &picture, QSize box)
{
    const QSize size = picture.size().scaled(box, Qt::KeepAspectRatio);
    if (picture.size().boundedTo(box) == picture.size() || size.isEmpty())
        return picture;
    QImage small(size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&small);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint(), size), picture);
    return small;
}
