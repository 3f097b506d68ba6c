// Walks the packets of a film whose headers do not tell where they end.
#pragma once

#include "film/aviheader.h"

#include <vector>

class QFile;

namespace avi {

struct Packet
{
    quint32 at; // of the chunk's head, in the file
    quint32 size;
    bool isSound;
};

struct IndexPlace
{
    quint32 at = 0;
    quint32 size = 0; // with its head
    quint32 entries = 0;
};

// A film of more than 1 GB is a chain of parts ("RIFF"), each with an index at its end.
struct Part
{
    quint32 start = 0;
    quint32 movi = 0;    // the packet list's head
    quint32 moviEnd = 0; // behind the packets and their index
    quint32 end = 0;
    IndexPlace pictures;
    IndexPlace sounds;
};

struct Totals
{
    quint32 packets = 0;
    quint64 bytes = 0;
    quint32 largest = 0;
};

struct Mp3Facts
{
    quint32 rate = 0; // samples a second; 0: no frame seen
    quint32 samplesPerFrame = 0;
    quint32 bytesPerSecond = 0;  // of the first frame
    bool onePacketAFrame = true; // else the packets are pieces of one stream of bytes
};

struct Scan
{
    std::vector<Part> parts;     // the last holds the last whole packet
    std::vector<Packet> packets; // of the last part alone, at most 1 GB of film
    quint32 end = 0;             // behind the last whole packet, its padding not counted
    Totals pictures;
    Totals sounds;
    Mp3Facts mp3;
};

// Reads every packet's head (not the packets: a long film takes seconds, not minutes), up to the first that
// is torn or is no packet. Pictures near the end of the file are looked at as a whole.
Scan scanPackets(QFile &film, const Header &header);

} // namespace avi
