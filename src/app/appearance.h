// One look wherever the application runs: style, palette, font and pixels do not follow the desktop.
#pragma once

class QWidget;

// Fixes scale and resolution; before the application object is built.
void fixPixels();

// Fixes style, palette and font; after it is built.
void fixLook();

// Shows the unit's window on a desk: an ordinary window of the screen's size, where on the unit it is the
// screen.
void showOnDesk(QWidget &window);
