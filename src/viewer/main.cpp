// tubix4-viewer: the live picture and the card's inspection folders in a browser on the hotspot.
#include "platform/unit.h"
#include "viewer/server.h"
#include "viewer/unitstate.h"
#include "viewer/viewersettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <memory>

namespace {

constexpr int kWrongUse = 2;
constexpr long kLookNanoseconds = 200'000'000; // how often the unit is looked at
constexpr char kUsage[] =
    "Usage: tubix4-viewer [--root DIR]\n"
    "Shows the live picture and the inspection folders to browsers on the unit's hotspot, when\n"
    "/etc/default/tubix4-viewer has VIEWER=on.\n"
    "  --root DIR   the folder that holds the unit's file system (default: /)\n"
    "  --help       this text\n";

// Serves while the hotspot is on, and at its address alone.
class Watch
{
public:
    explicit Watch(const viewer::Settings &settings) : m_settings(settings) {}

    void look()
    {
        m_filesAreOpen = viewer::cardIsOurs();
        const viewer::Subnet subnet =
            viewer::hotspotIsOn() ? viewer::subnetOf(m_settings.networkInterface) : viewer::Subnet();
        if (subnet != m_subnet || !m_hasLooked)
            take(subnet);
        if (m_mayServe && !m_server)
            listen();
    }

private:
    void take(viewer::Subnet subnet)
    {
        m_hasLooked = true;
        m_subnet = subnet;
        m_server.reset();
        m_mayServe = subnet.address && !viewer::isInForeignNetwork(m_settings.networkInterface);
        tell(m_mayServe ? QString() : QStringLiteral("the hotspot is off"));
    }

    // The first free port; when there is none, again with the next look.
    void listen()
    {
        for (int port = m_settings.firstPort; port <= m_settings.lastPort && !m_server; ++port)
            m_server = viewer::Server::start(m_subnet, quint16(port), m_filesAreOpen);
        tell(m_server ? QStringLiteral("http://%1%2/").arg(viewer::dotted(m_subnet.address), shownPort())
                      : QStringLiteral("no port is free"));
    }

    // Each news once.
    void tell(const QString &news)
    {
        if (news != m_told && !news.isEmpty())
            std::printf("viewer: %s\n", qUtf8Printable(news));
        std::fflush(stdout);
        m_told = news;
    }

    QString shownPort() const
    {
        return m_server->port() == 80 ? QString() : QStringLiteral(":%1").arg(m_server->port());
    }

    const viewer::Settings m_settings;
    std::atomic<bool> m_filesAreOpen = false;
    viewer::Subnet m_subnet;
    bool m_hasLooked = false;
    bool m_mayServe = false;
    QString m_told;
    std::unique_ptr<viewer::Server> m_server;
};

// What was not understood, or nothing.
QByteArray parse(int argc, char **argv, QString &root, bool &showHelp)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray option = argv[i];
        if (option == "--help")
            showHelp = true;
        else if (option == "--root" && i + 1 < argc)
            root = QDir(QString::fromLocal8Bit(argv[++i])).absolutePath();
        else
            return option;
    }
    return {};
}

// Looks at the unit until SIGINT or SIGTERM comes, which are blocked everywhere.
void watchUntil(const sigset_t &ends, const viewer::Settings &settings)
{
    Watch watch(settings);
    const timespec pause = {0, kLookNanoseconds};
    do
        watch.look();
    while (::sigtimedwait(&ends, nullptr, &pause) < 0);
}

} // namespace

int main(int argc, char **argv)
{
    QString root = QStringLiteral("/");
    bool showHelp = false;
    if (const QByteArray wrong = parse(argc, argv, root, showHelp); !wrong.isEmpty()) {
        std::fprintf(stderr, "tubix4-viewer: unknown option '%s', see --help\n", wrong.constData());
        return kWrongUse;
    }
    if (showHelp) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    unit::setRoot(root);
    const viewer::Settings settings = viewer::readSettings();
    if (!settings.wrongLine.isEmpty()) {
        std::fprintf(stderr, "tubix4-viewer: %s is not understood: '%s'\n",
                     qUtf8Printable(viewer::kSettingsFile.text()), qUtf8Printable(settings.wrongLine));
        return kWrongUse;
    }
    if (!settings.isOn) {
        std::printf("viewer: off, see %s\n", qUtf8Printable(viewer::kSettingsFile.text()));
        return 0;
    }
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &ends, nullptr); // inherited by every thread
    QCoreApplication application(argc, argv);     // child processes ask for it
    watchUntil(ends, settings);
    return 0;
}
