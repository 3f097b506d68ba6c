// The header block of a film as avimux lays it out: where its fields stand, and whether they tell of a film
// that was closed.
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <optional>

namespace avi {

inline constexpr qsizetype kChunkHead = 8; // identifier and size
inline constexpr qsizetype kListHead = 12; // and the list's type
inline constexpr qsizetype kSuperIndexHead = 24;
inline constexpr qsizetype kSuperIndexEntry = 16;
inline constexpr qsizetype kLargestHeader = 64LL * 1024;

// Places in the header's bytes, each that of a chunk's content; the index is its chunk's head.
struct StreamPlaces
{
    qsizetype header = 0;       // strh
    qsizetype format = 0;       // strf
    qsizetype superIndex = 0;   // JUNK until a film has several parts
    qsizetype indexEntries = 0; // room in it
};

struct Header
{
    QByteArray bytes;   // from the file's start up to the first packet
    qsizetype main = 0; // avih
    qsizetype odml = 0; // dmlh
    qsizetype movi = 0; // the list's head
    StreamPlaces video;
    std::optional<StreamPlaces> audio;
};

template <typename T> T valueAt(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<T>(bytes.constData() + at);
}

template <typename T> void setValue(QByteArray &bytes, qsizetype at, T value)
{
    qToLittleEndian(value, bytes.data() + at);
}

inline bool hasId(const QByteArray &bytes, qsizetype at, const char *id)
{
    return QByteArrayView(bytes).sliced(at).startsWith(id);
}

// The start of an even place: chunks are padded.
inline constexpr quint64 padded(quint64 size)
{
    return size + (size & 1);
}

// Reads the header out of a film's first bytes. Nothing when they are not those of a film of ours: one stream
// of JPEG pictures, and perhaps one of MP3 sound, each with room for an index of indexes.
std::optional<Header> parseHeader(const QByteArray &start);

} // namespace avi
