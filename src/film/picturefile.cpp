#include "film/picturefile.h"

#include <QFile>
#include <QImageReader>
#include <QtEndian>

namespace {

constexpr int kFastScaling = 40;    // below 50 the reader scales without smoothing
constexpr int kTallestSmall = 1024; // pixels
constexpr int kMostComponents = 4;  // of a pixel
constexpr qint64 kMebi = 1 << 20;
constexpr qint64 kMostPixels = 64 * kMebi;
// Of a picture in several passes the decoder holds every coefficient, up to eight bytes a pixel, and goes
// over all of them in each pass; a pass costs something even without pixels.
constexpr qint64 kMostPixelPasses = 128 * kMebi;
constexpr qint64 kPassCost = kMebi; // in pixels
constexpr qint64 kMostBytesOfPasses = 32 * kMebi;

enum Marker : quint8 {
    eBaseline = 0xc0,
    eExtended = 0xc1,
    eProgressive = 0xc2,
    eFirstScan = 0xda,
    eFill = 0xff
};

quint8 byteAt(const QByteArray &bytes, qsizetype at)
{
    return at < bytes.size() ? quint8(bytes[at]) : 0;
}

// The next segment's marker, its content in `content`. Nothing: that is no segment.
std::optional<quint8> nextSegment(QIODevice &file, QByteArray &content)
{
    QByteArray head = file.read(2);
    while (head == "\xff\xff") // padding
        head = head.last(1) + file.read(1);
    head += file.read(2);
    if (head.size() < 4 || byteAt(head, 0) != eFill)
        return {};
    const int length = qFromBigEndian<quint16>(head.constData() + 2) - 2;
    content = file.read(length);
    if (length < 0 || content.size() < length)
        return {};
    return byteAt(head, 1);
}

} // namespace

std::optional<JpegFrame> readJpegFrame(QIODevice &file)
{
    if (file.read(2) != "\xff\xd8")
        return {};
    JpegFrame frame;
    QByteArray content;
    quint8 kind = 0;
    while (const std::optional<quint8> marker = nextSegment(file, content)) {
        if (*marker >= eBaseline && *marker <= eProgressive) {
            kind = *marker;
            if (content.size() < 6)
                return {};
            frame.pixels = qint64(qFromBigEndian<quint16>(content.constData() + 1)) *
                           qFromBigEndian<quint16>(content.constData() + 3);
            frame.components = byteAt(content, 5);
        } else if (*marker == eFirstScan) {
            frame.isOnePass = kind != eProgressive && byteAt(content, 0) == frame.components;
            return frame;
        }
    }
    return {};
}

namespace {

bool isAffordable(QFile &file)
{
    const std::optional<JpegFrame> frame = readJpegFrame(file);
    if (!frame || frame->pixels == 0 || frame->components > kMostComponents)
        return false;
    if (frame->isOnePass)
        return frame->pixels <= kMostPixels;
    if (frame->pixels > kMostPixelsHeld || file.size() > kMostBytesOfPasses)
        return false;
    file.seek(0);
    const qint64 passes = file.readAll().count("\xff\xda");
    return (frame->pixels + kPassCost) * passes <= kMostPixelPasses;
}

QImage read(const HostPath &hostPath, QSize box, bool mayGrow, int quality)
{
    QFile file(hostPath);
    if (!file.open(QIODevice::ReadOnly) || !isAffordable(file))
        return {};
    file.seek(0);
    QImageReader reader(&file, "jpg");
    reader.setAutoDetectImageFormat(false); // a file's content does not choose its decoder
    const QSize size = reader.size();
    const QSize fitting = QSizeF(size).scaled(box, Qt::KeepAspectRatio).toSize().expandedTo({1, 1});
    if (mayGrow || size.boundedTo(box) != size)
        reader.setScaledSize(fitting);
    reader.setQuality(quality);
    return reader.read();
}

} // namespace

QImage readPicture(const HostPath &hostPath, QSize box)
{
    return read(hostPath, box, false, -1);
}

QImage readSmallPicture(const HostPath &hostPath, int width)
{
    return read(hostPath, {width, kTallestSmall}, true, kFastScaling);
}
