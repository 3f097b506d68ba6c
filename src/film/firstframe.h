// The first frame of a film, as a picture.
#pragma once

#include "platform/unit.h"

#include <QImage>

// `hostPath`: the film's file on this host. A null picture when it cannot be read, when it is larger than 16
// megapixels, or when the film module (libtubixfilm.so, beside the program or in ../lib/tubix4) cannot be
// loaded. Any thread.
QImage firstFrameOfFilm(const HostPath &hostPath);
