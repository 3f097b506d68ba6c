// A camera's frame into the frame buffer, by the application and by GStreamer's converter: processor time of
// each in microseconds, the lowest of several turns.
// Usage: conversion [FRAMES]
// FRAMES: of one turn, 200 when not named
#include "media/framecopy.h"
#include "media/gst_includes.h"

#include <QByteArray>

#include <gst/video/video.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>

namespace {

constexpr int kTurns = 9;

struct Pictures
{
    GstVideoInfo camera, screen;
    GstBuffer *frame = nullptr;
    GstSample *sample = nullptr;
    QByteArray buffer;

    Pictures() : buffer(qsizetype(kFrameBytes), 0)
    {
        gst_video_info_set_format(&camera, GST_VIDEO_FORMAT_I420, kFrameWidth, kFrameHeight);
        gst_video_info_set_format(&screen, GST_VIDEO_FORMAT_RGB16, kFrameWidth, kFrameHeight);
        frame = gst_buffer_new_allocate(nullptr, camera.size, nullptr);
        GstMapInfo map;
        gst_buffer_map(frame, &map, GST_MAP_WRITE);
        std::generate_n(map.data, map.size, std::minstd_rand());
        gst_buffer_unmap(frame, &map);
        GstCaps *caps = gst_video_info_to_caps(&camera);
        sample = gst_sample_new(frame, caps, nullptr, nullptr);
        gst_caps_unref(caps);
    }
};

template <typename Work> double microseconds(int frames, Work work)
{
    const std::clock_t start = std::clock();
    for (int i = 0; i < frames; ++i)
        work();
    return double(std::clock() - start) * 1e6 / CLOCKS_PER_SEC / frames;
}

} // namespace

int main(int argc, char **argv)
{
    const int frames = argc > 1 ? std::atoi(argv[1]) : 200;
    if (argc > 2 || frames < 1) {
        std::fputs("Usage: conversion [FRAMES]\n", stderr);
        return 2;
    }
    gst_init(nullptr, nullptr);
    Pictures pictures;
    GstVideoConverter *converter = gst_video_converter_new(&pictures.camera, &pictures.screen, nullptr);
    GstBuffer *converted = gst_buffer_new_allocate(nullptr, pictures.screen.size, nullptr);
    // As its element does for each picture, and the copy after it.
    const auto theirs = [&] {
        GstVideoFrame from, to;
        gst_video_frame_map(&from, &pictures.camera, pictures.frame, GST_MAP_READ);
        gst_video_frame_map(&to, &pictures.screen, converted, GST_MAP_WRITE);
        gst_video_converter_frame(converter, &from, &to);
        std::copy_n(static_cast<const char *>(GST_VIDEO_FRAME_PLANE_DATA(&to, 0)), kFrameBytes,
                    pictures.buffer.data());
        gst_video_frame_unmap(&to);
        gst_video_frame_unmap(&from);
    };
    const auto ours = [&] { putFrame(pictures.sample, reinterpret_cast<quint8 *>(pictures.buffer.data())); };
    double least[] = {1e9, 1e9};
    for (int turn = 0; turn < kTurns; ++turn) {
        least[0] = std::min(least[0], microseconds(frames, ours));
        least[1] = std::min(least[1], microseconds(frames, theirs));
    }
    std::printf("%.1f %.1f\n", least[0], least[1]);
    return 0;
}
