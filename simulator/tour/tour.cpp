// The application goes through its screens by itself, on a simulated unit, and leaves a picture of each.
#include "hand.h"
#include "route.h"

#include "app/unitapplication.h"
#include "platform/unit.h"

#include <QDir>
#include <QThread>

#include <cstdio>
#include <memory>

namespace {

constexpr int kArguments = 4;

} // namespace

int main(int argc, char **argv)
{
    if (argc != kArguments) {
        std::fprintf(stderr, "Usage: tour UNIT_TOOL UNIT_FOLDER PICTURES   (see ./run --tour)\n");
        return 2;
    }
    const QString tool = QString::fromLocal8Bit(argv[1]);
    const QString folder = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    const QString pictures = QString::fromLocal8Bit(argv[3]);
    unit::setRoot(folder);
    UnitApplication app(argc, argv);
    RunningUnit running(app);
    const std::unique_ptr<QThread> script(QThread::create([&] {
        Hand hand(running.window, tool, folder, pictures);
        goThroughTheScreens(hand);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }));
    script->start();
    const int status = app.exec();
    script->wait();
    return status;
}
