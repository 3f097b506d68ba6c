// The letters of the burnt-in texts.
#pragma once

// Makes "Sans", which the overlays ask for, one certain font of this program: with a wider one, as many desks
// have it, the date would not fit between its place and the picture's edge. Once, before anything loads
// fonts.
void fixOverlayFont();
