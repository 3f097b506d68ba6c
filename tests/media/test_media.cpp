#include "media/media.h"

#include "media/framecopy.h"
#include "media/gst_videoplayback.h"

#include <gst/video/video.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kCamera = "videotestsrc is-live=true";

constexpr int kBarBytes = 300 * kFrameWidth * 2; // the pattern's still part

QByteArray frame()
{
    return QByteArray(reinterpret_cast<const char *>(g_pcFrameBuffer[0]), kFrameBytes);
}

// Red, green, blue of the middle of each of the seven bars.
QList<int> barsOnScreen()
{
    const auto *pixels =
        static_cast<const quint16 *>(static_cast<const void *>(g_pcFrameBuffer[0])) + 200 * kFrameWidth;
    QList<int> bars;
    for (int x = 51; x < kFrameWidth; x += 103)
        bars << (pixels[x] >> 11) * 255 / 31 << (pixels[x] >> 5 & 63) * 255 / 63
             << (pixels[x] & 31) * 255 / 31;
    return bars;
}

QList<int> barsInFilm(const QString &film)
{
    const QByteArray pixels =
        output("ffmpeg -v error -i %1 -frames:v 1 -pix_fmt rgb24 -f rawvideo -", {film});
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

constexpr int kPatch = 16; // pixels: the chroma of a patch's middle is its own

// I420 in patches of one colour each, over all of Y, U and V.
GstBuffer *patches(const GstVideoInfo &info)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
    GstVideoFrame picture;
    gst_video_frame_map(&picture, &info, buffer, GST_MAP_WRITE);
    for (int plane = 0; plane < 3; ++plane) {
        const int side = plane == 0 ? kPatch : kPatch / 2;
        auto *row = static_cast<uchar *>(GST_VIDEO_FRAME_PLANE_DATA(&picture, plane));
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&picture, plane); ++y) {
            for (int x = 0; x < GST_VIDEO_FRAME_COMP_WIDTH(&picture, plane); ++x)
                row[x] = uchar((y / side * 45 + x / side) * (plane * 34 + 37));
            row += GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane);
        }
    }
    gst_video_frame_unmap(&picture);
    return buffer;
}

// As GStreamer's own converter has it.
QByteArray converted(GstBuffer *from, GstVideoInfo &info)
{
    GstVideoInfo screen;
    gst_video_info_set_format(&screen, GST_VIDEO_FORMAT_RGB16, kFrameWidth, kFrameHeight);
    QByteArray pixels(qsizetype(kFrameBytes), 0);
    GstBuffer *to = gst_buffer_new_wrapped_full(GstMemoryFlags(0), pixels.data(), kFrameBytes, 0, kFrameBytes,
                                                nullptr, nullptr);
    GstVideoFrame some, other;
    gst_video_frame_map(&some, &info, from, GST_MAP_READ);
    gst_video_frame_map(&other, &screen, to, GST_MAP_WRITE);
    GstVideoConverter *converter = gst_video_converter_new(&info, &screen, nullptr);
    gst_video_converter_frame(converter, &some, &other);
    gst_video_converter_free(converter);
    gst_video_frame_unmap(&other);
    gst_video_frame_unmap(&some);
    gst_buffer_unref(to);
    return pixels;
}

QList<int> middles(const QByteArray &pixels)
{
    QList<int> colours;
    const auto *pixel = static_cast<const quint16 *>(static_cast<const void *>(pixels.constData()));
    for (int y = kPatch / 2; y < kFrameHeight; y += kPatch) {
        for (int x = kPatch / 2; x < kFrameWidth; x += kPatch) {
            const int value = pixel[y * kFrameWidth + x];
            colours << (value >> 11) * 2 << (value >> 5 & 63) << (value & 31) * 2;
        }
    }
    return colours;
}

int cropOf(const char *side)
{
    int value = -1;
    g_object_get(g_gst_Pipeline.videocrop, side, &value, nullptr);
    return value;
}

} // namespace

class TestMedia : public HeardTest
{
    Q_OBJECT

    const TestUnit m_folder{{u"/home/root/tubix4_app"_s}};

private slots:
    void initTestCase() { startMedia(); }

    void cleanup()
    {
        gst_EndVideoInputPipeline();
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    }

    void boardConfOverridesARole()
    {
        m_folder.put(u"/home/root/tubix4_app/board.conf"_s,
                     "[roles]\ncamera=\"v4l2src device=\\\"${root}/dev/video0\\\"\"\n");
        resetBoardElementsForTests();
        QCOMPARE(boardElements().camera, u"v4l2src device=\"%1/dev/video0\""_s.arg(unit::root()));
        QVERIFY(boardElements().cameraQueueOption.isEmpty());
        QCOMPARE(boardElements().converter, u"videoconvert"_s);
        QVERIFY(displayDraws(boardElements()));
        useCamera(m_folder, kCamera);
        QVERIFY(!displayDraws(boardElements()));
    }

    // What the GUI magnifies is the whole frame: live as while a film is recorded.
    void theLivePictureArrivesWholeAndItsDisplayIsCropped()
    {
        useCamera(m_folder, kCamera);
        gst_VideoInputPipeline(0);
        QVERIFY(pictureRuns());
        QVERIFY(g_InputFrameReady);
        gst_SetZoomLevel(10);
        QCOMPARE(cropOf("top"), 200);
        QCOMPARE(cropOf("left"), 200);
        QCOMPARE(cropOf("bottom"), 160);
        QCOMPARE(cropOf("right"), 160);
        const QByteArray whole = frame();
        QVERIFY(pictureRuns());
        QCOMPARE(frame().left(kBarBytes), whole.left(kBarBytes));
    }

