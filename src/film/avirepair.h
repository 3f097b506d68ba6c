// Films whose writing was cut off by a kill, a power cut or a pulled card: headers and index are rebuilt in
// place. What is done is what the end of a recording would have done; the packets are not touched.
//
// Why not muxed anew. A film of 23 minutes with sound, 907 MB, cut off by a kill, on a desk's disk:
//   repair          0.1 to 0.3 s, 1.3 MB written, and as much room needed on the card
//   ffmpeg -c copy  6.3 to 7.0 s, 1247 MB written, and as much room needed beside the film: 340 MB of it are
//                   an index of empty sound packets, by which the sound claims to last 103 hours
// A card writes 10 MB a second or so, and is full as often as not when a film was cut off.
#pragma once

#include "platform/unit.h"

#include <QString>

namespace avirepair {

// True for a film of ours that was not closed. Reads the header and a few bytes of each part, however long
// the film is. Any thread.
bool isCutOff(const HostPath &hostPath);

// Repairs such a film: a torn last packet is cut off, then index and headers are written, in that order, each
// on the card before the next. The modification time stays. False when the film is as it was: closed, not
// ours, 4 GiB or more, without a whole picture, torn in its middle, or not writable (a card without room for
// the index). Takes some 40 bytes of memory a packet (of 1 GB of film at most) and a read of a few bytes
// each. Any thread.
bool repair(const HostPath &hostPath);

} // namespace avirepair
