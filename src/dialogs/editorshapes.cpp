#include "dialogs/editorshapes.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.14; // two decimals: every head of earlier pictures was drawn with it
constexpr double kHeadSide = 10.0;
constexpr double kSmallestCircle = 20.0;

QPointF corner(const QPointF &tip, double angle)
{
    return tip - QPointF(std::sin(angle), std::cos(angle)) * kHeadSide;
}

} // namespace

namespace editorshapes {

QPolygonF arrowHead(const QLineF &shaft)
{
    const double length = shaft.length();
    if (length <= 0.0)
        return {};
    double angle = std::acos(std::clamp(shaft.dx() / length, -1.0, 1.0));
    if (shaft.dy() >= 0)
        angle = 2 * kPi - angle;
    return QPolygonF(
        {shaft.p2(), corner(shaft.p2(), angle + kPi / 3), corner(shaft.p2(), angle + kPi - kPi / 3)});
}

QRectF draggedCircle(const QRectF &circle, const QPointF &point)
{
    if (circle.topLeft().isNull() || circle.bottomRight().isNull())
        return circle;
    return {circle.topLeft(), QSizeF(point.x() - circle.left(), point.y() - circle.top())};
}

QRectF finishedCircle(const QRectF &circle)
{
    if (std::abs(circle.height()) >= kSmallestCircle)
        return circle;
    return {circle.topLeft(), QSizeF(kSmallestCircle, kSmallestCircle)};
}

} // namespace editorshapes
