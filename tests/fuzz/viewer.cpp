// What the viewer's program gets: the part of a file that a browser asks for, and the stream of pictures.
#include "fuzz.h"
#include "viewer/byterange.h"
#include "viewer/jpegsplitter.h"

#include <cstring>

FUZZ(input)
{
    const qint64 size = input.isEmpty() ? 0 : uchar(input[0]) * 1000LL;
    const viewer::ByteRange range = viewer::rangeOf(input.mid(1), size);
    require(range.kind != viewer::ByteRange::Kind::Part ||
            (range.first >= 0 && range.length > 0 && range.first + range.length <= size));

    viewer::JpegSplitter splitter;
    for (qsizetype at = 0; at < input.size(); at += size / 1000 + 1) {
        const qsizetype piece = std::min<qsizetype>(size / 1000 + 1, input.size() - at);
        std::memcpy(splitter.room(piece), input.constData() + at, size_t(piece));
        splitter.taken(piece);
        while (const auto picture = splitter.next())
            require(picture->startsWith("\xff\xd8") && picture->endsWith("\xff\xd9") &&
                    input.contains(*picture));
    }
}
