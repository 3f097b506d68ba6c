#include "media/framecopy.h"
#include "media/gst_videoinput.h"
#include "media/videoinputparts.h"

std::array<quint8 *, 2> g_pcFrameBuffer = {};
quint8 g_fbInIdx = 0;
quint8 g_fbOutIdx = 0;
std::atomic<qint32> nBuffers = 0;
std::atomic<bool> g_InputFrameReady = false;

namespace {

constexpr gint64 kCurrentPicture = G_USEC_PER_SEC; // microseconds: an older frame is not of this moment

qint32 g_framesBefore = 0;               // nBuffers at the build of the pipeline that lives
std::atomic<gint64> g_lastFrameTime = 0; // microseconds, monotonic; streaming thread

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

} // namespace

void videoinput::expectFirstFrame()
{
    g_framesBefore = nBuffers;
}

void videoinput::takeFrames(GstElement *appsink)
{
    g_object_set(appsink, "emit-signals", TRUE, nullptr);
    g_signal_connect(appsink, "new-sample", G_CALLBACK(new_buffer), nullptr);
}

bool gst_PictureIsCurrent()
{
    return g_gst_Pipeline.pipeline && nBuffers != g_framesBefore &&
           g_get_monotonic_time() - g_lastFrameTime < kCurrentPicture;
}
