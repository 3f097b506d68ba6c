#include "testunit.h"

#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "media/videoinputlayout.h"
#include "media/zoom.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Elements that every machine with the base plug-ins has.
const QByteArray kDesk = "[roles]\ncamera=videotestsrc is-live=true\ndisplay=fakesink sync=true\n"
                         "converter=videoconvert\n";
const QString kBoardConf = u"/home/root/tubix4_app/board.conf"_s;

ElementRoles boardRoles()
{
    return {u"mfw_v4lsrc"_s, u"queue-size=10"_s,   u"mfw_v4lsink deinterlace=true"_s,
            u"mfw_ipucsc"_s, u"vpuenc codec=12"_s, u"mfw_mp3encoder"_s,
            u"alsasrc"_s,    u"alsasink"_s};
}

void useRoles(const TestUnit &folder, const QByteArray &conf)
{
    folder.put(kBoardConf, conf);
    resetBoardElementsForTests();
}

constexpr int kBarBytes = 300 * kFrameWidth * 2; // the pattern's still part

QByteArray frame()
{
    return QByteArray(reinterpret_cast<const char *>(g_pcFrameBuffer[0]), kFrameBytes);
}

// Red, green, blue of the middle of each of the seven bars.
QList<int> barsOnScreen()
{
    const auto *pixels = reinterpret_cast<const quint16 *>(g_pcFrameBuffer[0]) + 200 * kFrameWidth;
    QList<int> bars;
    for (int x = 51; x < kFrameWidth; x += 103)
        bars << (pixels[x] >> 11) * 255 / 31 << (pixels[x] >> 5 & 63) * 255 / 63
             << (pixels[x] & 31) * 255 / 31;
    return bars;
}

QList<int> barsInFilm(const QString &film)
{
    QProcess decoder;
    decoder.start(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, film, u"-frames:v"_s, u"1"_s, u"-pix_fmt"_s,
                                u"rgb24"_s, u"-f"_s, u"rawvideo"_s, u"-"_s});
    decoder.waitForFinished();
    const QByteArray pixels = decoder.readAllStandardOutput();
    QList<int> bars;
    for (int x = 51; x < kFrameWidth; x += 103) {
        for (int i = 0; i < 3; ++i)
            bars << uchar(pixels.at((200 * kFrameWidth + x) * 3 + i));
    }
    return bars;
}

int largestDifference(const QList<int> &some, const QList<int> &others)
{
    int largest = 0;
    for (qsizetype i = 0; i < some.size(); ++i)
        largest = std::max(largest, std::abs(some[i] - others[i]));
    return largest;
}

GstElement *cropElement()
{
    return g_gst_Pipeline.videocrop;
}

int cropOf(const char *side)
{
    int value = -1;
    g_object_get(cropElement(), side, &value, nullptr);
    return value;
}

} // namespace

