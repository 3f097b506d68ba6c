#include "media/framecopy.h"

#include "media/gst_includes.h"

#include <cstring>

bool copyNextFrame(GstAppSink *appsink, quint8 *buffer)
{
    GstSample *sample = gst_app_sink_pull_sample(appsink);
    if (!sample)
        return false;
    bool copied = false;
    GstMapInfo map;
    GstBuffer *picture = gst_sample_get_buffer(sample);
    if (picture && gst_buffer_map(picture, &map, GST_MAP_READ)) {
        copied = map.size >= kFrameBytes;
        if (copied)
            std::memcpy(buffer, map.data, kFrameBytes);
        gst_buffer_unmap(picture, &map);
    }
    gst_sample_unref(sample);
    return copied;
}
