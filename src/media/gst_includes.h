// What every pipeline shares: its states, the frame buffers, small owners of GStreamer objects.
#pragma once

#include <gst/gst.h>

#include <memory>

enum eGstreamerState {
    eGSTStateLiveVideo,
    eGSTStateQueued,
    eGSTStatePaused,
    eGSTStatePlaying,
    eGSTStateRecordingWithAudio,
    eGSTStateRecordingWithoutAudio,
    eGSTStateRecordingAudio,
    eGSTStateStreaming,
    eGSTStateNull,
    eGSTStateReady,
    eGSTStateError,
    eGSTStateVideoRecordError
};

inline constexpr int kFrameWidth = 720;
inline constexpr int kFrameHeight = 576;
inline constexpr gsize kFrameBytes = 829440; // 16-bit RGB 5-6-5

struct GstObjectRelease
{
    void operator()(void *object) const { gst_object_unref(object); }
};
template <typename T> using GstOwner = std::unique_ptr<T, GstObjectRelease>;

struct GErrorRelease
{
    void operator()(GError *error) const { g_error_free(error); }
};
using GErrorOwner = std::unique_ptr<GError, GErrorRelease>;

struct GMemoryRelease
{
    void operator()(gchar *text) const { g_free(text); }
};
using GTextOwner = std::unique_ptr<gchar, GMemoryRelease>;

// Sends an end of stream through the pipeline. To its sources, not to the pipeline as a whole: that would
// keep its state locked until the stream takes the event, while a stream that has just begun waits for that
// state.
inline void sendEnd(GstElement *pipeline)
{
    GstIterator *sources = gst_bin_iterate_sources(GST_BIN(pipeline));
    const auto send = [](const GValue *source, gpointer) {
        gst_element_send_event(GST_ELEMENT(g_value_get_object(source)), gst_event_new_eos());
    };
    gst_iterator_foreach(sources, send, nullptr);
    gst_iterator_free(sources);
}
