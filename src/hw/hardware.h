// Board devices behind sysfs files: display backlight, video decoder, USB controller. GUI thread.
#pragma once

#include <QtGlobal>

// Writes the level in decimal to the display's brightness file; nothing happens when that is missing.
void SetLCDBrightness(char value);

// First status register (0x10) of the analogue video decoder; bit 0: locked to a camera signal.
// 0 when the register file cannot be read.
quint8 getADV7180Status();

// True when a USB host is attached. False when the state file is missing or too short.
bool USBHostDeviceAttached();
