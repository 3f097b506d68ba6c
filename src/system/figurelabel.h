// The labels of the two clock dialogs, which hold the figures themselves. GUI thread.
#pragma once

#include <QLabel>

// The decimal number that the label shows.
inline int figure(const QLabel *label)
{
    return label->text().toInt();
}

// With a leading zero below ten.
inline void showFigure(QLabel *label, int value)
{
    label->setText(QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')));
}

// Turns the dialog's sign into the hourglass, on the screen before the caller blocks.
inline void showWaiting(QLabel *sign)
{
    sign->setPixmap(QPixmap(QStringLiteral(":/MyGraphicResources/graphics/ind_hourglass.png"))
                        .scaled(sign->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    sign->repaint();
}
