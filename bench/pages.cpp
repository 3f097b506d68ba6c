// Draws one page of the browser again and again on the real window; a line of milliseconds for each.
// Usage: pages FOLDER COUNT     FOLDER: host folder whose files are the page
#include "benchwindow.h"

#include "core/pages.h"
#include "storage/dcim.h"

#include <QElapsedTimer>
#include <QListWidget>

int main(int argc, char **argv)
{
    BenchWindow window(argc, argv);
    if (argc != 3) {
        std::fputs("Usage: pages FOLDER COUNT\n", stderr);
        return 2;
    }
    window.standStill();
    CreateDCIMStructure({});
    if (!window.copyIntoCurrentFolder(QString::fromLocal8Bit(argv[1])))
        return 1;
    window->ChangeMainState(eStateEnterPlaybackThumbnails);
    const auto *list = window->findChild<QListWidget *>(QStringLiteral("listW_ThumbnailViewer"));
    for (int i = 0; i < std::atoi(argv[2]); ++i) {
        QElapsedTimer timer;
        timer.start();
        window->ChangeMainState(eStatePlaybackThumbnailsSelectable);
        std::printf("%.3f\n", double(timer.nsecsElapsed()) / 1e6);
    }
    return list->count() == kFilesOnPage ? 0 : 1;
}
