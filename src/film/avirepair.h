// Films whose writing was cut off by a kill, a power cut or a pulled card: headers and index are rebuilt in
// place. What is done is what the end of a recording would have done; the packets are not touched.
#pragma once

#include <QString>

namespace avirepair {

// True for a film of ours that was not closed. Reads the header and a few bytes of each part, however long
// the film is. Any thread.
bool isCutOff(const QString &hostPath);

// Repairs such a film: a torn last packet is cut off, then index and headers are written, in that order, each
// on the card before the next. The modification time stays. False when the film is as it was: closed, not
// ours, 4 GiB or more, without a whole picture, torn in its middle, or not writable (a card without room for
// the index). Takes some 40 bytes of memory a packet (of 1 GB of film at most) and a read of a few bytes
// each. Any thread.
bool repair(const QString &hostPath);

} // namespace avirepair
