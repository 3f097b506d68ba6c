// Playing a film: its pictures go into the shared frame buffer, its sound to the speaker. One film at a time,
// a new pipeline for each. GUI thread, but for fileplayback_new_buffer, which runs on a streaming thread.
#pragma once

#include "media/gst_includes.h"

#include <QtGlobal>

#include <atomic>

typedef struct _VideoPlaybackPipelineData
{
    GstElement *pipeline, *Bin, *playbin2, *source, *audioqueue, *jpegdecode, *colorspaceconv, *video_sink,
        *videoqueue, *video_decoder, *audio_decoder, *video_convertor, *demux, *audio_sink, *audio_convertor,
        *capsFilter;
    GstPad *caudiodemuxsink, *videodemuxsink;
    gint64 curr_pos, video_len;
    qint8 percent_played;
} struct_VideoPlaybackPipeline;

extern struct_VideoPlaybackPipeline g_gst_PlaybackPipeline;
extern eGstreamerState g_GstreamerVideoPlaybackPipelineState; // Queued, Playing, Paused, Null, Ready, Error
extern std::atomic<quint64> g_VideoLen;                       // nanoseconds, as the caller gave it
extern std::atomic<quint8> g_PercentPlayback;                 // with every picture; streaming thread
extern std::atomic<bool> g_FilmFrameReady; // a picture of this film is in the buffer; ditto
extern GMainLoop *g_VideoPlayback_loop;    // made at start, quit at an end, never run

// Builds the pipeline for the film at `filenameandpath` (a host path, UTF-8) and starts it, after releasing
// the one before. `duration`: nanoseconds, 0 when unknown. What is missing for it is told on standard error
// and leaves eGSTStateError.
void gst_VideoPlayback(const char *filenameandpath, double duration);

void gst_QueueVideoFilePipeline(); // a film is chosen, not started: only the state

// Waits until the film stands (0.5 s at most): from then on the picture in the buffer stays. Without a film
// that plays: nothing.
void gst_PauseVideoFilePipeline();

void gst_PlayVideoFilePipeline(); // without a pipeline: nothing

// Ends and releases the pipeline. Only when queued, paused or playing; else nothing.
void gst_StopVideoFilePipeline();
