// The program under a service manager that the test plays: a datagram socket of its own.
#include "testunit.h"

#include "platform/servicemanager.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <csignal>
#include <sys/socket.h>
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
    explicit Program(const QByteArray &socketName)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"NOTIFY_SOCKET"_s, QString::fromLocal8Bit(socketName));
        environment.insert(u"WATCHDOG_USEC"_s, QString::number(2 * 1000 * kBeat));
        environment.remove(u"WATCHDOG_PID"_s);
        setProcessEnvironment(environment);
        start(QStringLiteral(TUBIX_BINARY), {u"--root"_s, unit::root()});
    }
    ~Program() override
    {
        kill();
        waitForFinished();
    }

    const QByteArray &output() { return m_output += readAllStandardOutput(); }

private:
    QByteArray m_output;
};

} // namespace

class TestService : public QObject
{
    Q_OBJECT

private slots:
    void aBeatNeedsFramesOnlyWhereTheyAreDue_data()
    {
        QTest::addColumn<bool>("wasExpected");
        QTest::addColumn<bool>("isExpected");
        QTest::addColumn<int>("newFrames");
        QTest::addColumn<bool>("isAlive");
        QTest::newRow("frames come") << true << true << 12 << true;
        QTest::newRow("the count wraps around") << true << true << -12 << true;
        QTest::newRow("frames stay away") << true << true << 0 << false;
        QTest::newRow("the browser is open") << false << false << 0 << true;
        QTest::newRow("the pipeline has just ended") << true << false << 0 << true;
        QTest::newRow("the pipeline has just started") << false << true << 0 << true;
    }
    void aBeatNeedsFramesOnlyWhereTheyAreDue()
    {
        QFETCH(const bool, wasExpected);
        QFETCH(const bool, isExpected);
        QFETCH(const int, newFrames);
        QTEST(servicemanager::isAlive({wasExpected, 100}, {isExpected, 100 + newFrames}), "isAlive");
    }

    void itTellsReadyBeatsAndStopsWithTheFrames()
    {
        const TestUnit folder;
        const QByteArray name = "@tubix4-test-" + QByteArray::number(::getpid());
        Manager manager(name);
        Program program(name);
        QTRY_VERIFY_WITH_TIMEOUT(manager.heard().contains("READY=1"), kPatience);
        QTRY_VERIFY(program.output().contains("ready: "));
        QCOMPARE(program.readAllStandardError().count("QCss"), 0); // the look is understood
        const qsizetype first = manager.beats();
        QElapsedTimer time;
        time.start();
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= first + 6, kPatience);
        QVERIFY(time.elapsed() >= 5 * kBeat - kBeat / 2); // not a flood

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
        const QByteArray name = QFile::encodeName(unit::path(u"/run/notify"_s));
        Manager manager(name);
        Program program(name);
        QTRY_VERIFY_WITH_TIMEOUT(manager.heard().contains("READY=1"), kPatience);
        // The card's state is asked for: its module is loaded, and the first beats come.
        QTRY_VERIFY_WITH_TIMEOUT(folder.content(u"/var/log/commands"_s).contains("modprobe"), kPatience);
        // A command that does not return: the picture goes on, the buttons are dead.
        folder.put(u"/usr/bin/rmmod"_s, "#!/bin/sh\nroot=${0%/usr/bin/*}\n: >\"$root/tmp/hangs\"\n"
                                        "while [ ! -e \"$root/tmp/go\" ]; do /bin/sleep 0.1; done\n");
        folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(unit::path(u"/tmp/hangs"_s)), kPatience);
        QTRY_VERIFY_WITH_TIMEOUT(manager.isQuiet(), kPatience);
        const qsizetype before = manager.beats();
        folder.put(u"/tmp/go"_s, {});
        QTRY_VERIFY_WITH_TIMEOUT(manager.beats() >= before + 2, kPatience);
    }
};

QTEST_GUILESS_MAIN(TestService)
#include "test_service.moc"
