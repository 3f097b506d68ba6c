// A film's first picture beside its first sound.
#pragma once

#include "media/gst_includes.h"

#include <atomic>

struct FilmStart
{
    GstPad *pictures = nullptr; // not owned: what holds this hangs on it or beside it
    gulong block = 0;
    std::atomic<GstClockTime> firstSound = 0; // written before the block is taken away, read after
    std::atomic<bool> hasSound = false;       // streaming thread
};

// The muxer lays the first packet of either stream at the film's start, whatever their times: a microphone
// that needs 0.3 s to open would be heard 0.3 s early throughout. Pictures (which begin with the pipeline)
// wait in their queue for the first sound; those from before it are left out. Called at the build; what it
// hangs on the queues' pads goes with them.
std::shared_ptr<const FilmStart> startTogether(GstElement *pictureQueue, GstElement *soundQueue);

// True when `other` is `element` or one of those that feed it, or a part of one. Where several feed an
// element, the way ends.
bool isBefore(GstElement *element, GstObject *other);
