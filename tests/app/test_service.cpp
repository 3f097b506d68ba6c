// The program under a service manager that the test plays: a datagram socket of its own.
#include "testunit.h"

#include "platform/servicemanager.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <csignal>
#include <linux/input.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kBeat = 250; // ms: half of what the program is allowed
constexpr int kPatience = 30000;

class Manager
{
public:
    explicit Manager(const QByteArray &name)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::copy(name.begin(), name.end(), address.sun_path);
        if (name.startsWith('@')) // an abstract name: no file
            address.sun_path[0] = '\0';
        const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()));
        if (::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), length) != 0)
            qFatal("no socket for the test");
    }
    ~Manager() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Manager)

    // What has come so far, a line a message; times of the beats apart.
    const QByteArrayList &heard()
    {
        char buffer[256];
        for (ssize_t size; (size = ::recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT)) > 0;)
            m_heard << QByteArray(buffer, size);
        return m_heard;
    }

    qsizetype beats() { return heard().count("WATCHDOG=1"); }

    // True when no beat came for four times the interval.
    bool isQuiet()
    {
        if (const qsizetype now = beats(); now != m_beats || !m_since.isValid()) {
            m_beats = now;
            m_since.start();
        }
        return m_since.hasExpired(4 * kBeat);
    }

private:
    int m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    QByteArrayList m_heard;
    qsizetype m_beats = 0;
    QElapsedTimer m_since;
};

class Program : public QProcess
{
public:
    explicit Program(const QByteArray &socketName = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"NOTIFY_SOCKET"_s);
        if (!socketName.isEmpty())
            environment.insert(u"NOTIFY_SOCKET"_s, QString::fromLocal8Bit(socketName));
        environment.insert(u"WATCHDOG_USEC"_s, QString::number(2 * 1000 * kBeat));
        environment.remove(u"WATCHDOG_PID"_s);
        environment.insert(u"QT_QPA_GENERIC_PLUGINS"_s, u"evdevkeyboard:"_s + keys());
        setProcessEnvironment(environment);
        ::mkfifo(qPrintable(keys()), 0600);
        start(QStringLiteral(TUBIX_BINARY), {u"--root"_s, unit::root()});
    }
    ~Program() override
    {
        kill();
        waitForFinished();
    }

    const QByteArray &output() { return m_output += readAllStandardOutput(); }
    void waitForPicture() { QTRY_VERIFY_WITH_TIMEOUT(output().contains("ready: "), kPatience); }

    // The unit's key, as the kernel tells it.
    void pressPowerKey() const
    {
        QFile device(keys());
        QVERIFY(device.open(QIODevice::WriteOnly));
        for (const int value : {1, 0}) { // down, up
            input_event event = {};
            event.type = EV_KEY;
            event.code = KEY_POWER;
            event.value = value;
            device.write(reinterpret_cast<const char *>(&event), sizeof event);
        }
    }

private:
    // Only what lies below /dev is taken for a keyboard.
    static QString keys() { return u"/dev/.."_s + unit::path(u"/dev/keys"_unit); }

    QByteArray m_output;
};

// A start that is refused: its status, and what it says.
std::pair<int, QByteArray> refusal(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(TUBIX_BINARY), arguments);
    program.waitForFinished();
    return {program.exitCode(), program.readAllStandardError()};
}

} // namespace

class TestService : public HeardTest
{
    Q_OBJECT

private slots:
    // An upgrade holds the event loop for longer than the watchdog waits.
    void longWorkIsAllowedAndEnds()
    {
        const QByteArray name = "@tubix4-work-" + QByteArray::number(::getpid());
        Manager manager(name);
        qputenv("NOTIFY_SOCKET", name);
        qputenv("WATCHDOG_USEC", "2000000");
        {
            const servicemanager::LongWork atWork;
            QCOMPARE(manager.heard(), QByteArrayList{"WATCHDOG_USEC=3600000000"});
        }
        QCOMPARE(manager.heard().last(), QByteArray("WATCHDOG_USEC=2000000"));
        qunsetenv("NOTIFY_SOCKET");
        qunsetenv("WATCHDOG_USEC");
    }

