// Counts, in live view, the frames that the camera delivered and those that the screen painted.
// Usage: shownframes SECONDS
#include "benchwindow.h"

#include "app/picturelabel.h"

int main(int argc, char **argv)
{
    BenchWindow window(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    int painted = 0;
    int received = 0;
    const auto *label = window->findChild<PictureLabel *>(QStringLiteral("labelInputVideo"));
    constexpr int kSettle = 3000; // ms: the card is found about a second after the start
    QTimer::singleShot(kSettle, label, [&] {
        QObject::connect(label, &PictureLabel::framePainted, label, [&painted] { ++painted; });
        received = nBuffers;
        QTimer::singleShot(seconds * 1000, Qt::PreciseTimer, label, [&] {
            received = nBuffers - received;
            QCoreApplication::quit();
        });
    });
    QCoreApplication::exec();
    std::printf("{\"seconds\": %d, \"received\": %d, \"painted\": %d}\n", seconds, received, painted);
    return 0;
}
