#include "film/firstframe.h"

#include "film/filmmodule.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibrary>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.film")

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

void takeCopy(void *context, const unsigned char *pixels, int width, int height, long stride)
{
    *static_cast<QImage *>(context) = QImage(pixels, width, height, stride, QImage::Format_RGB888).copy();
}

} // namespace

QImage firstFrameOfFilm(const QString &hostPath)
{
    static const FirstFrame firstFrame = loadModule();
    QImage frame;
    if (firstFrame)
        firstFrame(QFile::encodeName(hostPath).constData(), takeCopy, &frame);
    return frame;
}
