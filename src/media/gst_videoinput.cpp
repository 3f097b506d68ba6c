#include "media/gst_videoinput.h"

#include "media/filmstart.h"
#include "media/filmsync.h"
#include "media/framecopy.h"
#include "media/fullrange.h"
#include "media/soundpackets.h"
#include "media/videoinputlayout.h"
#include "media/viewers.h"
#include "media/zoom.h"

#include <QLoggingCategory>

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <optional>
#include <sys/stat.h>
#include <utility>

struct_VideoInputPipeline g_gst_Pipeline = {};
std::array<quint8 *, 2> g_pcFrameBuffer = {};
quint8 g_fbInIdx = 0;
quint8 g_fbOutIdx = 0;
std::atomic<qint32> nBuffers = 0;
std::atomic<bool> g_InputFrameReady = false;
eGstreamerState g_gst_VideoPipelineMode = eGSTStateLiveVideo;
char g_gst_MicrophoneActive = 1;
bool g_gst_bTimeDateState = false;
bool g_terminate = false;
GMainLoop *g_VideoInput_loop = nullptr;

namespace {

Q_LOGGING_CATEGORY(log, "tubix.media")

constexpr guint kEndLimitMs = 3000;
constexpr guint kSoundLimitMs = 3000; // from the build to the first sound
constexpr int kStreamPort = 1234;

char g_gst_VideoFileName[1024] = "";
char g_gst_currDamageCatelogText[1024] = "";
char g_gst_currMeterCount[16] = "";
char g_gst_currNetworkStreamingIPAddress[16] = "";

// Sources on the default main context that belong to the pipeline that lives now; 0: none.
guint g_busWatch = 0;
guint g_endTimeout = 0;
guint g_soundTimeout = 0;

std::optional<FilmSync> g_filmSync;           // of the film that is being recorded
std::shared_ptr<const FilmStart> g_filmStart; // of one with sound
bool g_hasLostSound = false;                  // a film began anew without its microphone; not told yet

constexpr gint64 kCurrentPicture = G_USEC_PER_SEC; // microseconds: an older frame is not of this moment

qint32 g_framesBefore = 0;                  // nBuffers at the build of the pipeline that lives
std::atomic<gint64> g_lastFrameTime = 0;    // microseconds, monotonic; streaming thread
std::atomic<bool> g_filmHasPicture = false; // streaming thread
bool g_filmFileFailed = false;

GstElement *lookUp(const char *name)
{
    return gst_bin_get_by_name(GST_BIN(g_gst_Pipeline.pipeline), name);
}

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

void removeSource(guint &source)
{
    if (source)
        g_source_remove(source);
    source = 0;
}

void enterState(GstState state, const char *failure)
{
    if (gst_element_set_state(g_gst_Pipeline.pipeline, state) == GST_STATE_CHANGE_FAILURE ||
        gst_element_get_state(g_gst_Pipeline.pipeline, nullptr, nullptr, kEndLimitMs * GST_MSECOND) ==
            GST_STATE_CHANGE_FAILURE)
        g_print("%s", failure);
}

void tearDown()
{
    if (!g_gst_Pipeline.pipeline)
        return;
    removeSource(g_busWatch);
    removeSource(g_endTimeout);
    removeSource(g_soundTimeout);
    enterState(GST_STATE_PAUSED, "\ndid not set to state PAUSED");
    enterState(GST_STATE_READY, "\ndid not set to state READY");
    enterState(GST_STATE_NULL, "\ndid not set to state NULL");
    g_filmSync.reset();
    g_filmStart.reset();
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

void tearDownAndRebuild()
{
    tearDown();
    if (!g_terminate)
        gst_VideoInputPipeline(0);
}

void sendEndOfStream()
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
        gst_message_unref(message);
        if (isOver)
            return true;
    }
}

// appsink "new-sample", on a streaming thread: one copy of the frame for the GUI.
GstFlowReturn new_buffer(GstAppSink *appsink, gpointer)
{
    if (copyNextFrame(appsink, g_pcFrameBuffer[g_fbInIdx])) {
        g_lastFrameTime = g_get_monotonic_time();
        ++nBuffers;
        g_InputFrameReady = true;
    }
    return GST_FLOW_OK;
}

