// The unit's software out of an archive on the card. GUI thread; blocks until it is done.
#pragma once

#include <QString>

// Name of the archive found last in the card's DCIM folder; empty at start. Written by
// SystemUpgradePresent().
extern QString upgradeFileName;

// True when the DCIM folder holds an archive of the current format that this unit may take; upgradeFileName
// is then its name. Archives of the older format are deleted from the card. On a unit that has
// /home/root/tubix4_app/upgrade.pub the archive needs a valid signature in DCIM/upgrade.sig; without one it
// stays on the card and is not offered.
bool SystemUpgradePresent();

// Unpacks the archive `upgradeFileName` into /home/root/tmp, carries out its tubix4_update.txt and removes
// work folder, archive and signature. A damaged or hostile archive changes nothing on the unit; it is
// removed like the others, so that it is not offered again and again. A file that is replaced is so as a
// whole: cut off at any point, the unit has the old one or the new one, and the archive is offered again.
void ProcessSystemUpgrade();

// At start: takes away the work folder of an upgrade that was cut off.
void removeUnfinishedUpgrade();
