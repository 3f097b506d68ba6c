#include "media/soundpackets.h"

#include <string_view>

namespace {

constexpr gsize kChunkHead = 8;

class WrittenPacket
{
public:
    WrittenPacket() = default;
    WrittenPacket(const WrittenPacket &) = delete;
    ~WrittenPacket() { release(); }

    void hold(GstBuffer *packet) { m_packet = gst_buffer_ref(packet); }

    void release()
    {
        if (!m_packet)
            return;
        if (GST_MINI_OBJECT_REFCOUNT_VALUE(m_packet) > 1)
            gst_buffer_unref(m_packet); // nobody's
        gst_buffer_unref(m_packet);
        m_packet = nullptr;
    }

    bool isNext = false; // the buffer before was a sound packet's head

private:
    GstBuffer *m_packet = nullptr;
};

bool isSoundHead(GstBuffer *buffer)
{
    char head[kChunkHead];
    return gst_buffer_get_size(buffer) == kChunkHead && gst_buffer_extract(buffer, 0, head, 4) == 4 &&
           std::string_view(head + 2, 2) == "wb";
}

// On the muxer's streaming thread. The muxer pushes head and packet as buffers of their own, and has done
// with a packet when the next one's head comes.
GstPadProbeReturn bufferLeaves(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    auto &written = *static_cast<WrittenPacket *>(data);
    GstBuffer *buffer = gst_pad_probe_info_get_buffer(info);
    if (written.isNext)
        written.hold(buffer);
    written.isNext = isSoundHead(buffer);
    if (written.isNext)
        written.release();
    return GST_PAD_PROBE_OK;
}

bool keepsSoundPackets(GstElement *muxer)
{
    const GstOwner<GstPlugin> plugin(
        gst_plugin_feature_get_plugin(GST_PLUGIN_FEATURE(gst_element_get_factory(muxer))));
    return plugin && std::string_view(gst_plugin_get_version(plugin.get())).starts_with("1.22.");
}

} // namespace

void releaseSoundPackets(GstElement *muxer)
{
    if (!keepsSoundPackets(muxer))
        return;
    const GstOwner<GstPad> pad(gst_element_get_static_pad(muxer, "src"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, bufferLeaves, new WrittenPacket,
                      [](gpointer data) { delete static_cast<WrittenPacket *>(data); });
}
