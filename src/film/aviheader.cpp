#include "film/aviheader.h"

namespace avi {

namespace {

constexpr qsizetype kMainHeader = 56;
constexpr qsizetype kStreamHeader = 56;
constexpr qsizetype kSoundFormat = 16;
constexpr quint16 kMp3 = 0x55;

// Calls `take(at, size)` for each chunk between two places, `at` being its head; false when one reaches
// beyond the end or is not taken.
template <typename Take> bool forEachChunk(const QByteArray &bytes, qsizetype at, qsizetype end, Take take)
{
    while (at + kChunkHead <= end) {
        const quint64 size = valueAt<quint32>(bytes, at + 4);
        if (quint64(at + kChunkHead) + size > quint64(end) || !take(at, qsizetype(size)))
            return false;
        at += kChunkHead + qsizetype(padded(size));
    }
    return true;
}

bool isList(const QByteArray &bytes, qsizetype at, const char *type)
{
    return hasId(bytes, at, "LIST") && hasId(bytes, at + kChunkHead, type);
}

std::optional<StreamPlaces> parseStream(const QByteArray &bytes, qsizetype list, qsizetype size)
{
    StreamPlaces places;
    forEachChunk(bytes, list + kListHead, list + kChunkHead + size, [&](qsizetype at, qsizetype length) {
        if (hasId(bytes, at, "strh") && length >= kStreamHeader) {
            places.header = at + kChunkHead;
        } else if (hasId(bytes, at, "strf") && length >= kSoundFormat) {
            places.format = at + kChunkHead;
        } else if ((hasId(bytes, at, "indx") || hasId(bytes, at, "JUNK")) && length > kSuperIndexHead) {
            places.superIndex = at;
            places.indexEntries = (length - kSuperIndexHead) / kSuperIndexEntry;
        }
        return true;
    });
    if (!places.header || !places.format || !places.superIndex)
        return std::nullopt;
    return places;
}

// Video first, as stream 00, then the sound.
bool takeStream(Header &header, const StreamPlaces &places)
{
    const QByteArray &bytes = header.bytes;
    if (!header.video.header) {
        header.video = places;
        return hasId(bytes, places.header, "vidsMJPG");
    }
    if (header.audio)
        return false;
    header.audio = places;
    return hasId(bytes, places.header, "auds") && valueAt<quint16>(bytes, places.format) == kMp3;
}

bool parseHeaderList(Header &header, qsizetype list, qsizetype size)
{
    const QByteArray &bytes = header.bytes;
    return forEachChunk(bytes, list + kListHead, list + kChunkHead + size,
                        [&](qsizetype at, qsizetype length) {
                            if (hasId(bytes, at, "avih") && length >= kMainHeader) {
                                header.main = at + kChunkHead;
                            } else if (isList(bytes, at, "strl")) {
                                const auto places = parseStream(bytes, at, length);
                                return places && takeStream(header, *places);
                            } else if (isList(bytes, at, "odml") && length >= kListHead + 4) {
                                header.odml = at + kListHead + kChunkHead;
                            }
                            return true;
                        });
}

} // namespace

std::optional<Header> parseHeader(const QByteArray &start)
{
    if (start.size() < kListHead || !hasId(start, 0, "RIFF") || !hasId(start, kChunkHead, "AVI "))
        return std::nullopt;
    Header header;
    header.bytes = start;
    for (qsizetype at = kListHead; at + kListHead <= start.size();) {
        const quint64 size = valueAt<quint32>(start, at + 4);
        const bool whole = quint64(at + kChunkHead) + size <= quint64(start.size());
        if (isList(start, at, "movi")) {
            header.movi = at;
            break;
        }
        if (!whole || (isList(start, at, "hdrl") && !parseHeaderList(header, at, qsizetype(size))))
            return std::nullopt;
        at += kChunkHead + qsizetype(padded(size));
    }
    if (!header.movi || !header.main || !header.odml || !header.video.header)
        return std::nullopt;
    header.bytes.truncate(header.movi + kListHead);
    return header;
}

} // namespace avi
