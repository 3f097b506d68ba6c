// One look wherever the application runs: style, palette, font and pixels do not follow the desktop.
#pragma once

// Fixes scale and resolution; before the application object is built.
void fixPixels();

// Fixes style, palette and font; after it is built.
void fixLook();
