// Playing a voice note: a new pipeline for each. GUI thread.
#pragma once

#include "media/gst_includes.h"

#include <QtGlobal>

typedef struct _AudioPlaybackPipelineData
{
    GstElement *pipeline, *audioSrc, *audioDecoder, *audioConverter, *audioSink; // only the first is filled
} struct_AudioPlaybackPipeline;

extern struct_AudioPlaybackPipeline g_gst_AudioPlaybackPipeline;
extern eGstreamerState g_GstreamerAudioPlaybackPipelineState; // Playing, Paused, Null, Ready, Error
extern gint64 g_AudioLen;                                     // nanoseconds; 0 until known
extern GMainLoop *g_AudioPlaybackPipeline_loop;               // made at start, quit on an error, never run

// Builds the pipeline for the note at `path` (a host path) and starts it, after releasing the one before. A
// description that does not parse ends the process with status 1.
void gst_AudioPlaybackPipeline(const char *path);

void gst_PauseAudioPlayback();  // without a pipeline: nothing
void gst_ResumeAudioPlayback(); // without a pipeline: nothing

// Ends and releases the pipeline. Only when paused or playing; else nothing.
void gst_StopAudioPlaybacking();

qint8 gst_getCurrentAudioPercentPlayed(); // 0..100; 0 until the length is known
