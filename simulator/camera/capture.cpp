#include "capture.h"

#include "colourchart.h"

#include <cmath>

Capture::Capture(const std::string &device) : files(device), dials(device)
{
    gst_video_info_set_format(&m_pal, GST_VIDEO_FORMAT_I420, pipecam::kWidth, pipecam::kHeight);
    if (!dials.hasChart())
        m_picture.emplace(); // now: the first picture is not to wait for it
}

Capture::~Capture()
{
    scaleTo(m_pal);
}

void Capture::scaleTo(const GstVideoInfo &info)
{
    g_clear_pointer(&m_scaler, gst_video_converter_free);
    gst_clear_buffer(&m_drawn);
    if (info.width == m_pal.width && info.height == m_pal.height)
        return;
    m_pal.fps_n = info.fps_n;
    m_pal.fps_d = info.fps_d;
    m_scaler = gst_video_converter_new(&m_pal, &info, nullptr);
    m_drawn = gst_buffer_new_allocate(nullptr, m_pal.size, nullptr);
}

bool Capture::paint(GstBuffer *buffer, const GstVideoInfo &info, GstClockTime time)
{
    GstVideoFrame frame, drawn;
    if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE))
        return false;
    bool done = true;
    if (!m_scaler) {
        draw(frame, time);
    } else if (gst_video_frame_map(&drawn, &m_pal, m_drawn, GST_MAP_READWRITE)) {
        draw(drawn, time);
        gst_video_converter_frame(m_scaler, &drawn, &frame);
        gst_video_frame_unmap(&drawn);
    } else {
        done = false;
    }
    gst_video_frame_unmap(&frame);
    return done;
}

// The meter counts whole centimetres and is pushed in jerks; the camera glides after it.
void Capture::follow()
{
    const double target = files.meterCount() * 10.0;
    const double way = target - m_position;
    if (m_position < 0 || std::abs(way) > 1500 || std::abs(way) < 0.1)
        m_position = target;
    else
        m_position += way * 0.22;
    const double shake = std::abs(way) > 2 ? 1 : 0;
    m_sway += (shake - m_sway) * 0.06;
}

// What is frozen stays as it was, down to the last pixel.
void Capture::draw(GstVideoFrame &frame, GstClockTime time)
{
    const pipecam::Canvas canvas = {static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                                    static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1)),
                                    static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 2)),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1),
                                    GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 2)};
    if (!dials.isFrozen() || m_position < 0) {
        files.update();
        follow();
        m_seconds = static_cast<double>(time) / static_cast<double>(GST_SECOND);
    }
    if (!files.headAttached())
        pipecam::Picture::drawNoSignal(canvas);
    else if (dials.hasChart())
        pipecam::drawChart(canvas);
    else
        (m_picture ? *m_picture : m_picture.emplace())
            .draw(canvas, m_position, files.light(), m_seconds, m_sway);
}
