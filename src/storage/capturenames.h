// The names that captures and edited copies get in the current folder. GUI thread.
#pragma once

#include <QString>
#include <QTime>

// "TUBX0007" + extension: the name of capture number `index`.
QString captureName(int index, const QString &extension);

// The name for the next capture: moves currDCIMIndex on to the first number of which there is neither file
// nor voice note (a number beyond four digits is not found again by the listing).
QString freeCaptureName(const QString &extension);

// The name of the edited copy of a file: "_hhmmss" before its extension. A film's copy is a picture.
QString editedName(const QString &fileName, const QTime &time);

// That name for the first second from `time` on of which the current folder has neither file nor voice note.
QString freeEditedName(const QString &fileName, QTime time);
