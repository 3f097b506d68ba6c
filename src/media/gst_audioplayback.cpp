#include "media/gst_audioplayback.h"

#include "media/boardelements.h"
#include "media/playbackmedia.h"

#include <cstdlib>

struct_AudioPlaybackPipeline g_gst_AudioPlaybackPipeline = {};
eGstreamerState g_GstreamerAudioPlaybackPipelineState = eGSTStateNull;
gint64 g_AudioLen = 0;
GMainLoop *g_AudioPlaybackPipeline_loop = nullptr;

namespace {

guint g_busWatch = 0;

void release()
{
    GstElement *&pipeline = g_gst_AudioPlaybackPipeline.pipeline;
    if (!pipeline)
        return;
    if (g_busWatch)
        g_source_remove(g_busWatch);
    g_busWatch = 0;
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    pipeline = nullptr;
}

void followState(GstMessage *message)
{
    printStateChange("Audio Playback", message);
    GstState now = GST_STATE_NULL;
    gst_message_parse_state_changed(message, nullptr, &now, nullptr);
    if (now == GST_STATE_PLAYING &&
        GST_MESSAGE_SRC(message) == GST_OBJECT(g_gst_AudioPlaybackPipeline.pipeline))
        gst_element_query_duration(g_gst_AudioPlaybackPipeline.pipeline, GST_FORMAT_TIME, &g_AudioLen);
}

// The watch is removed with its pipeline, so a message always belongs to the note that plays.
gboolean AudioPlaybackPipeline_bus_call(GstBus *, GstMessage *message, gpointer)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        g_print("Audio Playback Pipeline: [EOS DETECTED]\n");
        release();
        g_GstreamerAudioPlaybackPipelineState = eGSTStateReady;
        break;
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_WARNING: // as fatal as an error, on purpose
        printMediaFault(message);
        release();
        if (g_AudioPlaybackPipeline_loop)
            g_main_loop_quit(g_AudioPlaybackPipeline_loop);
        g_GstreamerAudioPlaybackPipelineState = eGSTStateError;
        break;
    case GST_MESSAGE_STATE_CHANGED:
        followState(message);
        break;
    default:
        break;
    }
    return TRUE;
}

} // namespace

//  wavfile (filesrc) ! wavparse ! audioconvert ! audioresample ! speaker
void gst_AudioPlaybackPipeline(const char *path)
{
    release();
    g_AudioLen = 0;
    const QString description =
        QStringLiteral("filesrc name=wavfile ! wavparse ! audioconvert ! audioresample ! ") +
        boardElements().speaker;
    GError *rawError = nullptr;
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), &rawError);
    const GErrorOwner error(rawError);
    if (error || !pipeline) {
        g_print("Parse error: %s\n", error ? error->message : "no pipeline");
        std::exit(1); // NOLINT(concurrency-mt-unsafe): the interface has it so
    }
    gst_element_set_name(pipeline, "AudioPlaybackPipeline");
    const GstOwner<GstElement> source(gst_bin_get_by_name(GST_BIN(pipeline), "wavfile"));
    g_object_set(source.get(), "location", path, nullptr);
    const GstOwner<GstBus> bus(gst_element_get_bus(pipeline));
    g_busWatch = gst_bus_add_watch(bus.get(), AudioPlaybackPipeline_bus_call, nullptr);
    g_gst_AudioPlaybackPipeline.pipeline = pipeline;
    g_print("Audio Playback Pipeline: [CREATED][PLAYING]\n");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    g_GstreamerAudioPlaybackPipelineState = eGSTStatePlaying;
}

void gst_PauseAudioPlayback()
{
    if (!g_gst_AudioPlaybackPipeline.pipeline)
        return;
    gst_element_set_state(g_gst_AudioPlaybackPipeline.pipeline, GST_STATE_PAUSED);
    g_GstreamerAudioPlaybackPipelineState = eGSTStatePaused;
}

void gst_ResumeAudioPlayback()
{
    if (!g_gst_AudioPlaybackPipeline.pipeline)
        return;
    gst_element_set_state(g_gst_AudioPlaybackPipeline.pipeline, GST_STATE_PLAYING);
    g_GstreamerAudioPlaybackPipelineState = eGSTStatePlaying;
}

void gst_StopAudioPlaybacking()
{
    if (g_GstreamerAudioPlaybackPipelineState != eGSTStatePaused &&
        g_GstreamerAudioPlaybackPipelineState != eGSTStatePlaying)
        return;
    release();
    g_GstreamerAudioPlaybackPipelineState = eGSTStateNull;
}

qint8 gst_getCurrentAudioPercentPlayed()
{
    gint64 position = 0;
    if (g_AudioLen < 1 || !g_gst_AudioPlaybackPipeline.pipeline ||
        !gst_element_query_position(g_gst_AudioPlaybackPipeline.pipeline, GST_FORMAT_TIME, &position))
        return 0;
    return static_cast<qint8>(percentPlayed(position, quint64(g_AudioLen)));
}
