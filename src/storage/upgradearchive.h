// Upgrade archives: is this one whole, harmless and from whom it should be? GUI thread.
#pragma once

#include <QString>

namespace upgradearchive {

// Why the archive at `unitPath` must not be unpacked into `workFolder`; empty when it may. Refused: what tar
// cannot read to its end, an archive without its end mark, links, devices and other members that are neither
// file nor folder, absolute names, ".." in a name, and more content than the unit has room for.
QString refusal(const QString &unitPath, const QString &workFolder);

// True when the unit asks for no signature (it has no key), or the one in `signaturePath` fits.
bool isTrusted(const QString &unitPath, const QString &signaturePath);

} // namespace upgradearchive
