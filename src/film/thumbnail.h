// Small pictures of files for the browser's pages. Any thread.
#pragma once

#include <QImage>
#include <QString>

inline constexpr int kThumbnailWidth = 128;

// The first frame of the film at `hostFilm`, kThumbnailWidth wide. Its stored thumbnail `hostStored` is taken
// instead when it is there and not older than the film, which saves opening the film. Null: cannot be read.
QImage filmThumbnail(const QString &hostFilm, const QString &hostStored);

// `picture` with `mark` on it, centred on the point (64, 48), at the mark's own size.
QImage withMark(const QImage &picture, const QImage &mark);
