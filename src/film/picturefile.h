// Pictures of the card, which may be anybody's: what would cost more than the unit has is not read. Any
// thread.
#pragma once

#include "platform/unit.h"

#include <QImage>
#include <QString>

#include <optional>

class QIODevice;

// Of a picture that is held in memory as a whole while it is decoded.
inline constexpr qint64 kMostPixelsHeld = 16 << 20;

struct JpegFrame
{
    qint64 pixels = 0;
    int components = 0;
    bool isOnePass = false;
};

// What the headers of the JPEG picture that begins here tell. Nothing: it is none.
std::optional<JpegFrame> readJpegFrame(QIODevice &file);

// The JPEG picture at `hostPath`, made smaller on the way where it does not fit into `box`, its shape kept.
// Null: it cannot be read, or its header tells of more work and memory than the unit has for one picture.
QImage readPicture(const HostPath &hostPath, QSize box);

// The same, `width` wide, with fast scaling. One that is extremely tall stays narrower.
QImage readSmallPicture(const HostPath &hostPath, int width);
