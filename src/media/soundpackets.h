// A film's sound packets, freed while it is recorded.
#pragma once

#include "media/gst_includes.h"

// The AVI muxer of GStreamer 1.22 takes one reference too many to each sound packet that comes from a parser,
// and so keeps the whole sound of a film: about 1 KB a packet, 140 MB an hour. This takes the surplus
// reference of a packet back when the next one comes; a muxer of another version is left alone. Called at the
// build; what it hangs on the muxer goes with it. The elements behind the muxer must keep no buffer.
void releaseSoundPackets(GstElement *muxer);
