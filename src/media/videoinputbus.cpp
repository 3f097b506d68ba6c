#include "media/filmstart.h"
#include "media/gst_videoinput.h"
#include "media/videoinputlayout.h"
#include "media/videoinputparts.h"

#include <utility>

using namespace videoinput;

namespace {

guint g_busWatch = 0; // a source on the default main context; 0: none

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
        blameFilmFile(GST_MESSAGE_SRC(message));
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

} // namespace

void videoinput::watchBus()
{
    const GstOwner<GstBus> bus(gst_element_get_bus(g_gst_Pipeline.pipeline));
    g_busWatch = gst_bus_add_watch(bus.get(), VideoInput_bus_call, nullptr);
}

void videoinput::unwatchBus()
{
    if (g_busWatch)
        g_source_remove(std::exchange(g_busWatch, 0));
}
