// Recording a voice note into a WAV file: one pipeline, built at start and used for every note. GUI thread.
#pragma once

#include "media/gst_includes.h"

typedef struct _AudioRecordPipelineData
{
    GstElement *pipeline, *audioSrc, *audioConverter, *audioEncoder, *audioFileSink;
} struct_AudioRecordPipeline;

extern struct_AudioRecordPipeline g_gst_AudioRecordPipeline;
extern eGstreamerState g_GstreamerAudioRecordPipelineState; // Null (idle), RecordingAudio, Error
extern GMainLoop *g_AudioRecordPipeline_loop;               // made at start, quit on an error, never run

// Builds the pipeline once. A missing element is told on standard error and leaves the unit without voice
// notes.
void gst_AudioRecordPipeline();

// Records into the file at `path` (a host path). Nothing while another note is recorded or without a
// pipeline.
void StartAudioRecording(const char *path);

// Ends the recording and waits (3 s at most, then by force) until the file is whole; after an error it makes
// the pipeline ready for the next note. The state is eGSTStateNull again. Nothing when idle.
void gst_StopAudioRecording();
