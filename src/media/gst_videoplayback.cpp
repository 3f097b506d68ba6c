#include "media/gst_videoplayback.h"

#include "media/boardelements.h"
#include "media/framecopy.h"
#include "media/gst_videoinput.h"
#include "media/playbackmedia.h"

struct_VideoPlaybackPipeline g_gst_PlaybackPipeline = {};
eGstreamerState g_GstreamerVideoPlaybackPipelineState = eGSTStateNull;
std::atomic<quint64> g_VideoLen = 0;
std::atomic<quint8> g_PercentPlayback = 0;
std::atomic<bool> g_FilmFrameReady = false;
GMainLoop *g_VideoPlayback_loop = nullptr;

namespace {

// Of playbin's flags: video, audio, and a volume of its own, since a speaker without one makes it warn.
constexpr guint kPlayFlags = 0x1 | 0x2 | 0x10;

// A film that stands has its next picture at hand; one whose card hangs must not hold the screen.
constexpr GstClockTime kPauseLimit = GST_SECOND / 2;

guint g_busWatch = 0;

void printTime(gint64 position, quint64 length)
{
    g_print("Time: %" GST_TIME_FORMAT " / %" GST_TIME_FORMAT "\n", GST_TIME_ARGS(position),
            GST_TIME_ARGS(length));
}

// appsink "new-sample", on a streaming thread.
GstFlowReturn fileplayback_new_buffer(GstAppSink *appsink, gpointer playbin)
{
    if (copyNextFrame(appsink, g_pcFrameBuffer[g_fbOutIdx]))
        g_FilmFrameReady = true;
    gint64 position = 0;
    if (gst_element_query_position(GST_ELEMENT(playbin), GST_FORMAT_TIME, &position)) {
        g_PercentPlayback = percentPlayed(position, g_VideoLen);
        printTime(position, g_VideoLen);
    }
    return GST_FLOW_OK;
}

void release()
{
    if (!g_gst_PlaybackPipeline.playbin2)
        return;
    if (g_busWatch)
        g_source_remove(g_busWatch);
    g_busWatch = 0;
    gst_element_set_state(g_gst_PlaybackPipeline.playbin2, GST_STATE_NULL);
    gst_object_unref(g_gst_PlaybackPipeline.playbin2);
    g_gst_PlaybackPipeline = {};
    if (g_VideoPlayback_loop)
        g_main_loop_quit(g_VideoPlayback_loop);
}

// The watch is removed with its pipeline, so a message always belongs to the film that plays.
gboolean VideoPlayback_bus_call(GstBus *, GstMessage *message, gpointer)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        g_print("Video Playback Pipeline: [EOS DETECTED]\n");
        release();
        g_GstreamerVideoPlaybackPipelineState = eGSTStateReady;
        break;
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_WARNING:
        printMediaFault(message);
        release();
        g_GstreamerVideoPlaybackPipelineState = eGSTStateError;
        break;
    case GST_MESSAGE_STATE_CHANGED:
        printStateChange("VideoPlayback", message);
        break;
    default:
        break;
    }
    return TRUE;
}

//  video_sink_bin:  converter ! videoscale ! RGB16 720 x 576 ! appsink
GstElement *makeVideoSink()
{
    return roleElement(boardElements().converter +
                           QStringLiteral(" ! videoscale ! video/x-raw, format=RGB16, width=%1, height=%2 ! "
                                          "appsink name=video_sink emit-signals=true max-buffers=2")
                               .arg(kFrameWidth)
                               .arg(kFrameHeight),
                       "video_sink_bin");
}

// Gives the sinks to `playbin`, which owns them then.
bool fitSinks(GstElement *playbin)
{
    GstElement *picture = makeVideoSink();
    if (!picture)
        return false;
    g_gst_PlaybackPipeline.Bin = picture;
    const GstOwner<GstElement> appsink(gst_bin_get_by_name(GST_BIN(picture), "video_sink"));
    g_signal_connect(appsink.get(), "new-sample", G_CALLBACK(fileplayback_new_buffer), playbin);
    g_object_set(playbin, "video-sink", picture, "flags", kPlayFlags, nullptr);
    if (GstElement *sound = roleElement(boardElements().speaker, "audio_sink"))
        g_object_set(playbin, "audio-sink", sound, nullptr);
    return true;
}

} // namespace

void gst_VideoPlayback(const char *filenameandpath, double duration)
{
    release();
    g_VideoLen = duration > 0 ? static_cast<quint64>(duration) : 0;
    g_PercentPlayback = 0;
    g_FilmFrameReady = false;
    g_GstreamerVideoPlaybackPipelineState = eGSTStateError;
    const GTextOwner uri(gst_filename_to_uri(filenameandpath, nullptr));
    GstElement *playbin = gst_element_factory_make("playbin", "playbin2");
    if (!uri || !playbin) {
        g_printerr("tubix4: no playbin for %s; package: gstreamer1.0-plugins-base\n", filenameandpath);
        if (playbin)
            gst_object_unref(playbin);
        return;
    }
    g_gst_PlaybackPipeline.playbin2 = static_cast<GstElement *>(gst_object_ref_sink(playbin));
    if (!fitSinks(playbin)) {
        release();
        return;
    }
    g_object_set(playbin, "uri", uri.get(), nullptr);
    const GstOwner<GstBus> bus(gst_element_get_bus(playbin));
    g_busWatch = gst_bus_add_watch(bus.get(), VideoPlayback_bus_call, nullptr);
    // The words say NULL although it starts; service staff know the line as it is.
    g_print("Video Playback Pipeline: [CREATED][NULL]\n");
    gst_element_set_state(playbin, GST_STATE_PLAYING);
    g_GstreamerVideoPlaybackPipelineState = eGSTStatePlaying;
}

void gst_QueueVideoFilePipeline()
{
    g_GstreamerVideoPlaybackPipelineState = eGSTStateQueued;
}

void gst_PauseVideoFilePipeline()
{
    if (!g_gst_PlaybackPipeline.playbin2)
        return;
    gst_element_set_state(g_gst_PlaybackPipeline.playbin2, GST_STATE_PAUSED);
    gst_element_get_state(g_gst_PlaybackPipeline.playbin2, nullptr, nullptr, kPauseLimit);
    g_GstreamerVideoPlaybackPipelineState = eGSTStatePaused;
}

void gst_PlayVideoFilePipeline()
{
    if (!g_gst_PlaybackPipeline.playbin2)
        return;
    gst_element_set_state(g_gst_PlaybackPipeline.playbin2, GST_STATE_PLAYING);
    g_GstreamerVideoPlaybackPipelineState = eGSTStatePlaying;
}

void gst_StopVideoFilePipeline()
{
    switch (g_GstreamerVideoPlaybackPipelineState) {
    case eGSTStateQueued:
    case eGSTStatePaused:
    case eGSTStatePlaying:
        release();
        g_GstreamerVideoPlaybackPipelineState = eGSTStateNull;
        break;
    default:
        break;
    }
}