    void itTellsReadyBeatsAndStopsWithTheFrames()
    {
        const TestUnit folder;
        const QByteArray name = "@tubix4-test-" + QByteArray::number(::getpid());
        Manager manager(name);
        Program program(name);
        QTRY_VERIFY_WITH_TIMEOUT(manager.heard().contains("READY=1"), kPatience);
        program.waitForPicture();
        QVERIFY(!program.readAllStandardError().contains("QCss")); // the form's own colour is no news
        const qsizetype first = manager.beats();
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= first + 6, kPatience);

        // A USB host has the card: no picture is due.
        folder.control({u"usb"_s, u"attach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(program.output().contains("[EOS DETECTED]"), kPatience);
        const qsizetype without = manager.beats();
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= without + 4, kPatience);
        const qsizetype frames = program.output().size();
        folder.control({u"usb"_s, u"detach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= without + 8, kPatience);
        QCOMPARE(program.output().mid(frames).count("ERROR"), 0);

        folder.control({u"camera"_s, u"lost"_s});
        QTRY_VERIFY_WITH_TIMEOUT(manager.isQuiet(), kPatience);
        QVERIFY(!manager.heard().contains("STOPPING=1"));
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(manager.heard().last(), QByteArray("STOPPING=1"));
        QCOMPARE(manager.heard().count("READY=1"), 1);
    }

    void itStopsBeatingWhileTheLoopStands()
    {
        const TestUnit folder;
        const QByteArray name = unit::path(u"/run/notify"_unit).encoded();
        Manager manager(name);
        Program program(name);
        QTRY_VERIFY_WITH_TIMEOUT(manager.heard().contains("READY=1"), kPatience);
        // The card's state is asked for: its module is loaded, and the first beats come.
        QTRY_VERIFY_WITH_TIMEOUT(folder.content(u"/var/log/commands"_s).contains("modprobe"), kPatience);
        // A command that does not return: the picture goes on, the buttons are dead.
        folder.put(u"/usr/bin/rmmod"_s, "#!/bin/sh\nroot=${0%/usr/bin/*}\n: >\"$root/tmp/hangs\"\n"
                                        "while [ ! -e \"$root/tmp/go\" ]; do /bin/sleep 0.1; done\n");
        folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(unit::path(u"/tmp/hangs"_unit)), kPatience);
        QTRY_VERIFY_WITH_TIMEOUT(manager.isQuiet(), kPatience);
        const qsizetype before = manager.beats();
        folder.put(u"/tmp/go"_s, {});
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= before + 2, kPatience);
    }

    void oneProgramHasTheUnitUntilItIsEnded_data()
    {
        QTest::addColumn<int>("signal"); // 0: the power key
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("power key") << 0;
    }
    void oneProgramHasTheUnitUntilItIsEnded()
    {
        QFETCH(const int, signal);
        const TestUnit folder;
        Program program;
        program.waitForPicture();
        if (signal == SIGTERM)
            QCOMPARE(refusal({u"--root"_s, unit::root()}),
                     std::pair(1, QByteArray("tubix4: another tubix4 runs on this unit\n")));
        QVERIFY(exists(u"/run/tubix4.pid"_s));
        if (signal)
            ::kill(pid_t(program.processId()), signal);
        else
            program.pressPowerKey();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!exists(u"/run/tubix4.pid"_s));
        const QByteArray events = folder.content(u"/home/root/tubix4_app/eventlog.csv"_s);
        QCOMPARE(events.count(",2,Shutdown power switch pressed"), signal ? 0 : 1);
        QCOMPARE(folder.content(u"/var/log/commands"_s).count("poweroff"), signal ? 0 : 1);
    }

    void wrongUseIsOneLine()
    {
        const QList<QStringList> uses = {{u"--bogus"_s}, {u"--root"_s, u"/nowhere"_s}, {}}; // no unit here
        for (const QStringList &arguments : uses) {
            const auto [status, error] = refusal(arguments);
            QCOMPARE(status, 2);
            QCOMPARE(error.count('\n'), 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestService)
#include "test_service.moc"
