// What the kernel's messages tell about the card, and the reading of them. No thread of its own.
#pragma once

#include <QByteArray>

class QIODevice;

namespace messagelog {

enum class Card { Unknown, Inserted, Removed, Corrupt };

// What one line says. A line's findings add up piece by piece.
struct Findings
{
    bool slot = false;    // the card in the slot ...
    bool removed = false; // ... and its removal are told by one line
    bool partition = false;
    bool error = false;

    void add(QByteArrayView piece);
};

// What is believed after one more line. An error phrase counts on a partition line and on every line that
// follows one while the card is believed inserted; only a new partition line ends "corrupt".
Card afterLine(Card before, const Findings &line);

// The new part of the log, read in slices so that the caller stays alive beside a flood of messages. Memory
// is bounded: of a line that runs over slices only the end is kept, and a phrase across the seam is found.
class Batch
{
public:
    Batch() = default; // nothing to read

    // From byte `location` of a log that has `size` bytes now, believing `before`. A `location` past the end
    // (the log was rotated) reads nothing.
    Batch(Card before, qint64 location, qint64 size);

    // Reads one slice (64 KB) more. False at the end: the log's, or `size` if it grows faster.
    bool readOn(QIODevice &log);

    bool isReading() const { return m_isReading; }
    Card card() const { return m_card; }
    bool sawRemoval() const { return m_sawRemoval; }
    qint64 size() const { return m_size; }

    // Where the next batch begins: at `size`, or at the begin of a line that had not come to its end (it is
    // examined again when it has).
    qint64 nextLocation() const;

private:
    void take(QByteArrayView slice);
    void endLine();

    Card m_card = Card::Unknown;
    qint64 m_position = 0;
    qint64 m_size = 0;
    qint64 m_lineStart = 0;
    Findings m_line;
    QByteArray m_seam; // the end of what is read of the current line
    bool m_sawRemoval = false;
    bool m_isReading = false;
};

} // namespace messagelog
