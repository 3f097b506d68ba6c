#include "media/media.h"
#include "syncs.h"

#include <QFileInfo>

#include <atomic>
#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr double kFramesPerSecond = 15;
constexpr int kSoundRate = 8000;

// Seconds at which the picture turns bright.
QList<double> flashes(const QString &film)
{
    const QByteArray pixels = output(
        "ffmpeg -v error -i %1 -map 0:v -vf crop=64:64:300:300,scale=1:1,format=gray -f rawvideo -", {film});
    QList<double> times;
    for (qsizetype i = 1; i < pixels.size(); ++i) {
        if (uchar(pixels[i]) > 120 && uchar(pixels[i - 1]) <= 120)
            times << double(i) / kFramesPerSecond;
    }
    return times;
}

// Seconds at which a beep begins.
QList<double> beeps(const QString &film)
{
    const QByteArray bytes =
        output("ffmpeg -v error -i %1 -map 0:a -ac 1 -ar %2 -f s16le -", {film, QString::number(kSoundRate)});
    QList<double> times;
    qsizetype loud = -kSoundRate;
    for (qsizetype i = 0; i < bytes.size() / 2; ++i) {
        qint16 sample = 0;
        std::memcpy(&sample, bytes.constData() + 2 * i, 2);
        if (std::abs(sample) < 4000)
            continue;
        if (i - loud > kSoundRate / 4)
            times << double(i) / kSoundRate;
        loud = i;
    }
    return times;
}

// A tenth of a second of white, every second.
GstPadProbeReturn flash(GstPad *, GstPadProbeInfo *info, gpointer pictures)
{
    ++*static_cast<std::atomic<int> *>(pictures);
    GstBuffer *picture = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    GST_PAD_PROBE_INFO_DATA(info) = picture;
    GstMapInfo map;
    if (GST_BUFFER_PTS(picture) % GST_SECOND < 100 * GST_MSECOND &&
        gst_buffer_map(picture, &map, GST_MAP_WRITE)) {
        std::memset(map.data, 235, 720 * 576);
        gst_buffer_unmap(picture, &map);
    }
    return GST_PAD_PROBE_OK;
}

// What was to be heard before the time given (ms) is lost.
GstPadProbeReturn open(GstPad *, GstPadProbeInfo *info, gpointer late)
{
    const GstBuffer *sound = GST_PAD_PROBE_INFO_BUFFER(info);
    return GST_BUFFER_PTS(sound) < GPOINTER_TO_UINT(late) * GST_MSECOND ? GST_PAD_PROBE_DROP
                                                                        : GST_PAD_PROBE_OK;
}

void addProbe(const char *element, GstPadProbeCallback callback, gpointer data)
{
    const GstOwner<GstElement> source(gst_bin_get_by_name(GST_BIN(g_gst_Pipeline.pipeline), element));
    const GstOwner<GstPad> pad(gst_element_get_static_pad(source.get(), "src"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, callback, data, nullptr);
}

// A film on a unit whose camera and microphone are probed by name.
class Recording
{
public:
    explicit Recording(
        const QByteArray &microphone =
            "audiotestsrc is-live=true wave=ticks freq=1000 sine-periods-per-tick=100 name=ear")
    {
        useCamera(m_folder,
                  "\"videotestsrc is-live=true pattern=black name=eye ! "
                  "video/x-raw,format=I420,width=720,height=576,framerate=25/1\"",
                  "microphone=" + microphone + '\n');
        gst_EnableAudioRecording(1);
        const QByteArray path = film.encoded();
        gst_StartRecordingAVIFile(path.constData(), int(path.size()));
    }
    ~Recording() { gst_EndVideoInputPipeline(); } // also when a check ends the test

private:
    const TestUnit m_folder{{u"/home/root/tubix4_app"_s}};

public:
    const HostPath film = unit::path(u"/film.avi"_unit);
};

// Sound packets, and those that are freed.
struct Packets
{
    std::atomic<int> made = 0;
    std::atomic<int> freed = 0;
};

GstPadProbeReturn countPacket(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    ++static_cast<Packets *>(data)->made;
    gst_mini_object_weak_ref(
        GST_MINI_OBJECT_CAST(GST_PAD_PROBE_INFO_BUFFER(info)),
        [](gpointer packets, GstMiniObject *) { ++static_cast<Packets *>(packets)->freed; }, data);
    return GST_PAD_PROBE_OK;
}

} // namespace

