#include "media/filmstart.h"

#include <atomic>
#include <memory>

namespace {

struct Gate
{
    GstPad *pictures = nullptr; // not owned: what holds the gate hangs on it or beside it
    gulong block = 0;
    std::atomic<GstClockTime> firstSound = 0; // written before the block is taken away, read after
};
using SharedGate = std::shared_ptr<Gate>;

SharedGate &gateOf(gpointer data)
{
    return *static_cast<SharedGate *>(data);
}

gulong addProbe(GstPad *pad, int type, GstPadProbeCallback callback, const SharedGate &gate)
{
    return gst_pad_add_probe(pad, static_cast<GstPadProbeType>(type), callback, new SharedGate(gate),
                             [](gpointer data) { delete static_cast<SharedGate *>(data); });
}

// On the sound's streaming thread: the first packet, or an end without one, lets the pictures go.
GstPadProbeReturn soundArrives(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    Gate &gate = *gateOf(data);
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) {
        const GstClockTime time = GST_BUFFER_PTS(gst_pad_probe_info_get_buffer(info));
        gate.firstSound = GST_CLOCK_TIME_IS_VALID(time) ? time : 0;
    } else if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) != GST_EVENT_EOS) {
        return GST_PAD_PROBE_OK;
    }
    gst_pad_remove_probe(gate.pictures, gate.block);
    return GST_PAD_PROBE_REMOVE;
}

// On the pictures' streaming thread, behind the block: the picture nearest to the first sound is the first.
GstPadProbeReturn pictureArrives(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    const GstBuffer *picture = gst_pad_probe_info_get_buffer(info);
    const GstClockTime half = GST_BUFFER_DURATION_IS_VALID(picture) ? GST_BUFFER_DURATION(picture) / 2 : 0;
    return GST_BUFFER_PTS(picture) + half < gateOf(data)->firstSound ? GST_PAD_PROBE_DROP
                                                                     : GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn wait(GstPad *, GstPadProbeInfo *, gpointer)
{
    return GST_PAD_PROBE_OK;
}

} // namespace

void startTogether(GstElement *pictureQueue, GstElement *soundQueue)
{
    const GstOwner<GstPad> pictures(gst_element_get_static_pad(pictureQueue, "src"));
    const GstOwner<GstPad> sounds(gst_element_get_static_pad(soundQueue, "src"));
    const auto gate = std::make_shared<Gate>();
    gate->pictures = pictures.get();
    gate->block = gst_pad_add_probe(
        pictures.get(), static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BLOCK | GST_PAD_PROBE_TYPE_BUFFER),
        wait, nullptr, nullptr);
    addProbe(pictures.get(), GST_PAD_PROBE_TYPE_BUFFER, pictureArrives, gate);
    addProbe(sounds.get(), GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, soundArrives,
             gate);
}

bool waitsForSound(GstElement *pictureQueue)
{
    const GstOwner<GstPad> pictures(gst_element_get_static_pad(pictureQueue, "src"));
    return gst_pad_is_blocked(pictures.get());
}
