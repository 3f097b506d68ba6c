// From an appsink to a frame buffer. On a streaming thread.
#pragma once

#include <QtGlobal>

#include <gst/app/gstappsink.h>

// Pulls the sink's next picture and puts it into `buffer` (kFrameBytes), as putFrame() does. False when there
// was none.
bool copyNextFrame(GstAppSink *appsink, quint8 *buffer);

// Writes a picture of 720 x 576 into `buffer`: RGB16 as it is, I420 by its colorimetry (BT.601 or BT.709, of
// either range). False for every other picture.
bool putFrame(GstSample *sample, quint8 *buffer);
