// The first frame of a film, as a picture.
#pragma once

#include "platform/unit.h"

#include <QImage>

// `hostPath`: the film's file on this host. A null picture when it is no AVI file, when its first picture
// does not begin in its first 256 KB or end in its first 2 MB, when it is larger than 16 megapixels, or when
// the film module (libtubixfilm.so, beside the program or in ../lib/tubix4) cannot be loaded. Any thread.
// `width`: made as wide with fast scaling, without a copy at full size; 0: as it is.
QImage firstFrameOfFilm(const HostPath &hostPath, int width = 0);
