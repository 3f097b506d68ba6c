#include "viewer/jpegsplitter.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr quint8 kMarker = 0xff;
constexpr quint8 kStartOfImage = 0xd8;
constexpr quint8 kEndOfImage = 0xd9;
constexpr quint8 kStartOfScan = 0xda;

// In a scan: a stuffed byte, a restart.
bool belongsToScan(quint8 code)
{
    return code == 0 || (code >= 0xd0 && code <= 0xd7);
}

} // namespace

namespace viewer {

char *JpegSplitter::room(qsizetype size)
{
    if (m_filled >= kLargestPicture) {
        m_filled = 0;
        lose();
    }
    if (m_bytes.size() < m_filled + size)
        m_bytes.resize(m_filled + size);
    return m_bytes.data() + m_filled;
}

void JpegSplitter::taken(qsizetype size)
{
    m_filled += size;
}

std::optional<QByteArray> JpegSplitter::next()
{
    while (!m_isWhole) {
        const bool moved = m_place == Place::Outside    ? findStart()
                           : m_place == Place::Segments ? passSegment()
                                                        : passScan();
        if (!moved)
            return {};
    }
    QByteArray picture = m_bytes.left(m_seen);
    m_filled -= m_seen;
    std::memmove(m_bytes.data(), m_bytes.constData() + m_seen, size_t(m_filled));
    lose();
    return picture;
}

// The picture begins at the first byte from then on.
bool JpegSplitter::findStart()
{
    const char *begin = m_bytes.constData();
    const qsizetype start = QByteArray::fromRawData(begin, m_filled).indexOf("\xff\xd8\xff");
    const qsizetype useless = start >= 0 ? start : std::max<qsizetype>(0, m_filled - 2);
    m_filled -= useless;
    std::memmove(m_bytes.data(), begin + useless, size_t(m_filled));
    if (start < 0)
        return false;
    m_seen = 2;
    m_place = Place::Segments;
    return true;
}

bool JpegSplitter::passSegment()
{
    if (m_seen + 2 > m_filled)
        return false;
    const quint8 code = at(m_seen + 1);
    if (at(m_seen) != kMarker || code == 0 || code == kStartOfImage) {
        lose();
        m_bytes[0] = 0; // what began here is none: look further on
        return true;
    }
    if (code == kMarker) { // a fill byte
        ++m_seen;
        return true;
    }
    if (code == kEndOfImage) {
        m_seen += 2;
        m_isWhole = true;
        return true;
    }
    if (m_seen + 4 > m_filled)
        return false;
    const qsizetype end = m_seen + 2 + at(m_seen + 2) * 256 + at(m_seen + 3);
    if (end > m_filled)
        return false;
    m_seen = end;
    if (code == kStartOfScan)
        m_place = Place::Scan;
    return true;
}

bool JpegSplitter::passScan()
{
    const char *begin = m_bytes.constData();
    while (m_seen + 1 < m_filled) {
        const void *found = std::memchr(begin + m_seen, kMarker, size_t(m_filled - m_seen - 1));
        if (!found) {
            m_seen = m_filled - 1;
            return false;
        }
        m_seen = static_cast<const char *>(found) - begin;
        if (!belongsToScan(at(m_seen + 1))) {
            m_place = Place::Segments;
            return true;
        }
        m_seen += 2;
    }
    return false;
}

void JpegSplitter::lose()
{
    m_seen = 0;
    m_place = Place::Outside;
    m_isWhole = false;
}

} // namespace viewer
