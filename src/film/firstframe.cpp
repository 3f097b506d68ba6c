#include "film/firstframe.h"

#include "film/filmmodule.h"
#include "film/picturefile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QLibrary>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.film")

constexpr qint64 kWhereItBegins = 256 * 1024; // bytes: the first picture's headers lie in them
constexpr qsizetype kFormType = 8;            // place of "AVI " in a film's first bytes

using FirstFrame = decltype(&tubixFilmFirstFrame);

FirstFrame loadModule()
{
    const QString folder = QCoreApplication::applicationDirPath();
    for (const QString &place :
         {folder, folder + QLatin1String("/.."), folder + QLatin1String("/../lib/tubix4/film")}) {
        const QString file = place + QLatin1String("/libtubixfilm.so");
        if (!QFile::exists(file))
            continue;
        QLibrary library(file);
        if (const auto function = reinterpret_cast<FirstFrame>(library.resolve("tubixFilmFirstFrame")))
            return function;
        qCWarning(log) << library.errorString();
    }
    qCWarning(log) << "no film module: films have no thumbnail";
    return nullptr;
}

// Whether the reader should open the film. Where a film of JPEG pictures has none it would look for one to
// the film's end, and it decodes a picture before it tells how large they are.
bool mayHavePicture(const HostPath &hostPath)
{
    QFile film(hostPath);
    QByteArray start = film.open(QIODevice::ReadOnly) ? film.read(kWhereItBegins) : QByteArray();
    if (!start.startsWith("RIFF") || start.indexOf("AVI ") != kFormType)
        return false;
    const qsizetype picture = start.indexOf("\xff\xd8\xff");
    QBuffer buffer(&start);
    if (picture < 0 || !buffer.open(QIODevice::ReadOnly) || !buffer.seek(picture))
        return !start.contains("vidsMJPG");
    const std::optional<JpegFrame> frame = readJpegFrame(buffer);
    return !frame || frame->pixels <= kMostPixelsHeld;
}

struct Taken
{
    int width; // 0: the frame's own
    QImage picture;
};

void takeCopy(void *context, const unsigned char *pixels, int width, int height, long stride)
{
    auto &taken = *static_cast<Taken *>(context);
    const QImage frame(pixels, width, height, stride, QImage::Format_BGR888);
    taken.picture = (taken.width ? frame.scaledToWidth(taken.width) : frame).copy();
}

} // namespace

QImage firstFrameOfFilm(const HostPath &hostPath, int width)
{
    static const FirstFrame firstFrame = loadModule();
    Taken taken{width, {}};
    if (firstFrame && mayHavePicture(hostPath))
        firstFrame(hostPath.encoded().constData(), takeCopy, &taken);
    return taken.picture;
}
