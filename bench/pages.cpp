// Draws the first page of the browser again and again on the real window; a line of milliseconds for each:
// the page alone, and the way into the browser, which lists the folder before. Usage: pages FOLDER COUNT
// FOLDER: host folder whose files are the page
#include "benchwindow.h"

#include "core/pages.h"
#include "storage/dcim.h"

#include <QElapsedTimer>
#include <QListWidget>

namespace {

// Milliseconds until the window is in that state.
double timeOf(MainWindow &window, eMainStates state)
{
    QElapsedTimer timer;
    timer.start();
    window.ChangeMainState(state);
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

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
        const double page = timeOf(*window, eStatePlaybackThumbnailsSelectable);
        std::printf("%.3f %.3f\n", page, timeOf(*window, eStateEnterPlaybackThumbnails));
    }
    return list->count() == kFilesOnPage ? 0 : 1;
}
