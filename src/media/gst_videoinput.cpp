#include "media/gst_videoinput.h"

#include "media/videoinputparts.h"
#include "media/zoom.h"

#include <QLoggingCategory>

#include <malloc.h>
#include <utility>

using namespace videoinput;

struct_VideoInputPipeline g_gst_Pipeline = {};
eGstreamerState g_gst_VideoPipelineMode = eGSTStateLiveVideo;
bool g_terminate = false;
GMainLoop *g_VideoInput_loop = nullptr;

namespace {

Q_LOGGING_CATEGORY(log, "tubix.media")

constexpr guint kEndLimitMs = 3000;

guint g_endTimeout = 0; // a source on the default main context; 0: none

// Every handle the build looks up holds a reference.
constexpr std::array kHandles = {
    &struct_VideoInputPipeline::videocrop,        &struct_VideoInputPipeline::scale,
    &struct_VideoInputPipeline::videosink,        &struct_VideoInputPipeline::damageCatelog,
    &struct_VideoInputPipeline::meterCount,       &struct_VideoInputPipeline::LCDdamageCatelog,
    &struct_VideoInputPipeline::LCDtimeDateStamp, &struct_VideoInputPipeline::timeDateStamp,
    &struct_VideoInputPipeline::videosavesink,    &struct_VideoInputPipeline::videoStreamSink,
    &struct_VideoInputPipeline::cscQueue,         &struct_VideoInputPipeline::videorateQueue,
    &struct_VideoInputPipeline::videomuxQueue,    &struct_VideoInputPipeline::audiomuxQueue,
    &struct_VideoInputPipeline::pipeline, // last: it owns the others
};

void enterState(GstState state, const char *failure)
{
    if (gst_element_set_state(g_gst_Pipeline.pipeline, state) == GST_STATE_CHANGE_FAILURE ||
        gst_element_get_state(g_gst_Pipeline.pipeline, nullptr, nullptr, kEndLimitMs * GST_MSECOND) ==
            GST_STATE_CHANGE_FAILURE)
        g_print("%s", failure);
}

// False after the limit. A broken source ends the stream all the same, so that the film is closed; behind any
// other fault nothing comes any more.
bool waitForEnd()
{
    const GstOwner<GstBus> bus(gst_element_get_bus(g_gst_Pipeline.pipeline));
    const gint64 limit = g_get_monotonic_time() + gint64(kEndLimitMs) * 1000;
    while (true) {
        const gint64 left = std::max<gint64>(0, limit - g_get_monotonic_time());
        GstMessage *message =
            gst_bus_timed_pop_filtered(bus.get(), GstClockTime(left) * GST_USECOND,
                                       static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        if (!message)
            return false;
        const bool isOver = GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS ||
                            !GST_OBJECT_FLAG_IS_SET(GST_MESSAGE_SRC(message), GST_ELEMENT_FLAG_SOURCE);
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
            videoinput::blameFilmFile(GST_MESSAGE_SRC(message));
        gst_message_unref(message);
        if (isOver)
            return true;
    }
}

} // namespace

GstElement *videoinput::lookUp(const char *name)
{
    return gst_bin_get_by_name(GST_BIN(g_gst_Pipeline.pipeline), name);
}

void videoinput::tearDown()
{
    if (!g_gst_Pipeline.pipeline)
        return;
    unwatchBus();
    if (g_endTimeout)
        g_source_remove(std::exchange(g_endTimeout, 0));
    enterState(GST_STATE_PAUSED, "\ndid not set to state PAUSED");
    enterState(GST_STATE_READY, "\ndid not set to state READY");
    enterState(GST_STATE_NULL, "\ndid not set to state NULL");
    releaseFilm();
    for (const auto handle : kHandles) {
        if (GstElement *&element = g_gst_Pipeline.*handle; element) {
            gst_object_unref(element);
            element = nullptr;
        }
    }
    malloc_trim(0); // what the pipeline leaves between longer-lived memory goes back to the system
    if (g_VideoInput_loop)
        g_main_loop_quit(g_VideoInput_loop);
}

void videoinput::tearDownAndRebuild()
{
    tearDown();
    if (!g_terminate)
        gst_VideoInputPipeline(0);
}

void videoinput::sendEndOfStream()
{
    sendEnd(g_gst_Pipeline.pipeline);
    if (g_endTimeout)
        return;
    g_endTimeout = g_timeout_add(
        kEndLimitMs,
        [](gpointer) -> gboolean {
            g_endTimeout = 0;
            qCWarning(log) << "no end of stream from the video input pipeline, stopped by force";
            tearDownAndRebuild();
            return G_SOURCE_REMOVE;
        },
        nullptr);
}

bool videoinput::isEnding()
{
    return g_endTimeout != 0;
}

void gst_SendVideoInputPipelineEOS(bool terminate)
{
    g_terminate = terminate;
    if (g_gst_Pipeline.pipeline)
        sendEndOfStream();
    else if (!terminate)
        gst_VideoInputPipeline(0); // nothing to wait for
}

void gst_EndVideoInputPipeline()
{
    if (!g_gst_Pipeline.pipeline)
        return;
    sendEnd(g_gst_Pipeline.pipeline);
    if (!waitForEnd())
        qCWarning(log) << "no end of stream from the video input pipeline, stopped by force";
    tearDown();
}

bool gst_FramesAreExpected()
{
    if (!g_gst_Pipeline.pipeline)
        return g_gst_VideoPipelineMode == eGSTStateError;
    return GST_STATE_TARGET(g_gst_Pipeline.pipeline) == GST_STATE_PLAYING;
}

void gst_PauseVideoInputPipeline()
{
    if (g_gst_Pipeline.pipeline)
        gst_element_set_state(g_gst_Pipeline.pipeline, GST_STATE_PAUSED);
}

void gst_ResumeVideoInputPipeline()
{
    if (g_gst_Pipeline.pipeline)
        gst_element_set_state(g_gst_Pipeline.pipeline, GST_STATE_PLAYING);
}

void gst_SetZoomLevel(unsigned char zoomStep)
{
    if (!g_gst_Pipeline.videocrop)
        return;
    const auto [a, b] = zoom::pipelineCrop(zoomStep);
    g_object_set(g_gst_Pipeline.videocrop, "top", a, "left", a, "bottom", b, "right", b, nullptr);
    // The printed names do not match what was set; service staff know the lines as they are.
    g_print("[VideoCrop]\n\tTop:%d\n\tLeft:%d\n\tBottom:%d\n\tRight:%d\n", a, b, a, b);
}
