// Composing a still picture: brand band, frame, texts.
#pragma once

#include "platform/unit.h"

#include <QImage>
#include <QRect>
#include <QString>

namespace stillpicture {

struct Texts
{
    QString cableLength;
    QString damageNote;
    QString timeAndDate; // empty: no stamp
};

// The picture, 720 x 600, 16-bit RGB. `band`: the brand picture of that size; `frame`: 720 x 576, of which
// the part `cutOut` is stretched over the width.
QImage compose(const QImage &band, const QImage &frame, const QRect &cutOut, const Texts &texts);

// A film's edited frame as a picture of the unit: the band with the frame, 720 x 576, under it; 32 bit.
QImage underBand(const QImage &band, const QImage &frame);

// Encodes as JPEG and writes it whole or not at all; false on a failure.
bool save(const QImage &picture, const UnitPath &unitPath);

} // namespace stillpicture
