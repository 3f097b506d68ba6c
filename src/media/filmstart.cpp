#include "media/filmstart.h"

namespace {

using SharedStart = std::shared_ptr<FilmStart>;

SharedStart &startOf(gpointer data)
{
    return *static_cast<SharedStart *>(data);
}

gulong addProbe(GstPad *pad, int type, GstPadProbeCallback callback, const SharedStart &start)
{
    return gst_pad_add_probe(pad, static_cast<GstPadProbeType>(type), callback, new SharedStart(start),
                             [](gpointer data) { delete static_cast<SharedStart *>(data); });
}

// On the sound's streaming thread: the first packet, or an end without one, lets the pictures go.
GstPadProbeReturn soundArrives(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    FilmStart &start = *startOf(data);
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) {
        const GstClockTime time = GST_BUFFER_PTS(gst_pad_probe_info_get_buffer(info));
        start.firstSound = GST_CLOCK_TIME_IS_VALID(time) ? time : 0;
        start.hasSound = true;
    } else if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) != GST_EVENT_EOS) {
        return GST_PAD_PROBE_OK;
    }
    gst_pad_remove_probe(start.pictures, start.block);
    return GST_PAD_PROBE_REMOVE;
}

// On the pictures' streaming thread, behind the block: the picture nearest to the first sound is the first.
GstPadProbeReturn pictureArrives(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    const GstBuffer *picture = gst_pad_probe_info_get_buffer(info);
    const GstClockTime half = GST_BUFFER_DURATION_IS_VALID(picture) ? GST_BUFFER_DURATION(picture) / 2 : 0;
    return GST_BUFFER_PTS(picture) + half < startOf(data)->firstSound ? GST_PAD_PROBE_DROP
                                                                      : GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn wait(GstPad *, GstPadProbeInfo *, gpointer)
{
    return GST_PAD_PROBE_OK;
}

} // namespace

std::shared_ptr<const FilmStart> startTogether(GstElement *pictureQueue, GstElement *soundQueue)
{
    const GstOwner<GstPad> pictures(gst_element_get_static_pad(pictureQueue, "src"));
    const GstOwner<GstPad> sounds(gst_element_get_static_pad(soundQueue, "src"));
    const auto start = std::make_shared<FilmStart>();
    start->pictures = pictures.get();
    start->block = gst_pad_add_probe(
        pictures.get(), static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BLOCK | GST_PAD_PROBE_TYPE_BUFFER),
        wait, nullptr, nullptr);
    addProbe(pictures.get(), GST_PAD_PROBE_TYPE_BUFFER, pictureArrives, start);
    addProbe(sounds.get(), GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, soundArrives,
             start);
    return start;
}

bool isBefore(GstElement *element, GstObject *other)
{
    for (GstOwner<GstElement> here(GST_ELEMENT(gst_object_ref(element))); here;) {
        if (gst_object_has_as_ancestor(other, GST_OBJECT(here.get())))
            return true;
        const GstOwner<GstPad> sink(gst_element_get_static_pad(here.get(), "sink"));
        const GstOwner<GstPad> peer(sink ? gst_pad_get_peer(sink.get()) : nullptr);
        here.reset(peer ? gst_pad_get_parent_element(peer.get()) : nullptr);
    }
    return false;
}
