// Who looks at the network stream.
#pragma once

#include "media/gst_includes.h"

// Lets eight viewers look at `server` (a tcpserversink), turns further ones away, and lets go of one that has
// taken less than a picture a second for five seconds. One that falls behind goes on with the latest picture:
// what waits for viewers is little, however many or slow they are. Called at the build; what it hangs on the
// server goes with it.
void limitViewers(GstElement *server);
