// Composing a still picture: brand band, frame, texts.
#pragma once

#include <QImage>
#include <QRect>
#include <QString>

namespace stillpicture {

// The part of a 720 x 576 frame that a still shows at a zoom step. Its margins are crossed over: x takes the
// vertical one, y the horizontal one.
QRect cutOut(quint8 zoomLevel);

struct Texts
{
    QString cableLength;
    QString damageNote;
    QString timeAndDate; // empty: no stamp
};

// The picture, 720 x 600, 16-bit RGB. `band`: the brand picture of that size; `frame`: 720 x 576.
QImage compose(const QImage &band, const QImage &frame, quint8 zoomLevel, const Texts &texts);

// Encodes as JPEG and writes it whole or not at all; false on a failure.
bool save(const QImage &picture, const QString &unitPath);

} // namespace stillpicture
