// Process entry: options, application object, window, event loop.
#include "app/terminationsignals.h"
#include "app/unitapplication.h"

#include "platform/runlock.h"
#include "platform/unit.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <malloc.h>

namespace {

constexpr int kWrongUse = 2;
constexpr char kUsage[] = "Usage: tubix4 [--root DIR] [Qt options]\n"
                          "  --root DIR   the folder that holds the unit's file system (default: /)\n"
                          "  --help       this text\n";

struct Options
{
    QString root = QStringLiteral("/");
    bool showHelp = false;
    QByteArray wrong; // what was not understood
};

// Ours begin with two dashes. The others are Qt's, until the application object has taken those out of
// `argv`.
Options parse(int argc, char **argv, bool othersAreQts)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0)
            options.showHelp = true;
        else if (std::strcmp(argv[i], "--root") == 0 && i + 1 < argc)
            options.root = QDir(QString::fromLocal8Bit(argv[++i])).absolutePath();
        else if (!othersAreQts || std::strncmp(argv[i], "--", 2) == 0)
            options.wrong = argv[i];
    }
    return options;
}

int refuse(const QByteArray &wrong)
{
    std::fprintf(stderr, "tubix4: unknown option '%s', see --help\n", wrong.constData());
    return kWrongUse;
}

} // namespace

int main(int argc, char **argv)
{
    // A heap for each thread grows with every film, whose threads are new ones: 0.5 MB a film. With one heap
    // the memory stays flat.
    mallopt(M_ARENA_MAX, 1); // NOLINT(concurrency-mt-unsafe): no other thread yet
    const Options options = parse(argc, argv, true);
    if (options.showHelp) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!options.wrong.isEmpty())
        return refuse(options.wrong);
    unit::setRoot(options.root);
    if (!QFileInfo(unit::path(u"/home/root/tubix4_app"_unit)).isDir()) {
        std::fprintf(stderr, "tubix4: no unit at %s: it has no /home/root/tubix4_app (see --root)\n",
                     qUtf8Printable(options.root));
        return kWrongUse;
    }
    const RunLock lock;
    if (!lock.isFree()) {
        std::fprintf(stderr, "tubix4: another tubix4 runs on this unit\n");
        return 1;
    }
    UnitApplication app(argc, argv);
    if (const Options left = parse(argc, argv, false); !left.wrong.isEmpty())
        return refuse(left.wrong);
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &app, &QCoreApplication::quit);
    const RunningUnit running(app);
    return app.exec();
}
