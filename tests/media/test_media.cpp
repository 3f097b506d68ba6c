#include "media/media.h"

using namespace Qt::StringLiterals;

namespace {

const QByteArray kCamera = "videotestsrc is-live=true";

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

    void theLivePictureArrivesAndIsCropped()
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
        QVERIFY(pictureRuns()); // the smaller cut-out still comes as a whole frame
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

    void aFilmThatCannotBeWrittenMarksTheErrorAndEnds()
    {
        useCamera(m_folder, kCamera);
        gst_EnableAudioRecording(0);
        g_terminate = false;
        gst_VideoInputPipeline(0);
        const QByteArray nowhere = unit::path(u"/none/film.avi"_s).toUtf8();
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
