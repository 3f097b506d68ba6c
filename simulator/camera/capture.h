// One run of the camera, from its start to its stop: the unit's files, its dials and the picture that they
// make.
#pragma once

#include "cameradials.h"
#include "pipepicture.h"
#include "unitfiles.h"

#include <optional>
#include <string>

#include <gst/video/video.h>

// Used by the streaming thread.
class Capture
{
public:
    // `device`: the capture device's file in a simulated unit's dev folder.
    explicit Capture(const std::string &device);
    ~Capture();
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    // The pictures' format; they are drawn in PAL size and scaled to any other.
    void scaleTo(const GstVideoInfo &info);
    // Fills a buffer of that format with the picture of that running time; false when it cannot be written.
    bool paint(GstBuffer *buffer, const GstVideoInfo &info, GstClockTime time);

    UnitFiles files;
    CameraDials dials;
    guint64 next = 0; // number of the next picture since the pipeline's start

private:
    void follow();
    void draw(GstVideoFrame &frame, GstClockTime time);

    std::optional<pipecam::Picture> m_picture; // from the first need of the pipe on
    double m_position = -1;                    // of the camera in the pipe, millimetres
    double m_sway = 0;                         // how much the cable shakes the camera, 0 to 1
    double m_seconds = 0;                      // running time of what is shown
    GstVideoInfo m_pal = {};
    GstVideoConverter *m_scaler = nullptr;
    GstBuffer *m_drawn = nullptr; // what the scaler reads
};
