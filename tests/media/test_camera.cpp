// The simulated unit's camera and what its dials do to it.
#include "testunit.h"

#include "../../simulator/camera/colourchart.h"

#include <QImage>
#include <QTest>

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

using namespace Qt::StringLiterals;

namespace {

// A running camera whose pictures are pulled as RGB.
class Camera
{
public:
    Camera()
    {
        m_pipeline = gst_parse_launch(
            qPrintable(
                u"pipecamera device=\"%1\" ! videoconvert ! video/x-raw,format=RGB ! appsink name=sink "
                "max-buffers=1 drop=true"_s.arg(unit::path(u"/dev/video0"_unit))),
            nullptr);
        m_sink = GST_APP_SINK(gst_bin_get_by_name(GST_BIN(m_pipeline), "sink"));
        gst_element_set_state(m_pipeline, GST_STATE_PLAYING);
    }
    ~Camera()
    {
        gst_element_set_state(m_pipeline, GST_STATE_NULL);
        gst_object_unref(m_sink);
        gst_object_unref(m_pipeline);
    }
    Q_DISABLE_COPY_MOVE(Camera)

    // The next picture and its running time; null when none comes within that many milliseconds.
    QImage next(int patience = 10000)
    {
        GstSample *sample = gst_app_sink_try_pull_sample(m_sink, GstClockTime(patience) * GST_MSECOND);
        GstVideoInfo info;
        GstVideoFrame frame;
        if (!sample)
            return {};
        gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
        time = GST_BUFFER_PTS(gst_sample_get_buffer(sample));
        gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ);
        const QImage image =
            QImage(static_cast<uchar *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)), info.width, info.height,
                   GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), QImage::Format_RGB888)
                .copy();
        gst_video_frame_unmap(&frame);
        gst_sample_unref(sample);
        return image;
    }

    GstClockTime time = 0;

private:
    GstElement *m_pipeline;
    GstAppSink *m_sink;
};

} // namespace

class TestCamera : public HeardTest
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void theFirstPictureComesLate()
    {
        const TestUnit folder;
        folder.control("camera delay 0.8"_L1);
        Camera camera;
        QVERIFY(!camera.next().isNull());
        QVERIFY(camera.time >= 800 * GST_MSECOND); // later where the machine is late
    }

    void aSilentCameraEndsInTimeAndComesBack()
    {
        const TestUnit folder;
        folder.control("camera silent"_L1);
        Camera camera;
        QVERIFY(camera.next(300).isNull());
        folder.control("camera back"_L1);
        QVERIFY(!camera.next().isNull());
        folder.control("camera silent"_L1);
    } // the pipeline's end does not wait for a picture

    void aFrozenPictureStays()
    {
        const TestUnit folder;
        folder.control("camera pipe"_L1);
        Camera camera;
        QVERIFY(!camera.next().isNull());
        folder.control("camera freeze"_L1);
        QImage still;
        QTRY_VERIFY(std::exchange(still, camera.next()) == still); // two in a row, the water stands
        folder.control("meter 12"_L1);
        for (int picture = 0; picture < 5; ++picture)
            QCOMPARE(camera.next(), still);
        folder.control("camera back"_L1);
        QTRY_VERIFY(camera.next() != still);
    }

    void theChartHasItsColours_data()
    {
        QTest::addColumn<QString>("size");
        QTest::newRow("PAL") << u"720x576"_s;
        QTest::newRow("another size") << u"640x480"_s;
    }

    void theChartHasItsColours()
    {
        QFETCH(QString, size);
        const TestUnit folder;
        folder.control("camera chart"_L1);
        folder.control({u"camera"_s, u"size"_s, size});
        const QImage image = Camera().next();
        QCOMPARE(u"%1x%2"_s.arg(image.width()).arg(image.height()), size);
        for (int i = 0; i < int(pipecam::kPatches.size()); ++i) {
            const pipecam::Patch &patch = pipecam::kPatches[size_t(i)];
            const QColor seen = image.pixelColor(pipecam::patchX(i) * image.width() / pipecam::kWidth,
                                                 pipecam::patchY(i) * image.height() / pipecam::kHeight);
            const int off = std::max({std::abs(seen.red() - patch.red), std::abs(seen.green() - patch.green),
                                      std::abs(seen.blue() - patch.blue)});
            QVERIFY2(off <= 6, qPrintable(u"%1: %2"_s.arg(QLatin1StringView(patch.name), seen.name())));
        }
    }
};

QTEST_GUILESS_MAIN(TestCamera)
#include "test_camera.moc"
