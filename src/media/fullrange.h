// The range of a film's and the stream's colours.
#pragma once

#include "media/gst_includes.h"

// A camera's brightness goes from 16 to 235 as a rule, a JPEG picture's from 0 to 255, and no encoder
// stretches the one to the other: black would be a grey. `balance` (a videobalance before the encoder) does
// so from now on for pictures that need it, and passes the others on. Called at the build; what it hangs on
// the element goes with it.
void stretchToFullRange(GstElement *balance);
