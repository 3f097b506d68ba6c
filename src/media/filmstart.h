// A film's first picture beside its first sound.
#pragma once

#include "media/gst_includes.h"

// The muxer lays the first packet of either stream at the film's start, whatever their times: a microphone
// that needs 0.3 s to open would be heard 0.3 s early throughout. Pictures (which begin with the pipeline)
// wait in their queue for the first sound; those from before it are left out. Called at the build; what it
// hangs on the queues' pads goes with them.
void startTogether(GstElement *pictureQueue, GstElement *soundQueue);

// True until the first sound has come, false for a queue that startTogether was never called for.
bool waitsForSound(GstElement *pictureQueue);