void overrunCB(GstElement *queue, gpointer)
{
    const GTextOwner name(gst_element_get_name(queue));
    qCDebug(log) << "Element name:" << QString::fromUtf8(name.get()) << "OVERRUN";
}

// A microphone that cannot be opened, or opens and gives nothing, costs a film its sound: there is nothing in
// the film yet, and it begins anew.
void beginAnewWithoutSound()
{
    qCWarning(log) << "no sound from the microphone, the film goes on without";
    g_hasLostSound = true;
    g_gst_VideoPipelineMode = eGSTStateRecordingWithoutAudio;
    tearDownAndRebuild();
}

bool isWithoutSoundYet()
{
    return g_filmStart && !g_filmStart->hasSound && !g_endTimeout;
}

void printError(GstMessage *message)
{
    GError *rawError = nullptr;
    gchar *rawDetail = nullptr;
    gst_message_parse_error(message, &rawError, &rawDetail);
    const GErrorOwner error(rawError);
    const GTextOwner detail(rawDetail);
    const GTextOwner element(gst_object_get_path_string(GST_MESSAGE_SRC(message)));
    g_print("ERROR: from element %s: %s\n", element.get(), error->message);
    if (detail)
        g_print("Additional debug info:\n%s\n", detail.get());
    GST_DEBUG_BIN_TO_DOT_FILE(GST_BIN(g_gst_Pipeline.pipeline), GST_DEBUG_GRAPH_SHOW_ALL, "videoinput-error");
}

// True for the element of that name in the pipeline that lives, and for what is inside of it.
bool isPartOf(GstObject *source, const char *name)
{
    const GstOwner<GstElement> element(lookUp(name));
    return element && (source == GST_OBJECT(element.get()) ||
                       gst_object_has_as_ancestor(source, GST_OBJECT(element.get())));
}

void handleError(GstMessage *message)
{
    printError(message);
    if (g_gst_VideoPipelineMode == eGSTStateVideoRecordError)
        return; // one fault, told by several elements: the recording is ending already
    if (isWithoutSoundYet() && isBefore(g_gst_Pipeline.audiomuxQueue, GST_MESSAGE_SRC(message))) {
        beginAnewWithoutSound();
        return;
    }
    if (g_gst_VideoPipelineMode == eGSTStateRecordingWithAudio ||
        g_gst_VideoPipelineMode == eGSTStateRecordingWithoutAudio) {
        // The end of stream closes the film; whoever ends the recording then rebuilds.
        g_gst_VideoPipelineMode = eGSTStateVideoRecordError;
        g_filmFileFailed = GST_MESSAGE_SRC(message) == GST_OBJECT(g_gst_Pipeline.videosavesink);
        sendEndOfStream();
        return;
    }
    if (displayDraws(boardElements()) && isPartOf(GST_MESSAGE_SRC(message), "videosink")) {
        giveUpDisplay(); // no plane, or somebody else has it
        tearDownAndRebuild();
        return;
    }
    if (g_gst_Pipeline.videoStreamSink &&
        GST_MESSAGE_SRC(message) == GST_OBJECT(g_gst_Pipeline.videoStreamSink)) {
        // No address, or a busy port: the picture on the screen must not suffer for it.
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
        tearDownAndRebuild();
        return;
    }
    g_gst_VideoPipelineMode = eGSTStateError;
    tearDown();
}

// The watch is removed with its pipeline, so a message always belongs to the pipeline that lives.
gboolean VideoInput_bus_call(GstBus *, GstMessage *message, gpointer)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        g_print("\n\n********************************************\n"
                "*** Video Input Pipeline: [EOS DETECTED] ***"
                "\n********************************************\n\n");
        tearDownAndRebuild();
        break;
    case GST_MESSAGE_ERROR:
        handleError(message);
        break;
    case GST_MESSAGE_WARNING: {
        GError *rawError = nullptr;
        gst_message_parse_warning(message, &rawError, nullptr);
        const GErrorOwner error(rawError);
        gst_object_default_error(GST_MESSAGE_SRC(message), error.get(), nullptr);
        break;
    }
    default:
        break;
    }
    return TRUE;
}

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
        g_hasLostSound = true;
        return buildLayout(eGSTStateRecordingWithoutAudio);
    case eGSTStateStreaming:
        return buildLayout(eGSTStateLiveVideo);
    case eGSTStateRecordingWithoutAudio:
        return eGSTStateVideoRecordError;
    default:
        return eGSTStateError;
    }
}

