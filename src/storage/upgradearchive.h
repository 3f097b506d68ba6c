// Upgrade archives: is this one whole, harmless and from whom it should be? GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

namespace upgradearchive {

// Why the archive at `unitPath` must not be unpacked into `workFolder`; empty when it may. Refused: what tar
// cannot read to its end, an archive without its end mark, links, devices and other members that are neither
// file nor folder, absolute names, ".." in a name, and more content than the unit has room for.
QString refusal(const UnitPath &unitPath, const UnitPath &workFolder);

// True when the unit asks for no signature (it has no key), when the one in `signaturePath` fits, or when
// this very archive has been begun before: it may have changed the key.
bool isTrusted(const UnitPath &unitPath, const UnitPath &signaturePath);

// Keeps in mind, over a power cut too, that a trusted archive is being carried out, until it has been.
void markBegun(const UnitPath &unitPath);
void markDone();

} // namespace upgradearchive
