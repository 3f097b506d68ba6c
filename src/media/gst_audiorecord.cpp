#include "media/gst_audiorecord.h"

#include "media/boardelements.h"
#include "media/playbackmedia.h"

struct_AudioRecordPipeline g_gst_AudioRecordPipeline = {};
eGstreamerState g_GstreamerAudioRecordPipelineState = eGSTStateNull;
GMainLoop *g_AudioRecordPipeline_loop = nullptr;

namespace {

constexpr GstClockTime kEndLimit = 3 * GST_SECOND;

// Idle, with the file closed and the sink free for the next name.
void finish()
{
    gst_element_set_state(g_gst_AudioRecordPipeline.pipeline, GST_STATE_NULL);
    gst_element_unlink(g_gst_AudioRecordPipeline.audioEncoder, g_gst_AudioRecordPipeline.audioFileSink);
    g_print("Audio Record Pipeline: [UNLINKED]\n");
    g_GstreamerAudioRecordPipelineState = eGSTStateNull;
}

gboolean AudioRecordPipeline_bus_call(GstBus *, GstMessage *message, gpointer)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        g_print("Audio Record Pipeline: [EOS DETECTED]\n");
        finish();
        break;
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_WARNING: // as fatal as an error, on purpose
        printMediaFault(message);
        if (g_AudioRecordPipeline_loop)
            g_main_loop_quit(g_AudioRecordPipeline_loop);
        g_GstreamerAudioRecordPipelineState = eGSTStateError;
        break;
    case GST_MESSAGE_STATE_CHANGED:
        printStateChange("Audio Record", message);
        break;
    default:
        break;
    }
    return TRUE;
}

} // namespace

//  audioSrc (microphone) ! audioConverter ! audioEncoder (wavenc)  -  audioFileSink, linked for each note
void gst_AudioRecordPipeline()
{
    if (g_gst_AudioRecordPipeline.pipeline)
        return;
    struct_AudioRecordPipeline made = {};
    made.pipeline = gst_pipeline_new("AudioRecordPipeline");
    made.audioSrc = roleElement(boardElements().microphone, "audioSrc");
    made.audioConverter = gst_element_factory_make("audioconvert", "audioConverter");
    made.audioEncoder = gst_element_factory_make("wavenc", "audioEncoder");
    made.audioFileSink = gst_element_factory_make("filesink", "audioFileSink");
    const auto parts = {made.audioSrc, made.audioConverter, made.audioEncoder, made.audioFileSink};
    bool whole = made.pipeline != nullptr;
    for (GstElement *part : parts)
        whole = whole && part;
    if (!whole) {
        g_printerr("One element could not be created. Exiting.\n");
        for (GstElement *part :
             {made.audioSrc, made.audioConverter, made.audioEncoder, made.audioFileSink, made.pipeline}) {
            if (part)
                gst_object_unref(part);
        }
        return;
    }
    const GstOwner<GstBus> bus(gst_element_get_bus(made.pipeline));
    gst_bus_add_watch(bus.get(), AudioRecordPipeline_bus_call, nullptr);
    for (GstElement *part : parts)
        gst_bin_add(GST_BIN(made.pipeline), part);
    gst_element_link_many(made.audioSrc, made.audioConverter, made.audioEncoder, nullptr);
    g_print("Audio Record Pipeline: [CREATED][NULL]\n");
    gst_element_set_state(made.pipeline, GST_STATE_NULL);
    g_gst_AudioRecordPipeline = made;
    g_GstreamerAudioRecordPipelineState = eGSTStateNull;
}

void StartAudioRecording(const char *path)
{
    if (!g_gst_AudioRecordPipeline.pipeline || g_GstreamerAudioRecordPipelineState != eGSTStateNull)
        return;
    g_object_set(g_gst_AudioRecordPipeline.audioFileSink, "location", path, nullptr);
    gst_element_link(g_gst_AudioRecordPipeline.audioEncoder, g_gst_AudioRecordPipeline.audioFileSink);
    g_print("Audio Record Pipeline: [CREATED][PLAYING]\n");
    gst_element_set_state(g_gst_AudioRecordPipeline.pipeline, GST_STATE_PLAYING);
    g_GstreamerAudioRecordPipelineState = eGSTStateRecordingAudio;
}

void gst_StopAudioRecording()
{
    if (!g_gst_AudioRecordPipeline.pipeline || g_GstreamerAudioRecordPipelineState == eGSTStateNull)
        return;
    if (g_GstreamerAudioRecordPipelineState == eGSTStateRecordingAudio) {
        g_print("Audio Record Pipeline: [SENDING EOS]\n");
        sendEnd(g_gst_AudioRecordPipeline.pipeline);
        const GstOwner<GstBus> bus(gst_element_get_bus(g_gst_AudioRecordPipeline.pipeline));
        if (GstMessage *end = gst_bus_timed_pop_filtered(
                bus.get(), kEndLimit, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR))) {
            if (GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS)
                g_print("Audio Record Pipeline: [EOS DETECTED]\n");
            gst_message_unref(end);
        }
    }
    finish();
}