// Marks the moment in which the muxer gets the film's first picture.
void watchForFirstPicture()
{
    const GstOwner<GstElement> muxer(lookUp("mux"));
    const GstOwner<GstPad> pictures(gst_element_get_static_pad(muxer.get(), "video_0"));
    gst_pad_add_probe(
        pictures.get(), GST_PAD_PROBE_TYPE_BUFFER,
        [](GstPad *, GstPadProbeInfo *, gpointer) {
            g_filmHasPicture = true;
            return GST_PAD_PROBE_REMOVE;
        },
        nullptr, nullptr);
}

void configureLayout(eGstreamerState layout)
{
    switch (layout) {
    case eGSTStateRecordingWithAudio:
    case eGSTStateRecordingWithoutAudio:
        g_gst_Pipeline.videosavesink = lookUp("avifilename");
        g_object_set(g_gst_Pipeline.videosavesink, "location", g_gst_VideoFileName, nullptr);
        // The muxer hands on a hundred small pieces a second, and a slow card takes its time for each write.
        // What waits for its 64 KB when the power goes is a tenth of a second.
        gst_util_set_object_arg(G_OBJECT(g_gst_Pipeline.videosavesink), "buffer-mode", "full");
        g_filmSync.emplace(g_gst_VideoFileName);
        watchForFirstPicture();
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

gboolean soundIsDue(gpointer)
{
    g_soundTimeout = 0;
    if (isWithoutSoundYet())
        beginAnewWithoutSound();
    return G_SOURCE_REMOVE;
}

void startWithSound()
{
    const GstOwner<GstElement> muxer(lookUp("mux"));
    releaseSoundPackets(muxer.get());
    g_object_set(g_gst_Pipeline.videosavesink, "enable-last-sample", FALSE, nullptr); // it keeps none of them
    g_filmStart = startTogether(g_gst_Pipeline.videomuxQueue, g_gst_Pipeline.audiomuxQueue);
    g_soundTimeout = g_timeout_add(kSoundLimitMs, soundIsDue, nullptr);
}

// A film that has something in it is never written anew, whoever asks for the layout.
bool wouldOverwriteFilm()
{
    const bool records = g_gst_VideoPipelineMode == eGSTStateRecordingWithAudio ||
                         g_gst_VideoPipelineMode == eGSTStateRecordingWithoutAudio;
    struct stat info = {};
    return records && ::stat(g_gst_VideoFileName, &info) == 0 && info.st_size > 0;
}

// `length` bytes at the most, always terminated.
template <size_t N> void copyText(char (&target)[N], const char *text, int length)
{
    qstrncpy(target, text, std::min(N, size_t(std::max(length, 0)) + 1));
}

// The element's text is markup: what the user typed is shown as it stands.
void setOverlayText(GstElement *overlay, const char *text)
{
    const GTextOwner escaped(g_markup_escape_text(text, -1));
    g_object_set(overlay, "text", escaped.get(), nullptr);
}

} // namespace

void setTextOverlays()
{
    struct Overlay
    {
        const char *name;
        GstElement *struct_VideoInputPipeline::*handle;
        const char *font;
        int deltax;
        int deltay;
        const char *text; // null: a clock
    };
    // "LCDtimedateStamp" has its small d.
    static const std::array overlays = {
        Overlay{"LCDdamageCatelog", &struct_VideoInputPipeline::LCDdamageCatelog, "Sans 12", 2, 554,
                g_gst_currDamageCatelogText},
        Overlay{"damageCatelog", &struct_VideoInputPipeline::damageCatelog, "Sans 12", 2, 554,
                g_gst_currDamageCatelogText},
        Overlay{"meterCount", &struct_VideoInputPipeline::meterCount, "Sans 14", 2, 2, g_gst_currMeterCount},
        Overlay{"LCDtimedateStamp", &struct_VideoInputPipeline::LCDtimeDateStamp, "Sans 12", 568, 4, nullptr},
        Overlay{"timeDateStamp", &struct_VideoInputPipeline::timeDateStamp, "Sans 12", 568, 4, nullptr},
    };
    constexpr int kHorizontalByPosition = 4;
    constexpr int kVerticalByPosition = 3;
    for (const Overlay &overlay : overlays) {
        GstElement *element = g_gst_Pipeline.*overlay.handle = lookUp(overlay.name);
        if (!element)
            continue;
        g_object_set(element, "font-desc", overlay.font, "halignment", kHorizontalByPosition, "valignment",
                     kVerticalByPosition, "xpos", 0.0, "ypos", 0.0, "deltax", overlay.deltax, "deltay",
                     overlay.deltay, nullptr);
        if (overlay.text)
            setOverlayText(element, overlay.text);
        else
            g_object_set(element, "time-format", "%H:%M %d.%m.%Y", "silent", !g_gst_bTimeDateState, nullptr);
    }
}

void gst_VideoInputPipeline(unsigned long)
{
    gst_EndVideoInputPipeline();
    g_framesBefore = nBuffers;
    g_filmHasPicture = false;
    g_filmFileFailed = false;
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
    g_object_set(g_gst_Pipeline.videosink, "emit-signals", TRUE, nullptr);
    g_signal_connect(g_gst_Pipeline.videosink, "new-sample", G_CALLBACK(new_buffer), nullptr);
    setTextOverlays();
    connectQueues();
    if (const GstOwner<GstElement> balance(lookUp("fullrange")); balance)
        stretchToFullRange(balance.get());
    if (layout == eGSTStateRecordingWithAudio)
        startWithSound();

    const GstOwner<GstBus> bus(gst_element_get_bus(g_gst_Pipeline.pipeline));
    g_busWatch = gst_bus_add_watch(bus.get(), VideoInput_bus_call, nullptr);
    gst_element_set_state(g_gst_Pipeline.pipeline, GST_STATE_PLAYING);
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

bool gst_PictureIsCurrent()
{
    return g_gst_Pipeline.pipeline && nBuffers != g_framesBefore &&
           g_get_monotonic_time() - g_lastFrameTime < kCurrentPicture;
}

bool gst_FilmHasPicture()
{
    return g_filmHasPicture;
}

bool gst_FilmFileFailed()
{
    return g_filmFileFailed;
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

void gst_StartRecordingAVIFile(const char *path, int length)
{
    if (g_gst_MicrophoneActive) {
        g_print("******************************\n**** RECORDING WITH AUDIO "
                "****\n******************************\n");
        g_gst_VideoPipelineMode = eGSTStateRecordingWithAudio;
    } else {
        g_print("*******************************\n*** RECORDING WITHOUT AUDIO ***\n"
                "*******************************\n");
        g_gst_VideoPipelineMode = eGSTStateRecordingWithoutAudio;
    }
    g_hasLostSound = false;
    copyText(g_gst_VideoFileName, path, length);
    gst_SendVideoInputPipelineEOS(false);
}

void gst_UpdateVideoDamageCatelog(const char *text, int length)
{
    for (GstElement *overlay : {g_gst_Pipeline.LCDdamageCatelog, g_gst_Pipeline.damageCatelog}) {
        if (!overlay)
            continue;
        copyText(g_gst_currDamageCatelogText, text, length);
        g_object_set(overlay, "silent", length == 0, nullptr);
        if (length == 0)
            return;
        setOverlayText(overlay, g_gst_currDamageCatelogText);
    }
}

void gst_BeginWithDamageText(const char *text, int length)
{
    copyText(g_gst_currDamageCatelogText, text, length);
}

void gst_UpdateVideoMeterCount(const char *text, int length)
{
    const QByteArray shown = g_gst_currMeterCount;
    copyText(g_gst_currMeterCount, text, length);
    if (g_gst_Pipeline.meterCount && shown != g_gst_currMeterCount) // a text that is set is drawn anew
        setOverlayText(g_gst_Pipeline.meterCount, g_gst_currMeterCount);
}

bool gst_TakeLostSound()
{
    return std::exchange(g_hasLostSound, false);
}

void gst_EnableAudioRecording(int on)
{
    g_gst_MicrophoneActive = static_cast<char>(on);
}

void gst_EnableDateTimeOverlay(int on)
{
    g_gst_bTimeDateState = on != 0;
}

void gst_SetNetworkStreamingIPAddress(const char *address)
{
    qstrncpy(g_gst_currNetworkStreamingIPAddress, address, sizeof g_gst_currNetworkStreamingIPAddress);
}
