#include "film/aviscan.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <fcntl.h>

namespace avi {

namespace {

constexpr qsizetype kWindow = 4096;
// What a power cut leaves behind the last sync may have its length, but not its content.
constexpr quint64 kDoubtful = 16ULL * 1024 * 1024;
constexpr quint64 kPictureEnd = 64; // bytes in which the end mark stands; encoders pad

struct Mp3Frame
{
    quint32 rate = 0; // 0: no frame
    quint32 samples = 0;
    quint32 bitRate = 0;
    quint32 length = 0;
};

// The frame whose first four bytes these are.
Mp3Frame mp3Frame(const QByteArray &head)
{
    static constexpr std::array<quint32, 3> rates = {44100, 48000, 32000};
    static constexpr std::array<std::array<quint32, 15>, 2> kilobits = {
        {{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};
    const quint32 bits = head.size() < 4 ? 0 : qFromBigEndian<quint32>(head.constData());
    const quint32 version = bits >> 19 & 3; // 3: MPEG 1, 2: MPEG 2, 0: MPEG 2.5
    const quint32 layer = bits >> 17 & 3;   // 1: layer III
    const quint32 bitRate = bits >> 12 & 15;
    const quint32 rate = bits >> 10 & 3;
    if (bits >> 21 != 0x7ff || version == 1 || layer != 1 || bitRate == 0 || bitRate == 15 || rate == 3)
        return {};
    Mp3Frame frame;
    frame.rate = rates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    frame.samples = version == 3 ? 1152 : 576;
    frame.bitRate = kilobits[version == 3 ? 0 : 1][bitRate] * 1000;
    frame.length = frame.samples / 8 * frame.bitRate / frame.rate + (bits >> 9 & 1);
    return frame;
}

class Scanner
{
public:
    Scanner(QFile &film, const Header &header)
        : m_film(film), m_size(quint64(film.size())), m_hasSound(header.audio.has_value())
    {
        m_part.movi = quint32(header.movi);
        m_at = quint64(header.movi + kListHead);
    }

    Scan run()
    {
        while (step()) {
        }
        return std::move(m_scan);
    }

private:
    // Bytes at a place of the file; fewer at its end. Heads lie close together where sound is: one read
    // serves several.
    QByteArray bytesAt(quint64 at, qsizetype count)
    {
        if (at < m_windowAt || at + quint64(count) > m_windowAt + quint64(m_window.size())) {
            m_film.seek(qint64(at));
            m_window = m_film.read(std::max(count, kWindow));
            m_windowAt = at;
        }
        return m_window.mid(qsizetype(at - m_windowAt), count);
    }

    bool step()
    {
        const QByteArray head = bytesAt(m_at, 16);
        if (head.size() < kListHead)
            return false;
        const quint32 size = valueAt<quint32>(head, 4);
        const quint64 end = m_at + kChunkHead + size;
        if (hasId(head, 0, "RIFF") && hasId(head, kChunkHead, "AVIX"))
            return enterNextPart();
        if (end > m_size || size > quint32(INT32_MAX))
            return false;
        if (hasId(head, 0, "00d")) // "00db" or "00dc"
            return takePicture(head, size);
        if (hasId(head, 0, "01wb") && m_hasSound)
            return takeSound(head, size);
        if (hasId(head, 0, "ix00"))
            m_part.pictures = {quint32(m_at), quint32(kChunkHead) + size, m_pictures};
        else if (hasId(head, 0, "ix01"))
            m_part.sounds = {quint32(m_at), quint32(kChunkHead) + size, m_sounds};
        else if (!hasId(head, 0, "idx1"))
            return false;
        else
            m_inIndex = true;
        m_at = padded(end);
        if (!m_inIndex)
            m_part.moviEnd = quint32(m_at);
        m_part.end = quint32(m_at);
        return true;
    }

    bool enterNextPart()
    {
        if (!m_isOpen)
            return false; // the part before it has no packet
        m_scan.parts.back() = m_part;
        m_part = {};
        m_part.start = quint32(m_at);
        m_part.movi = quint32(m_at + kListHead);
        m_pictures = m_sounds = 0;
        m_isOpen = m_inIndex = false;
        m_at += 2 * kListHead;
        return true;
    }

    bool isDoubtful(quint32 size) const { return m_at + size + kDoubtful > m_size; }

    bool takePicture(const QByteArray &head, quint32 size)
    {
        // An empty packet repeats the picture before it.
        if (size > 0 && (uchar(head[8]) != 0xff || uchar(head[9]) != 0xd8))
            return false;
        if (size > 0 && isDoubtful(size)) {
            const quint64 end = m_at + kChunkHead + size;
            const auto tail = qsizetype(std::min<quint64>(size, kPictureEnd));
            if (!bytesAt(end - quint64(tail), tail).contains("\xff\xd9"))
                return false;
        }
        ++m_pictures;
        take(size, false, m_scan.pictures);
        return true;
    }

    bool takeSound(const QByteArray &head, quint32 size)
    {
        const Mp3Frame frame = mp3Frame(head.mid(kChunkHead));
        Mp3Facts &mp3 = m_scan.mp3;
        if (mp3.rate && mp3.onePacketAFrame && frame.length != size && isDoubtful(size))
            return false;
        if (frame.rate && !mp3.rate)
            mp3 = {frame.rate, frame.samples, frame.bitRate / 8, mp3.onePacketAFrame};
        mp3.onePacketAFrame = mp3.onePacketAFrame && frame.length == size;
        ++m_sounds;
        take(size, true, m_scan.sounds);
        return true;
    }

    void take(quint32 size, bool isSound, Totals &totals)
    {
        if (!m_isOpen) {
            m_scan.packets.clear();
            m_scan.parts.push_back(m_part);
        }
        m_isOpen = true;
        m_scan.packets.push_back({quint32(m_at), size, isSound});
        m_scan.end = quint32(m_at + kChunkHead + size);
        ++totals.packets;
        totals.bytes += size;
        totals.largest = std::max(totals.largest, size);
        m_at = padded(m_scan.end);
    }

    QFile &m_film;
    const quint64 m_size;
    const bool m_hasSound;
    QByteArray m_window;
    quint64 m_windowAt = 0;
    quint64 m_at = 0;
    Part m_part;            // being walked
    quint32 m_pictures = 0; // in it
    quint32 m_sounds = 0;
    bool m_isOpen = false; // it has a packet
    bool m_inIndex = false;
    Scan m_scan;
};

} // namespace

Scan scanPackets(QFile &film, const Header &header)
{
    // The heads lie far apart: reading ahead would fetch the whole film.
    ::posix_fadvise(film.handle(), 0, 0, POSIX_FADV_RANDOM);
    return Scanner(film, header).run();
}

} // namespace avi
