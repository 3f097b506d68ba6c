// The one pipeline of the camera picture: live view, AVI recording or network stream, by mode.
// GUI thread, but for new_buffer and overrunCB, which run on streaming threads.
#pragma once

#include "media/gst_includes.h"

#include <QtGlobal>

#include <array>
#include <atomic>

typedef struct _VideoInputPipelineData
{
    GstElement *pipeline, *source, *source_filter, *videobox, *videocrop, *scale, *sinkTee, *q0, *q4, *q5,
        *colorspaceconv, *videosink, *q1, *q2, *videomixer, *bg_src_layer, *bg_layer_dec, *imagefreeze,
        *bg_layer_csc, *damageCatelog, *meterCount, *LCDdamageCatelog, *LCDtimeDateStamp, *timeDateStamp,
        *jpegencode, *mux, *audioSrc, *audioConverter, *audioEncoder, *videosavesink, *videoStreamEncoder,
        *videoStreamSink, *cscQueue, *videorateQueue, *videomuxQueue, *audiomuxQueue;
    gulong probe_id;
    GstPad *Videosinkpadmux, *Audiosinkpadmux, *currsinkTeesrcpad;
    GstElement *audioCapsFilter, *bg_layer_csc2, *bg_layer_csc3;
    char AVIfilenameandpath[1024];
} struct_VideoInputPipeline;

// Owned by gst_videoinput.cpp, written on the GUI thread; the element handles live as long as the pipeline.
extern struct_VideoInputPipeline g_gst_Pipeline;

// Two buffers of kFrameBytes, allocated once at start. Writer (streaming thread) and reader (GUI thread) both
// use buffer 0 without a lock: a frame being drawn may be overtaken by the next.
extern std::array<quint8 *, 2> g_pcFrameBuffer;
extern quint8 g_fbInIdx;
extern quint8 g_fbOutIdx;
extern std::atomic<qint32> nBuffers;        // frames received; streaming thread
extern std::atomic<bool> g_InputFrameReady; // set with the first frame, never cleared; streaming thread

extern eGstreamerState g_gst_VideoPipelineMode; // mode of the next build, or an error mark; GUI thread
extern char g_gst_MicrophoneActive;
extern bool g_gst_bTimeDateState;
extern bool g_terminate;
extern GMainLoop *g_VideoInput_loop; // made at start, quit on every teardown, never run

// Builds and starts the pipeline for g_gst_VideoPipelineMode, after ending the one that still lives. A mode
// without a layout of its own becomes the live mode. `winId` is unused. A description that does not parse
// ends the process with status 1. Where elements are missing or do not fit together, a film has no sound, a
// stream no viewers; what then still cannot be built leaves no pipeline and eGSTStateVideoRecordError (a
// film) or eGSTStateError. A network stream that cannot be served (no address, a busy port) is given
// up a moment later: the mode is eGSTStateLiveVideo then, and the live layout runs.
void gst_VideoInputPipeline(unsigned long winId);

// Sends an end of stream into the pipeline. When it has come through (or after 3 s, by force) the bus handler
// tears the pipeline down and, unless `terminate`, builds the one of the current mode.
void gst_SendVideoInputPipelineEOS(bool terminate);

// Ends the pipeline now: waits up to 3 s for an end of stream, then stops it by force. No pipeline: nothing.
void gst_EndVideoInputPipeline();

// True while nBuffers has to grow: the pipeline plays, or it would but for the camera's error.
bool gst_FramesAreExpected();

// True while g_pcFrameBuffer holds a picture of this moment: the pipeline that runs now has brought a frame
// within the last second.
bool gst_PictureIsCurrent();

// True once the film that is being recorded has its first picture: from then on its file is a film, whatever
// ends it.
bool gst_FilmHasPicture();

// True when a write to the file of the last film failed, also at the film's end.
bool gst_FilmFileFailed();

void gst_PauseVideoInputPipeline();
void gst_ResumeVideoInputPipeline();

// Crops the live picture, step 0..10; nothing in a layout without a crop.
void gst_SetZoomLevel(unsigned char zoomStep);

// Starts a film into the file at `path` (a host path, `length` bytes of it): the running pipeline ends, and
// the recording layout is built, with sound when the microphone is on.
void gst_StartRecordingAVIFile(const char *path, int length);

// True once after a film has begun anew because its microphone gave no sound.
bool gst_TakeLostSound();

// Texts burnt into a recording or stream, as the user sees them (escaped for the overlay here alone).
// `length`: bytes of `text`. A damage text is taken only while such a layout runs; with length 0 it is
// hidden.
void gst_UpdateVideoDamageCatelog(const char *text, int length);
// The damage text that the screen shows as a film or stream begins: its build burns that in, whatever was
// shown when the last one ended. `length`: bytes of `text`.
void gst_BeginWithDamageText(const char *text, int length);
void gst_UpdateVideoMeterCount(const char *text, int length);

void gst_EnableAudioRecording(int on);                      // from the next recording on
void gst_EnableDateTimeOverlay(int on);                     // from the next build on
void gst_SetNetworkStreamingIPAddress(const char *address); // at most 15 bytes, terminated
void setTextOverlays();                                     // called by every build
