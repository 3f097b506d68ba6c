#include "media/framecopy.h"

#include "media/gst_includes.h"

#include <gst/video/video.h>

#include <libyuv.h>

namespace {

constexpr int kFrameStride = kFrameWidth * 2; // bytes

const libyuv::YuvConstants *matrixOf(const GstVideoColorimetry &colours)
{
    const bool isFull = colours.range == GST_VIDEO_COLOR_RANGE_0_255;
    if (colours.matrix == GST_VIDEO_COLOR_MATRIX_BT709)
        return isFull ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    return isFull ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
}

const quint8 *plane(const GstVideoFrame &picture, int number)
{
    return static_cast<const quint8 *>(GST_VIDEO_FRAME_PLANE_DATA(&picture, number));
}

int stride(const GstVideoFrame &picture, int number)
{
    return GST_VIDEO_FRAME_PLANE_STRIDE(&picture, number);
}

bool put(const GstVideoFrame &picture, quint8 *buffer)
{
    switch (GST_VIDEO_FRAME_FORMAT(&picture)) {
    case GST_VIDEO_FORMAT_RGB16:
        libyuv::CopyPlane(plane(picture, 0), stride(picture, 0), buffer, kFrameStride, kFrameStride,
                          kFrameHeight);
        return true;
    case GST_VIDEO_FORMAT_I420:
        return libyuv::I420ToRGB565Matrix(plane(picture, 0), stride(picture, 0), plane(picture, 1),
                                          stride(picture, 1), plane(picture, 2), stride(picture, 2), buffer,
                                          kFrameStride, matrixOf(picture.info.colorimetry), kFrameWidth,
                                          kFrameHeight) == 0;
    default:
        return false;
    }
}

} // namespace

bool copyNextFrame(GstAppSink *appsink, quint8 *buffer)
{
    GstSample *sample = gst_app_sink_pull_sample(appsink);
    if (!sample)
        return false;
    const bool copied = putFrame(sample, buffer);
    gst_sample_unref(sample);
    return copied;
}

bool putFrame(GstSample *sample, quint8 *buffer)
{
    GstVideoInfo info;
    GstVideoFrame picture;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) ||
        GST_VIDEO_INFO_WIDTH(&info) != kFrameWidth || GST_VIDEO_INFO_HEIGHT(&info) != kFrameHeight ||
        !gst_video_frame_map(&picture, &info, gst_sample_get_buffer(sample), GST_MAP_READ))
        return false;
    const bool isPut = put(picture, buffer);
    gst_video_frame_unmap(&picture);
    return isPut;
}
