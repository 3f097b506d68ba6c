// Cuts a stream of JPEG pictures, one after another without anything between, at their ends. The markers are
// walked as a decoder would: a thumbnail inside a picture's header does not end it.
#pragma once

#include <QByteArray>

#include <optional>

namespace viewer {

class JpegSplitter
{
public:
    static constexpr qsizetype kLargestPicture = 2 * 1024 * 1024; // one that is longer is no picture of ours

    // Room for `size` more bytes of the stream; taken(n) says how many came.
    char *room(qsizetype size);
    void taken(qsizetype size);

    // The next whole picture; nothing until more bytes come. What is no picture is left out.
    std::optional<QByteArray> next();

private:
    enum class Place { Outside, Segments, Scan };

    bool findStart();
    bool passSegment(); // false: more bytes are needed, or the picture is whole, or it was none
    bool passScan();
    void lose();
    quint8 at(qsizetype index) const { return quint8(m_bytes.at(index)); }

    QByteArray m_bytes;
    qsizetype m_filled = 0; // of m_bytes
    qsizetype m_seen = 0;   // how far the walk has come
    Place m_place = Place::Outside;
    bool m_isWhole = false;
};

} // namespace viewer
