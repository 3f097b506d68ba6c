// The arithmetic of the picture editor's gestures. Scene coordinates: pixels of the picture, y downwards.
#pragma once

#include <QLineF>
#include <QPolygonF>
#include <QRectF>

namespace editorshapes {

// The head of an arrow along `shaft`: its tip (the end of the shaft) and two corners, 10 pixels a side. Empty
// for a shaft without length, which has no direction.
QPolygonF arrowHead(const QLineF &shaft);

// A circle's rectangle, started at its top left, while the finger is at `point`: its size may turn negative.
// A rectangle with its start or its end in the scene's origin stays as it is.
QRectF draggedCircle(const QRectF &circle, const QPointF &point);

// The rectangle when the finger is lifted: a height below 20 pixels makes it the smallest circle, 20 x 20,
// whatever its width.
QRectF finishedCircle(const QRectF &circle);

} // namespace editorshapes
