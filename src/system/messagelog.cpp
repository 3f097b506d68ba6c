#include "system/messagelog.h"

#include <QIODevice>

#include <algorithm>
#include <array>

namespace {

constexpr QByteArrayView kSlotPhrase = "mmc1: card";
constexpr QByteArrayView kRemovedPhrase = "removed";
constexpr QByteArrayView kPartitionPhrase = "mmcblk1: p1";
constexpr std::array<QByteArrayView, 5> kErrorPhrases = {
    "mmc1: error", "FAT read failed", "bread failed", "error, fat_free_clusters", "has been set read-only"};

constexpr qint64 kSlice = 65536;
constexpr qsizetype kSeam = 32;       // bytes, no phrase is longer
constexpr qint64 kLongestLine = 4096; // of a line that is waited for

} // namespace

namespace messagelog {

void Findings::add(QByteArrayView piece)
{
    slot = slot || piece.contains(kSlotPhrase);
    removed = removed || piece.contains(kRemovedPhrase);
    partition = partition || piece.contains(kPartitionPhrase);
    error = error || std::any_of(kErrorPhrases.begin(), kErrorPhrases.end(),
                                 [&](QByteArrayView phrase) { return piece.contains(phrase); });
}

Card afterLine(Card before, const Findings &line)
{
    Card card = line.slot && line.removed ? Card::Removed : before;
    if (line.partition || card == Card::Inserted)
        card = line.error ? Card::Corrupt : Card::Inserted;
    return card;
}

Batch::Batch(Card before, qint64 location, qint64 size)
    : m_card(before), m_position(location), m_size(size), m_lineStart(location), m_isReading(true)
{
}

bool Batch::readOn(QIODevice &log)
{
    const QByteArray slice = log.seek(m_position) ? log.read(kSlice) : QByteArray();
    take(slice);
    m_position += slice.size();
    if (slice.size() == kSlice && m_position < m_size)
        return true;
    endLine();
    m_isReading = false;
    return false;
}

qint64 Batch::nextLocation() const
{
    const bool isWaitedFor = m_lineStart < m_position && m_position - m_lineStart <= kLongestLine;
    return isWaitedFor ? std::min(m_size, m_lineStart) : m_size;
}

void Batch::take(QByteArrayView slice)
{
    for (qsizetype at = 0; at < slice.size();) {
        const qsizetype end = slice.indexOf('\n', at);
        const QByteArrayView piece = slice.sliced(at, (end < 0 ? slice.size() : end) - at);
        m_line.add(piece);
        if (!m_seam.isEmpty())
            m_line.add(m_seam + piece.first(std::min(kSeam, piece.size())).toByteArray());
        if (end < 0) {
            m_seam = (m_seam + piece.last(std::min(kSeam, piece.size())).toByteArray()).right(kSeam);
            return;
        }
        endLine();
        at = end + 1;
        m_lineStart = m_position + at;
    }
}

void Batch::endLine()
{
    m_card = afterLine(m_card, m_line);
    m_sawRemoval = m_sawRemoval || (m_line.slot && m_line.removed);
    m_line = {};
    m_seam.clear();
}

} // namespace messagelog
