// Small pictures of files for the browser's pages. Any thread.
#pragma once

#include "platform/unit.h"

#include <QImage>

inline constexpr int kThumbnailWidth = 128;

// The first frame of the film at `film`, kThumbnailWidth wide. Its stored thumbnail `storedFile` is taken
// instead when it is there and not older than the film, which saves opening the film. Null: cannot be read.
QImage filmThumbnail(const HostPath &film, const HostPath &storedFile);

// `picture` with `mark` on it, centred on the point (64, 48), at the mark's own size.
QImage withMark(const QImage &picture, const QImage &mark);

// `picture` as an icon of at most `box` shows it. An icon that is too large is made smaller whenever it is
// painted, and more slowly.
QImage fitted(const QImage &picture, QSize box);
