// What the pipeline shows when nothing is recorded or played. GUI thread.
#pragma once

#include "media/gst_includes.h"
#include "settings/systemsettings.h"

// The mode for every way back into live view: the network stream where it is switched on, else live alone.
inline eGstreamerState liveMode(const _GlobalSystemSettings &settings)
{
    return settings.bNetworkStreaming ? eGSTStateStreaming : eGSTStateLiveVideo;
}
