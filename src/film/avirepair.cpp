#include "film/avirepair.h"

#include "film/aviheader.h"
#include "film/aviscan.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace avirepair {

namespace {

using namespace avi;

constexpr quint64 kLargestFilm = 0xffffffff;
// A torn tail is a second long. More than this behind the last whole packet is damage of another kind:
// cutting there would cost good pictures.
constexpr quint64 kLargestTear = 64ULL * 1024 * 1024;
constexpr quint32 kHasIndex = 0x10; // the main header's flags
constexpr quint32 kIsInterleaved = 0x100;
constexpr quint32 kKeyFrame = 0x12; // as avimux has it for pictures; sounds have none
constexpr quint32 kNoKeyFrame = 0x80000000;

std::optional<Header> readHeader(QFile &film)
{
    film.seek(0);
    return parseHeader(film.read(kLargestHeader));
}

QByteArray readAt(QFile &film, quint64 at, qint64 count)
{
    film.seek(qint64(at));
    return film.read(count);
}

bool writeAt(QFile &film, quint64 at, const QByteArray &bytes)
{
    return film.seek(qint64(at)) && film.write(bytes) == bytes.size();
}

bool sync(QFile &film)
{
    return ::fsync(film.handle()) == 0;
}

// The parts' sizes lead from one to the next and to the file's end: this is written last.
bool partsReachTheEnd(QFile &film)
{
    const auto size = quint64(film.size());
    quint64 at = 0;
    while (at + kListHead <= size) {
        const QByteArray head = readAt(film, at, kListHead);
        if (!hasId(head, 0, "RIFF"))
            return false;
        at += kChunkHead + padded(valueAt<quint32>(head, 4));
    }
    return at == size;
}

bool isClosed(QFile &film, const Header &header)
{
    const QByteArray &bytes = header.bytes;
    const quint64 moviEnd =
        quint64(header.movi + kChunkHead) + padded(valueAt<quint32>(bytes, header.movi + 4));
    return partsReachTheEnd(film) && valueAt<quint32>(bytes, header.main + 16) > 0 &&
           valueAt<quint32>(bytes, header.video.header + 32) > 0 && readAt(film, moviEnd, 4) == "idx1";
}

// --- index ---

void append(QByteArray &bytes, quint32 value)
{
    value = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

// Of a film of one part: every packet, places counted from the file's start.
QByteArray wholeIndex(const Scan &scan)
{
    QByteArray index("idx1");
    index.reserve(kChunkHead + qsizetype(scan.packets.size()) * 16);
    append(index, quint32(scan.packets.size() * 16));
    for (const Packet &packet : scan.packets) {
        index += packet.isSound ? "01wb" : "00db";
        append(index, packet.isSound ? 0 : kKeyFrame);
        append(index, packet.at);
        append(index, packet.size);
    }
    return index;
}

// Of the last part of several: the packets of one stream, places counted from the part's start.
QByteArray partIndex(const Scan &scan, bool ofSound)
{
    const quint32 start = scan.parts.back().start;
    QByteArray entries;
    for (const Packet &packet : scan.packets) {
        if (packet.isSound != ofSound)
            continue;
        append(entries, packet.at + quint32(kChunkHead) - start);
        append(entries, packet.size | (ofSound ? kNoKeyFrame : 0));
    }
    QByteArray index(ofSound ? "ix01" : "ix00");
    append(index, quint32(kSuperIndexHead + entries.size()));
    append(index, 0x01000002); // entries of two words, an index of packets
    append(index, quint32(entries.size() / 8));
    index += ofSound ? "01wb" : "00db";
    append(index, start);
    append(index, 0);
    append(index, 0);
    return index + entries;
}

// Puts the last part's index behind its last packet and notes where it stands.
bool writeIndex(QFile &film, const Header &header, Scan &scan)
{
    Part &last = scan.parts.back();
    quint32 at = scan.end;
    QByteArray tail;
    if (at & 1) {
        tail += '\0';
        ++at;
    }
    const auto appendPartIndex = [&](bool ofSound, IndexPlace &place) {
        const QByteArray index = partIndex(scan, ofSound);
        place = {at, quint32(index.size()), quint32(index.size() - kChunkHead - kSuperIndexHead) / 8};
        tail += index;
        at += quint32(index.size());
    };
    if (scan.parts.size() > 1) {
        appendPartIndex(false, last.pictures);
        if (header.audio)
            appendPartIndex(true, last.sounds);
        last.moviEnd = at;
    } else {
        last.moviEnd = at;
        tail += wholeIndex(scan);
    }
    last.end = scan.end + quint32(tail.size());
    return film.resize(scan.end) && writeAt(film, scan.end, tail) && sync(film);
}

// --- headers ---

QByteArray partHead(const Part &part)
{
    QByteArray head("RIFF");
    append(head, part.end - part.start - quint32(kChunkHead));
    head += "AVIXLIST";
    append(head, part.moviEnd - part.movi - quint32(kChunkHead));
    return head + "movi";
}

void setSuperIndex(QByteArray &bytes, const StreamPlaces &places, const Scan &scan, IndexPlace Part::*place)
{
    if (scan.parts.size() == 1)
        return;
    bytes.replace(places.superIndex, 4, "indx");
    setValue(bytes, places.superIndex + 12, quint32(scan.parts.size()));
    qsizetype at = places.superIndex + kChunkHead + kSuperIndexHead;
    for (const Part &part : scan.parts) {
        setValue(bytes, at, quint64((part.*place).at));
        setValue(bytes, at + 8, (part.*place).size);
        setValue(bytes, at + 12, (part.*place).entries);
        at += kSuperIndexEntry;
    }
}

// What a second of sound takes, rounded as avimux rounds it.
quint32 soundBytesPerSecond(const Scan &scan)
{
    const quint64 samples = quint64(scan.sounds.packets) * scan.mp3.samplesPerFrame;
    if (!scan.mp3.onePacketAFrame || samples == 0)
        return scan.mp3.bytesPerSecond;
    return quint32((scan.sounds.bytes * scan.mp3.rate / samples + 4) & ~quint64(7));
}

// A packet that is one frame is the unit of time; else a byte is.
void setSound(QByteArray &bytes, const StreamPlaces &places, const Scan &scan)
{
    const bool frames = scan.mp3.onePacketAFrame && scan.mp3.rate;
    const quint32 bytesPerSecond = soundBytesPerSecond(scan);
    setValue(bytes, places.header + 20, frames ? scan.mp3.samplesPerFrame : 1);
    setValue(bytes, places.header + 24, frames ? scan.mp3.rate : bytesPerSecond);
    setValue(bytes, places.header + 32, frames ? scan.sounds.packets : quint32(scan.sounds.bytes));
    setValue(bytes, places.header + 36, scan.sounds.largest);
    setValue(bytes, places.header + 44, quint32(frames ? 0 : 1));
    setValue(bytes, places.format + 8, bytesPerSecond);
    setValue(bytes, places.format + 12, quint16(frames ? scan.mp3.samplesPerFrame : 1));
}

quint32 picturesPerSecondTimes(const QByteArray &bytes, const StreamPlaces &places, quint64 value)
{
    const quint32 scale = std::max(1U, valueAt<quint32>(bytes, places.header + 20));
    return quint32(value * valueAt<quint32>(bytes, places.header + 24) / scale);
}

void fillHeader(Header &header, const Scan &scan)
{
    QByteArray &bytes = header.bytes;
    const Part &first = scan.parts.front();
    const StreamPlaces &video = header.video;
    const quint32 firstPictures = scan.parts.size() > 1 ? first.pictures.entries : scan.pictures.packets;
    setValue(bytes, 4, first.end - quint32(kChunkHead));
    setValue(bytes, header.main + 4,
             picturesPerSecondTimes(bytes, video, scan.pictures.bytes / scan.pictures.packets) +
                 (header.audio ? soundBytesPerSecond(scan) : 0));
    setValue(bytes, header.main + 12, kHasIndex | (header.audio ? kIsInterleaved : 0));
    setValue(bytes, header.main + 16, firstPictures);
    setValue(bytes, video.header + 32, scan.pictures.packets);
    setValue(bytes, video.header + 36, scan.pictures.largest);
    setSuperIndex(bytes, video, scan, &Part::pictures);
    if (header.audio) {
        setSound(bytes, *header.audio, scan);
        setSuperIndex(bytes, *header.audio, scan, &Part::sounds);
    }
    setValue(bytes, header.odml, scan.pictures.packets);
    setValue(bytes, header.movi + 4, first.moviEnd - quint32(header.movi + kChunkHead));
}

// The film counts as closed when its first size is right: those bytes come last.
bool writeHeaders(QFile &film, const Header &header, const Scan &scan)
{
    for (size_t i = 1; i < scan.parts.size(); ++i) {
        if (!writeAt(film, scan.parts[i].start, partHead(scan.parts[i])))
            return false;
    }
    return writeAt(film, kListHead, header.bytes.sliced(kListHead)) && sync(film) &&
           writeAt(film, 0, header.bytes.first(kListHead)) && sync(film);
}

bool canBeIndexed(QFile &film, const Header &header, const Scan &scan)
{
    if (scan.pictures.packets == 0 || quint64(film.size()) - scan.end > kLargestTear)
        return false;
    for (size_t i = 0; i + 1 < scan.parts.size(); ++i) {
        if (!scan.parts[i].pictures.at || (header.audio && !scan.parts[i].sounds.at))
            return false;
    }
    return scan.parts.size() == 1 || qsizetype(scan.parts.size()) <= header.video.indexEntries;
}

bool open(QFile &film, QIODevice::OpenMode mode)
{
    return film.open(mode | QIODevice::ExistingOnly | QIODevice::Unbuffered) &&
           quint64(film.size()) < kLargestFilm;
}

} // namespace

bool isCutOff(const HostPath &hostPath)
{
    QFile film(hostPath);
    if (!open(film, QIODevice::ReadOnly))
        return false;
    const auto header = readHeader(film);
    return header && !isClosed(film, *header);
}

bool repair(const HostPath &hostPath)
{
    QFile film(hostPath);
    if (!open(film, QIODevice::ReadWrite))
        return false;
    auto header = readHeader(film);
    if (!header || isClosed(film, *header))
        return false;
    Scan scan = scanPackets(film, *header);
    if (!canBeIndexed(film, *header, scan))
        return false;
    struct stat before = {};
    ::fstat(film.handle(), &before);
    const bool indexed = writeIndex(film, *header, scan);
    if (indexed)
        fillHeader(*header, scan);
    else
        film.resize(scan.end); // no half index: the next time finds what this one found
    const bool done = indexed && writeHeaders(film, *header, scan);
    const timespec times[] = {before.st_atim, before.st_mtim};
    ::futimens(film.handle(), times);
    return done;
}

} // namespace avirepair
