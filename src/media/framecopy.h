// From an appsink to a frame buffer. On a streaming thread.
#pragma once

#include <QtGlobal>

#include <gst/app/gstappsink.h>

// Pulls the sink's next picture and copies it into `buffer` (kFrameBytes). False when there was none of that
// size.
bool copyNextFrame(GstAppSink *appsink, quint8 *buffer);
