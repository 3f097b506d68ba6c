// The part of a file that a browser asks for: a phone reads films and notes in parts.
#pragma once

#include <QByteArray>

namespace viewer {

struct ByteRange
{
    enum class Kind { Whole, Part, Impossible };
    Kind kind = Kind::Whole;
    qint64 first = 0;
    qint64 length = 0;
};

// What the header "Range" means for a file of `size` bytes. Several parts at once, another unit and what is
// not understood are answered with the whole file, as the header may be ignored.
ByteRange rangeOf(const QByteArray &header, qint64 size);

} // namespace viewer
