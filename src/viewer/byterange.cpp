#include "viewer/byterange.h"

#include <algorithm>

namespace {

// Digits alone: toLongLong() would take a sign and blanks as well.
bool isNumber(const QByteArray &text)
{
    return !text.isEmpty() && text.size() <= 18 &&
           std::all_of(text.begin(), text.end(), [](char each) { return each >= '0' && each <= '9'; });
}

} // namespace

namespace viewer {

ByteRange rangeOf(const QByteArray &header, qint64 size)
{
    const ByteRange whole{ByteRange::Kind::Whole, 0, size};
    const QByteArray range = header.trimmed();
    const qsizetype dash = range.indexOf('-');
    if (!range.startsWith("bytes=") || dash < 0)
        return whole;
    const QByteArray first = range.mid(6, dash - 6);
    const QByteArray last = range.mid(dash + 1);
    if ((!first.isEmpty() && !isNumber(first)) || (!last.isEmpty() && !isNumber(last)) ||
        (first.isEmpty() && last.isEmpty()))
        return whole;
    qint64 from = first.toLongLong();
    qint64 to = last.isEmpty() ? size - 1 : std::min(last.toLongLong(), size - 1);
    if (first.isEmpty()) { // the last so many bytes
        from = std::max<qint64>(0, size - last.toLongLong());
        to = size - 1;
    } else if (!last.isEmpty() && last.toLongLong() < from) {
        return whole;
    }
    if (from > to)
        return {ByteRange::Kind::Impossible, 0, 0};
    return {ByteRange::Kind::Part, from, to - from + 1};
}

} // namespace viewer
