#include "media/media.h"

#include <QTimer>

#include <arpa/inet.h>
#include <array>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPort = 1234;

sockaddr_in loopback()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A socket to or at the stream's port; closed with the object.
class Socket
{
public:
    Socket() : m_fd(open()) {}
    ~Socket() { ::close(m_fd); }
    Q_DISABLE_COPY_MOVE(Socket)

    bool connect()
    {
        ::close(m_fd); // one that was refused is of no more use
        m_fd = open();
        const sockaddr_in address = loopback();
        return ::connect(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    void read(qsizetype bytes) const
    {
        QByteArray taken(bytes, Qt::Uninitialized);
        ::recv(m_fd, taken.data(), size_t(bytes), MSG_DONTWAIT);
    }
    bool listen()
    {
        const sockaddr_in address = loopback();
        const int reuse = 1; // as the server does: an old connection may still be closing
        ::setsockopt(m_fd, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        return ::bind(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
               ::listen(m_fd, 1) == 0;
    }

private:
    static int open() { return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }

    int m_fd;
};

guint serverValue(const char *property)
{
    guint value = 0;
    g_object_get(g_gst_Pipeline.videoStreamSink, property, &value, nullptr);
    return value;
}

void startStream(const char *address)
{
    gst_SetNetworkStreamingIPAddress(address);
    g_gst_VideoPipelineMode = eGSTStateStreaming;
    gst_VideoInputPipeline(0);
}

void startViewer(QProcess &viewer)
{
    viewer.start(u"ffmpeg"_s,
                 u"-v error -f mjpeg -i tcp://127.0.0.1:1234 -frames:v 50 -f null -"_s.split(u' '));
}

} // namespace

class TestStream : public HeardTest
{
    Q_OBJECT

    TestUnit m_folder{{u"/home/root/tubix4_app"_s}};

private slots:
    void initTestCase()
    {
        startMedia();
        useCamera(m_folder,
                  "\"videotestsrc is-live=true ! video/x-raw,width=720,height=576,framerate=25/1\"");
    }

    void cleanup()
    {
        gst_EndVideoInputPipeline();
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    }

    void viewersDoNotHinderEachOtherOrTheLivePicture()
    {
        startStream("127.0.0.1");
        Socket slow;
        QTRY_VERIFY(slow.connect());
        QTimer sip; // 20 KB a second
        QObject::connect(&sip, &QTimer::timeout, [&] { slow.read(2000); });
        sip.start(100);
        QTRY_COMPARE(serverValue("num-handles"), 1U);
        {
            std::array<Socket, 10> leaving;
            for (Socket &socket : leaving)
                QVERIFY(socket.connect());
            QTRY_COMPARE(serverValue("num-handles"), 8U);
        }
        QTRY_VERIFY(serverValue("num-handles") < 8);
        QProcess first, second;
        startViewer(first);
        startViewer(second);
        QTRY_VERIFY_WITH_TIMEOUT(first.state() == QProcess::NotRunning, 60000);
        QTRY_VERIFY_WITH_TIMEOUT(second.state() == QProcess::NotRunning, 60000);
        QCOMPARE(first.readAllStandardError(), QByteArray());
        QCOMPARE(second.readAllStandardError(), QByteArray());
        QVERIFY(pictureRuns());
        QVERIFY(serverValue("buffers-queued") <= 25);
        // The one that takes too little is let go, and the film of its pictures with it.
        QTRY_COMPARE_WITH_TIMEOUT(serverValue("num-handles"), 0U, 120000);
    }

    void aStreamThatCannotBeServedGivesWayToTheLivePicture()
    {
        for (const char *address : {"", "192.0.2.1", "127.0.0.1"}) { // none, not ours, a busy port
            Socket other;
            if (qstrcmp(address, "127.0.0.1") == 0)
                QVERIFY(other.listen());
            startStream(address);
            QTRY_VERIFY(g_gst_Pipeline.videocrop);
            QCOMPARE(g_gst_VideoPipelineMode, eGSTStateLiveVideo);
            QVERIFY(pictureRuns());
        }
    }

    void theStreamComesBackWhereAViewerWas()
    {
        for (int i = 0; i < 3; ++i) {
            startStream("127.0.0.1");
            Socket viewer;
            QTRY_VERIFY(viewer.connect());
            QTRY_COMPARE(serverValue("num-handles"), 1U);
        }
    }
};

QTEST_GUILESS_MAIN(TestStream)
#include "test_stream.moc"
