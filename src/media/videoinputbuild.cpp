#include "media/fullrange.h"
#include "media/gst_videoinput.h"
#include "media/videoinputlayout.h"
#include "media/videoinputparts.h"
#include "media/viewers.h"

#include <QLoggingCategory>

#include <cstdlib>
#include <utility>

using namespace videoinput;

namespace {

Q_LOGGING_CATEGORY(log, "tubix.media")

constexpr int kStreamPort = 1234;

char g_gst_currNetworkStreamingIPAddress[16] = "";

// Null when elements are missing or do not fit together: what could be made of it is no pipeline for us. A
// description that is none ends the process.
GstElement *parseLaunch(eGstreamerState layout)
{
    const QByteArray description = videoInputLaunch(layout, boardElements()).toUtf8();
    qCDebug(log) << "launch" << description;
    GError *rawError = nullptr;
    GstElement *pipeline = gst_parse_launch(description.constData(), &rawError);
    const GErrorOwner error(rawError);
    if (error || !pipeline)
        g_print("Parse error: %s\n", error ? error->message : "no pipeline");
    if (!pipeline)
        std::exit(1); // NOLINT(concurrency-mt-unsafe): the interface has it so
    if (error)
        gst_object_unref(std::exchange(pipeline, nullptr));
    return pipeline;
}

// Builds the layout, or the one that lacks what could not be built: a film its sound, a stream its viewers.
// Gives the one that stands; nothing stands after an error mark.
eGstreamerState buildLayout(eGstreamerState layout)
{
    g_gst_Pipeline.pipeline = parseLaunch(layout);
    if (g_gst_Pipeline.pipeline)
        return layout;
    switch (layout) {
    case eGSTStateRecordingWithAudio:
        markSoundLost();
        return buildLayout(eGSTStateRecordingWithoutAudio);
    case eGSTStateStreaming:
        return buildLayout(eGSTStateLiveVideo);
    case eGSTStateRecordingWithoutAudio:
        return eGSTStateVideoRecordError;
    default:
        return eGSTStateError;
    }
}

void configureLayout(eGstreamerState layout)
{
    switch (layout) {
    case eGSTStateRecordingWithAudio:
    case eGSTStateRecordingWithoutAudio:
        openFilm();
        break;
    case eGSTStateStreaming:
        g_gst_Pipeline.videoStreamSink = lookUp("tcpserver");
        g_object_set(g_gst_Pipeline.videoStreamSink, "host", g_gst_currNetworkStreamingIPAddress, "port",
                     kStreamPort, nullptr);
        limitViewers(g_gst_Pipeline.videoStreamSink);
        break;
    default:
        g_gst_Pipeline.videocrop = lookUp("videocrop");
        g_gst_Pipeline.scale = lookUp("videoscale");
        break;
    }
}

void overrunCB(GstElement *queue, gpointer)
{
    const GTextOwner name(gst_element_get_name(queue));
    qCDebug(log) << "Element name:" << QString::fromUtf8(name.get()) << "OVERRUN";
}

void connectQueues()
{
    struct Queue
    {
        const char *name;
        GstElement *struct_VideoInputPipeline::*handle;
    };
    static constexpr std::array queues = {
        Queue{"ipucsc_queue", &struct_VideoInputPipeline::cscQueue},
        Queue{"videorate_queue", &struct_VideoInputPipeline::videorateQueue},
        Queue{"videomux_queue", &struct_VideoInputPipeline::videomuxQueue},
        Queue{"audiomux_queue", &struct_VideoInputPipeline::audiomuxQueue}};
    for (const Queue &queue : queues) {
        if (GstElement *element = g_gst_Pipeline.*queue.handle = lookUp(queue.name); element)
            g_signal_connect(element, "overrun", G_CALLBACK(overrunCB), nullptr);
    }
}

} // namespace

void gst_VideoInputPipeline(unsigned long)
{
    gst_EndVideoInputPipeline();
    expectFirstFrame();
    forgetLastFilm();
    if (wouldOverwriteFilm())
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    const eGstreamerState layout = buildLayout(layoutForMode(g_gst_VideoPipelineMode));
    // The mark of a failed recording stays until the recording is ended; any other strange value is
    // forgotten.
    if (g_gst_VideoPipelineMode != eGSTStateVideoRecordError || layout == eGSTStateError)
        g_gst_VideoPipelineMode = layout;
    if (!g_gst_Pipeline.pipeline)
        return;
    gst_element_set_name(g_gst_Pipeline.pipeline, "pipeline");
    configureLayout(layout);

    g_gst_Pipeline.videosink = lookUp("appsink");
    takeFrames(g_gst_Pipeline.videosink);
    setTextOverlays();
    connectQueues();
    if (const GstOwner<GstElement> balance(lookUp("fullrange")); balance)
        stretchToFullRange(balance.get());
    if (layout == eGSTStateRecordingWithAudio)
        startWithSound();

    watchBus();
    // A microphone's own clock stops with the end of its stream. Whoever waited for it then, as the screen's
    // picture does, held the camera, and with it the end of the film.
    gst_pipeline_use_clock(GST_PIPELINE(g_gst_Pipeline.pipeline),
                           GstOwner<GstClock>(gst_system_clock_obtain()).get());
    gst_element_set_state(g_gst_Pipeline.pipeline, GST_STATE_PLAYING);
}

void gst_SetNetworkStreamingIPAddress(const char *address)
{
    qstrncpy(g_gst_currNetworkStreamingIPAddress, address, sizeof g_gst_currNetworkStreamingIPAddress);
}