    void exactlyOnePipelineLives()
    {
        useCamera(m_folder, kCamera);
        gst_VideoInputPipeline(0);
        gst_VideoInputPipeline(0); // a second build ends the first
        GstElement *second = g_gst_Pipeline.pipeline;
        gst_object_ref(second);

        gst_SendVideoInputPipelineEOS(false); // twice, as an impatient finger does
        gst_SendVideoInputPipelineEOS(false);
        QTRY_VERIFY(g_gst_Pipeline.pipeline && g_gst_Pipeline.pipeline != second);
        QCOMPARE(GST_STATE(second), GST_STATE_NULL);
        gst_object_unref(second);
        QVERIFY(pictureRuns());

        gst_SendVideoInputPipelineEOS(true);
        QTRY_VERIFY(!g_gst_Pipeline.pipeline);
        gst_SetZoomLevel(3); // nothing to crop, nothing to touch
        gst_PauseVideoInputPipeline();
        g_gst_VideoPipelineMode = eGSTStateError;
        gst_SendVideoInputPipelineEOS(false); // no pipeline to wait for: built at once, as the live layout
        QVERIFY(g_gst_Pipeline.pipeline);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateLiveVideo);
        QVERIFY(g_gst_Pipeline.videocrop);
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
        useCamera(m_folder, "\"videotestsrc is-live=true ! video/x-raw,framerate=25/1,format=" + camera + '"',
                  "speaker=fakesink sync=true\n");
        gst_EnableAudioRecording(0);
        const HostPath film = unit::path(u"/film.avi"_unit);
        QFile::remove(film);
        const int before = nBuffers;
        gst_StartRecordingAVIFile(film.encoded().constData(), int(film.encoded().size()));
        QTRY_VERIFY_WITH_TIMEOUT(nBuffers > before + 10, 20000);
        const QList<int> screen = barsOnScreen();
        gst_EndVideoInputPipeline();
        QVERIFY(largestDifference(barsInFilm(film), screen) <= 8);
        gst_VideoPlayback(film.encoded().constData(), 0);
        QTRY_VERIFY(g_FilmFrameReady);
        QVERIFY(largestDifference(barsOnScreen(), screen) <= 8);
        gst_StopVideoFilePipeline();
    }

    // To a step of what five bits tell apart, and to two of an HD camera's: screen, film and playback agree.
    void aFrameHasTheConvertersColours_data()
    {
        QTest::addColumn<QByteArray>("colorimetry");
        QTest::addColumn<int>("steps");
        QTest::newRow("PAL") << QByteArray("bt601") << 1;
        QTest::newRow("PAL, full range") << QByteArray("1:4:0:0") << 1;
        QTest::newRow("HD") << QByteArray("bt709") << 2;
    }
    void aFrameHasTheConvertersColours()
    {
        QFETCH(const QByteArray, colorimetry);
        QFETCH(const int, steps);
        GstVideoInfo info;
        gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, kFrameWidth, kFrameHeight);
        gst_video_colorimetry_from_string(&info.colorimetry, colorimetry.constData());
        GstBuffer *picture = patches(info);
        GstCaps *caps = gst_video_info_to_caps(&info);
        GstSample *sample = gst_sample_new(picture, caps, nullptr, nullptr);
        QByteArray frame(qsizetype(kFrameBytes), 0);
        QVERIFY(putFrame(sample, reinterpret_cast<quint8 *>(frame.data())));
        QVERIFY(largestDifference(middles(frame), middles(converted(picture, info))) <= steps * 2);
        gst_sample_unref(sample);
        gst_caps_unref(caps);
        gst_buffer_unref(picture);
    }

    void whatDoesNotFitTogetherIsAMarkAndNoEnd()
    {
        useCamera(m_folder, kCamera, "jpegencoder=audioconvert\n");
        gst_EnableAudioRecording(0);
        gst_StartRecordingAVIFile("/tmp/none", 9);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
        QVERIFY(!g_gst_Pipeline.pipeline);
        g_gst_VideoPipelineMode = eGSTStateStreaming;
        gst_VideoInputPipeline(0);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateLiveVideo);
        useCamera(m_folder, "audiotestsrc");
        gst_VideoInputPipeline(0);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateError);
    }

    void aFilmThatCannotBeWrittenMarksTheErrorAndEnds()
    {
        useCamera(m_folder, kCamera);
        gst_EnableAudioRecording(0);
        g_terminate = false;
        gst_VideoInputPipeline(0);
        const QByteArray nowhere = unit::path(u"/none/film.avi"_unit).encoded();
        gst_StartRecordingAVIFile(nowhere.constData(), int(nowhere.size()));
        QTRY_COMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
        // The live layout comes back by itself within the limit; the mark stays for whoever ends the
        // recording.
        QTRY_VERIFY_WITH_TIMEOUT(g_gst_Pipeline.videocrop, 20000);
        QCOMPARE(g_gst_VideoPipelineMode, eGSTStateVideoRecordError);
    }

    void aBrokenCameraLeavesTheErrorMarkAndNoPipeline()
    {
        useCamera(m_folder, kCamera + " num-buffers=100 ! identity error-after=5");
        gst_VideoInputPipeline(0);
        QTRY_COMPARE(g_gst_VideoPipelineMode, eGSTStateError);
        QVERIFY(!g_gst_Pipeline.pipeline);
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "test_media.moc"