class TestMedia : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        for (quint8 *&buffer : g_pcFrameBuffer)
            buffer = static_cast<quint8 *>(calloc(1, kFrameBytes));
    }

    void cleanup()
    {
        gst_EndVideoInputPipeline();
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    }

    void zoomMarginsAreTheTables_data()
    {
        QTest::addColumn<int>("step");
        for (int step = 0; step <= 10; ++step)
            QTest::addRow("%d", step) << step;
    }
    void zoomMarginsAreTheTables()
    {
        QFETCH(const int, step);
        const auto [a, b] = zoom::pipelineCrop(static_cast<unsigned char>(step));
        QCOMPARE(a, step * 20);
        QCOMPARE(b, step * 16);
    }

    void theLiveCropIsCentredAndTheStillsCrossed()
    {
        QCOMPARE(zoom::liveCrop(0), QRect(0, 0, 720, 576));
        QCOMPARE(zoom::liveCrop(1), QRect(20, 16, 680, 544));
        QCOMPARE(zoom::stillCutOut(0), QRect(0, 0, 720, 576));
        QCOMPARE(zoom::stillCutOut(1), QRect(16, 20, 680, 544));
        QCOMPARE(zoom::label(10), u"2.0x"_s);
    }

    void launchDescriptionsTakeTheRoles()
    {
        QCOMPARE(
            videoInputLaunch(eGSTStateLiveVideo, boardRoles()),
            u"mfw_v4lsrc do-timestamp=true ! queue ! videocrop name=videocrop ! videoscale add-borders=false "
            "name=videoscale ! video/x-raw, width=720, height=576 ! tee name=videooutTee ! queue ! "
            "mfw_v4lsink "
            "deinterlace=true name=videosink videooutTee. ! queue ! mfw_ipucsc ! video/x-raw, format=RGB16, "
            "width=720, height=576 ! appsink name=appsink max-buffers=1 drop=true"_s);
        const QString withAudio = videoInputLaunch(eGSTStateRecordingWithAudio, boardRoles());
        QVERIFY(withAudio.startsWith(u"mfw_v4lsrc do-timestamp=true queue-size=10 ! videoscale "_s));
        QVERIFY(withAudio.contains(u"framerate=15/1"_s));
        QVERIFY(!withAudio.contains(u"mfw_v4lsink"_s)); // the GUI alone shows a recording
        const QString silent = videoInputLaunch(eGSTStateRecordingWithoutAudio, boardRoles());
        QVERIFY(silent.contains(u"queue leaky=2 ! vpuenc codec=12 name=jpegencode"_s));
        QVERIFY(!silent.contains(u"alsasrc"_s));
        QCOMPARE(layoutForMode(eGSTStateError), eGSTStateLiveVideo);
        QCOMPARE(layoutForMode(eGSTStateVideoRecordError), eGSTStateLiveVideo);
        QCOMPARE(withProperties(u"a x=1 ! b"_s, u"n=2"_s), u"a x=1 n=2 ! b"_s);
    }

    void boardConfOverridesARole()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, "[roles]\ncamera=\"v4l2src device=\\\"${root}/dev/video0\\\"\"\n");
        QCOMPARE(boardElements().camera, u"v4l2src device=\"%1/dev/video0\""_s.arg(unit::root()));
        QVERIFY(boardElements().cameraQueueOption.isEmpty());
        QCOMPARE(boardElements().converter, u"videoconvert"_s);
        QVERIFY(displayDraws(boardElements()));
        useRoles(folder, kDesk);
        QVERIFY(!displayDraws(boardElements()));
    }

    // What the GUI magnifies is the whole frame: live as while a film is recorded.
    void theLivePictureArrivesWholeAndItsDisplayIsCropped()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, kDesk);
        const int before = nBuffers;
        gst_VideoInputPipeline(0);
        QTRY_VERIFY(nBuffers > before + 3);
        QVERIFY(g_InputFrameReady);
        gst_SetZoomLevel(10);
        QCOMPARE(cropOf("top"), 200);
        QCOMPARE(cropOf("left"), 200);
        QCOMPARE(cropOf("bottom"), 160);
        QCOMPARE(cropOf("right"), 160);
        const QByteArray whole = frame();
        const int zoomed = nBuffers;
        QTRY_VERIFY(nBuffers > zoomed + 3);
        QCOMPARE(frame().left(kBarBytes), whole.left(kBarBytes));
    }

    void exactlyOnePipelineLives()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, kDesk);
        gst_VideoInputPipeline(0);
        gst_VideoInputPipeline(0); // a second build ends the first
        GstElement *second = g_gst_Pipeline.pipeline;
        gst_object_ref(second);

        gst_SendVideoInputPipelineEOS(false); // twice, as an impatient finger does
        gst_SendVideoInputPipelineEOS(false);
        QTRY_VERIFY(g_gst_Pipeline.pipeline && g_gst_Pipeline.pipeline != second);
        QCOMPARE(GST_STATE(second), GST_STATE_NULL);
        gst_object_unref(second);
        const int rebuilt = nBuffers;
        QTRY_VERIFY(nBuffers > rebuilt + 3);

        gst_SendVideoInputPipelineEOS(true);
        QTRY_VERIFY(!g_gst_Pipeline.pipeline);
        gst_SetZoomLevel(3); // nothing to crop, nothing to touch
        gst_PauseVideoInputPipeline();
        g_gst_VideoPipelineMode = eGSTStateError;
        gst_SendVideoInputPipelineEOS(false); // no pipeline to wait for: built at once, as the live layout
        QVERIFY(g_gst_Pipeline.pipeline);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateLiveVideo);
        QVERIFY(cropElement());
    }

    void textsAreShownAsTypedAndTheirEndsForgotten()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, kDesk);
        gst_UpdateVideoDamageCatelog("lost", 4); // no overlay in the live layout: not remembered
        gst_UpdateVideoMeterCount("100.00 m", 8);
        gst_UpdateVideoMeterCount("1.00 m", 6);
        gst_EnableAudioRecording(0);
        gst_VideoInputPipeline(0);
        const QByteArray film = unit::path(u"/film.avi"_s).toUtf8();
        gst_StartRecordingAVIFile(film.constData(), int(film.size()));
        QTRY_VERIFY(g_gst_Pipeline.videosavesink);
        const auto textOf = [](GstElement *overlay) {
            gchar *text = nullptr;
            g_object_get(overlay, "text", &text, nullptr);
            return QString::fromUtf8(GTextOwner(text).get());
        };
        QCOMPARE(textOf(g_gst_Pipeline.meterCount), u"1.00 m"_s);
        QCOMPARE(textOf(g_gst_Pipeline.damageCatelog), QString());
        gst_UpdateVideoDamageCatelog("a < b & c", 9);
        QCOMPARE(textOf(g_gst_Pipeline.damageCatelog), u"a &lt; b &amp; c"_s);
        gst_UpdateVideoDamageCatelog("", 0);
        gboolean silent = FALSE;
        g_object_get(g_gst_Pipeline.damageCatelog, "silent", &silent, nullptr);
        QVERIFY(silent);
        gst_SendVideoInputPipelineEOS(true);
        QTRY_VERIFY(!g_gst_Pipeline.pipeline);
        QVERIFY(QFile(QString::fromUtf8(film)).size() > 0);
    }

    void filmScreenAndPlaybackShowTheSameColours_data()
    {
        QTest::addColumn<QByteArray>("camera");
        QTest::newRow("as PAL has it") << QByteArray("I420,width=720,height=576,colorimetry=bt601");
        QTest::newRow("full range") << QByteArray("I420,width=720,height=576,colorimetry=1:4:0:0");
        QTest::newRow("another size") << QByteArray("YUY2,width=640,height=480");
    }
    void filmScreenAndPlaybackShowTheSameColours()
    {
        QFETCH(const QByteArray, camera);
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, "[roles]\ndisplay=fakesink sync=true\nconverter=videoconvert\n"
                         "speaker=fakesink sync=true\ncamera=\"videotestsrc is-live=true ! "
                         "video/x-raw,framerate=25/1,format=" +
                             camera + "\"\n");
        gst_EnableAudioRecording(0);
        const QString film = unit::path(u"/film.avi"_s);
        const int before = nBuffers;
        gst_StartRecordingAVIFile(film.toUtf8().constData(), int(film.toUtf8().size()));
        QTRY_VERIFY(nBuffers > before + 10);
        const QList<int> screen = barsOnScreen();
        gst_EndVideoInputPipeline();
        QVERIFY(largestDifference(barsInFilm(film), screen) <= 8);
        gst_VideoPlayback(film.toUtf8().constData(), 0);
        QTRY_VERIFY(g_FilmFrameReady);
        QVERIFY(largestDifference(barsOnScreen(), screen) <= 8);
        gst_StopVideoFilePipeline();
    }

    void whatDoesNotFitTogetherIsAMarkAndNoEnd()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, kDesk + "jpegencoder=audioconvert\n");
        gst_EnableAudioRecording(0);
        gst_StartRecordingAVIFile("/tmp/none", 9);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
        QVERIFY(!g_gst_Pipeline.pipeline);
        g_gst_VideoPipelineMode = eGSTStateStreaming;
        gst_VideoInputPipeline(0);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateLiveVideo);
        useRoles(folder, "[roles]\ncamera=audiotestsrc\ndisplay=fakesink\n");
        gst_VideoInputPipeline(0);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateError);
    }

    void aFilmThatCannotBeWrittenMarksTheErrorAndEnds()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder, kDesk);
        gst_EnableAudioRecording(0);
        g_terminate = false;
        gst_VideoInputPipeline(0);
        const QByteArray nowhere = unit::path(u"/none/film.avi"_s).toUtf8();
        gst_StartRecordingAVIFile(nowhere.constData(), int(nowhere.size()));
        QTRY_COMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
        // The live layout comes back by itself within the limit; the mark stays for whoever ends the
        // recording.
        QTRY_VERIFY_WITH_TIMEOUT(g_gst_Pipeline.videocrop, 6000);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
    }

    void aBrokenCameraLeavesTheErrorMarkAndNoPipeline()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        useRoles(folder,
                 "[roles]\ncamera=videotestsrc is-live=true num-buffers=100 ! identity error-after=5\n"
                 "display=fakesink sync=true\n");
        gst_VideoInputPipeline(0);
        QTRY_COMPARE(g_gst_VideoPipelineMode, eGSTStateError);
        QVERIFY(!g_gst_Pipeline.pipeline);
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "test_media.moc"
