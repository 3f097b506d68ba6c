// What `simulator/unit camera` sets on the capture device: how it fails and what it shows.
#pragma once

#include "unitfiles.h"

// Read from the unit's folder at every question; what was never set is a sound camera. One thread at a time.
class CameraDials
{
public:
    struct Size
    {
        int width;
        int height;
    };

    // `device`: the capture device's file, DIR/dev/video0; the unit's folder is DIR.
    explicit CameraDials(const std::string &device);

    double delay();  // seconds from a pipeline's start to its first picture
    bool isSilent(); // nothing is delivered, nothing reported
    bool isFrozen(); // the same picture comes again and again
    bool hasChart(); // the colour chart stands before the camera, not the pipe
    Size size();     // pixels of a picture

private:
    WatchedFile m_delay;
    WatchedFile m_signal;
    WatchedFile m_view;
    WatchedFile m_size;
};
