#include "media/fullrange.h"

#include <gst/video/video.h>

namespace {

// On the streaming thread, before the element learns of the new pictures. Its contrast turns about 16.
GstPadProbeReturn picturesChange(GstPad *, GstPadProbeInfo *info, gpointer balance)
{
    GstEvent *event = gst_pad_probe_info_get_event(info);
    if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS)
        return GST_PAD_PROBE_OK;
    GstCaps *caps = nullptr;
    GstVideoInfo pictures;
    gst_event_parse_caps(event, &caps);
    const bool isNarrow = gst_video_info_from_caps(&pictures, caps) && GST_VIDEO_INFO_IS_YUV(&pictures) &&
                          pictures.colorimetry.range == GST_VIDEO_COLOR_RANGE_16_235;
    g_object_set(balance, "contrast", isNarrow ? 255.0 / 219 : 1.0, "brightness",
                 isNarrow ? -16.0 / 255 : 0.0, "saturation", isNarrow ? 255.0 / 224 : 1.0, nullptr);
    return GST_PAD_PROBE_OK;
}

} // namespace

void stretchToFullRange(GstElement *balance)
{
    const GstOwner<GstPad> pad(gst_element_get_static_pad(balance, "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, picturesChange, balance, nullptr);
}
