#pragma once

#include <QWidget>

// A window that loses its card.
class Owner : public QWidget
{
    Q_OBJECT

signals:
    void SDCardRemoved();
};