class TestRecording : public HeardTest
{
    Q_OBJECT

private slots:
    void initTestCase() { startMedia(); }

    void soundAndPictureAreInStep_data()
    {
        QTest::addColumn<int>("late"); // ms that the microphone needs to open
        QTest::newRow("at once") << 0;
        QTest::newRow("a slow microphone") << 300;
    }
    void soundAndPictureAreInStep()
    {
        QFETCH(const int, late);
        std::atomic<int> pictures = 0;
        const Recording recording;
        QVERIFY(g_gst_Pipeline.videosavesink);
        addProbe("eye", flash, &pictures);
        addProbe("ear", open, GUINT_TO_POINTER(late));
        QTRY_VERIFY_WITH_TIMEOUT(pictures > 4.2 * 25, 30000);
        gst_EndVideoInputPipeline();

        const QString &film = recording.film;
        QVERIFY(std::abs(duration(film, "v:0") - duration(film, "a:0")) < 0.2);
        const QList<double> seen = flashes(film);
        const QList<double> heard = beeps(film);
        QVERIFY(seen.size() >= 3);
        // A picture lasts 67 ms, and the one nearest in time is kept.
        for (const double time : seen) {
            double offset = 1;
            for (const double beep : heard)
                offset = std::abs(beep - time) < std::abs(offset) ? beep - time : offset;
            QVERIFY2(std::abs(offset) < 0.1, qPrintable(QString::number(offset)));
        }
    }

    void aRunningFilmIsSyncedAndItsSoundFreed()
    {
        Packets packets;
        const Recording recording;
        addProbe("audiomux_queue", countPacket, &packets);
        QTRY_VERIFY_WITH_TIMEOUT(packets.freed > 50, 20000);
        QStringList synced;
        QTRY_VERIFY(!(synced += takeSyncs()).filter(u"film.avi"_s).isEmpty());
        gst_EndVideoInputPipeline();
        QCOMPARE(packets.freed.load(), packets.made.load());
        const auto end = u"film.avi %1"_s.arg(QFileInfo(recording.film).size());
        QCOMPARE(takeSyncs().filter(u"film.avi"_s).last(), end); // it is on the card
    }

    void aMicrophoneWithoutSoundCostsTheSoundAlone_data()
    {
        QTest::addColumn<QByteArray>("microphone");
        QTest::newRow("mute") << QByteArray("audiotestsrc is-live=true ! identity drop-probability=1");
        QTest::newRow("cannot be opened") << QByteArray("alsasrc device=hw:7");
        QTest::newRow("cannot be linked") << QByteArray("videotestsrc");
    }
    void aMicrophoneWithoutSoundCostsTheSoundAlone()
    {
        QFETCH(const QByteArray, microphone);
        const Recording recording(microphone);
        QTRY_COMPARE_WITH_TIMEOUT(g_gst_VideoPipelineMode, eGSTStateRecordingWithoutAudio, 20000);
        QVERIFY(gst_TakeLostSound());
        QVERIFY(!gst_TakeLostSound()); // told once
        const int before = nBuffers;
        QTRY_VERIFY_WITH_TIMEOUT(nBuffers > before + 40, 20000);
        gst_EndVideoInputPipeline();
        QVERIFY(duration(recording.film, "v:0") > 1);
        QCOMPARE(duration(recording.film, "a:0"), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestRecording)
#include "test_recording.moc"
