// What the sources of the camera picture's pipeline have of each other. GUI thread.
#pragma once

#include "media/gst_includes.h"

#include <QByteArray>

#include <algorithm>

namespace videoinput {

// gst_videoinput.cpp. The element of that name in the pipeline that lives, with a reference; null: not in
// this layout.
GstElement *lookUp(const char *name);
void sendEndOfStream(); // a tear-down and a rebuild follow, within 3 s
bool isEnding();        // an end of stream is on its way
void tearDown();
void tearDownAndRebuild();

// videoinputbus.cpp. The watch lives as long as the pipeline.
void watchBus();
void unwatchBus();

// videoinputframes.cpp
void expectFirstFrame();
void takeFrames(GstElement *appsink);

// videoinputfilm.cpp
void forgetLastFilm();
bool wouldOverwriteFilm();
void openFilm();
void startWithSound();
void releaseFilm();
void markSoundLost();
bool isWithoutSoundYet(); // a film waits for its first sound
void beginAnewWithoutSound();
void blameFilmFile(GstObject *source); // of the fault that ended the film

// `length` bytes at the most, always terminated.
template <size_t N> void copyText(char (&target)[N], const char *text, int length)
{
    qstrncpy(target, text, std::min(N, size_t(std::max(length, 0)) + 1));
}

} // namespace videoinput
