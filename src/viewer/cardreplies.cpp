#include "viewer/cardreplies.h"

#include "viewer/byterange.h"
#include "viewer/cardfiles.h"
#include "viewer/folderzip.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <memory>

namespace {

using namespace viewer;

constexpr size_t kPiece = 128 * 1024;
constexpr char kJson[] = "application/json";

struct Kind
{
    const char *suffix;
    const char *type;
    bool isShown; // by a browser; the others are for keeping
};
constexpr std::array kKinds = {
    Kind{".html", "text/html; charset=utf-8", true},
    Kind{".txt", "text/plain; charset=utf-8", true},
    Kind{".css", "text/css; charset=utf-8", true},
    Kind{".jpg", "image/jpeg", true},
    Kind{".jpeg", "image/jpeg", true},
    Kind{".png", "image/png", true},
    Kind{".wav", "audio/wav", true},
    Kind{".avi", "video/x-msvideo", false},
};
constexpr Kind kAnything{"", "application/octet-stream", false};

const Kind &kindOf(const QString &name)
{
    const auto found = std::find_if(kKinds.begin(), kKinds.end(), [&name](const Kind &kind) {
        return name.endsWith(QLatin1String(kind.suffix), Qt::CaseInsensitive);
    });
    return found == kKinds.end() ? kAnything : *found;
}

void addDownloadName(const Response &response, const QString &name)
{
    addHeader(response, MHD_HTTP_HEADER_CONTENT_DISPOSITION,
              "attachment; filename*=UTF-8''" + QUrl::toPercentEncoding(name));
}

QByteArray header(MHD_Connection *connection, const char *name)
{
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

// A part of a file on its way.
struct SentFile
{
    CardFile file;
    qint64 first;
    const std::atomic<bool> &mayRead;

    static ssize_t read(void *self, uint64_t at, char *to, size_t most)
    {
        const auto &sent = *static_cast<SentFile *>(self);
        const qint64 count = sent.mayRead ? sent.file.read(sent.first + qint64(at), to, qint64(most)) : -1;
        return count > 0 ? ssize_t(count) : ssize_t(MHD_CONTENT_READER_END_WITH_ERROR);
    }
    static void end(void *self) { delete static_cast<SentFile *>(self); }
};

struct SentArchive
{
    FolderZip zip;
    const std::atomic<bool> &mayRead;

    static ssize_t read(void *self, uint64_t, char *to, size_t most)
    {
        auto &sent = *static_cast<SentArchive *>(self);
        const qint64 count = sent.mayRead ? sent.zip.read(to, qint64(most)) : -1;
        if (count < 0)
            return MHD_CONTENT_READER_END_WITH_ERROR;
        return count > 0 ? ssize_t(count) : ssize_t(MHD_CONTENT_READER_END_OF_STREAM);
    }
    static void end(void *self) { delete static_cast<SentArchive *>(self); }
};

// What the request's "Range" asks for; the whole file when the browser has another content of it.
ByteRange requestedRange(MHD_Connection *connection, const CardFile &file)
{
    const QByteArray condition = header(connection, MHD_HTTP_HEADER_IF_RANGE);
    const bool isMeant = condition.isEmpty() || condition == file.tag();
    return rangeOf(isMeant ? header(connection, MHD_HTTP_HEADER_RANGE) : QByteArray(), file.size());
}

Reply partReply(const Context &context, const CardFile &file, const ByteRange &range)
{
    if (range.kind == ByteRange::Kind::Impossible) {
        Reply reply = refusal(MHD_HTTP_RANGE_NOT_SATISFIABLE);
        addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_RANGE,
                  "bytes */" + QByteArray::number(file.size()));
        return reply;
    }
    Reply reply{MHD_HTTP_OK, Response(MHD_create_response_from_callback(
                                 uint64_t(range.length), kPiece, SentFile::read,
                                 new SentFile{file, range.first, context.filesAreOpen}, SentFile::end))};
    if (range.kind == ByteRange::Kind::Part) {
        reply.status = MHD_HTTP_PARTIAL_CONTENT;
        addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_RANGE,
                  "bytes " + QByteArray::number(range.first) + '-' +
                      QByteArray::number(range.first + range.length - 1) + '/' +
                      QByteArray::number(file.size()));
    }
    guard(reply.response, Origin::Card);
    return reply;
}

} // namespace

namespace viewer {

Reply fileReply(const Context &context, MHD_Connection *connection, const QString &name)
{
    const auto file = CardFile::find(name);
    if (!file)
        return refusal(MHD_HTTP_NOT_FOUND);
    const bool isKnown = header(connection, MHD_HTTP_HEADER_IF_NONE_MATCH) == file->tag();
    Reply reply = isKnown ? refusal(MHD_HTTP_NOT_MODIFIED)
                          : partReply(context, *file, requestedRange(connection, *file));
    if (reply.status >= MHD_HTTP_BAD_REQUEST || isKnown)
        return reply;
    const Kind &kind = kindOf(file->name());
    addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_TYPE, kind.type);
    addHeader(reply.response, MHD_HTTP_HEADER_ACCEPT_RANGES, "bytes");
    addHeader(reply.response, MHD_HTTP_HEADER_ETAG, file->tag());
    addHeader(reply.response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-cache");
    if (!kind.isShown)
        addDownloadName(reply.response, file->name());
    return reply;
}

Reply archiveReply(const Context &context, MHD_Connection *, const QString &folder)
{
    if (!isFolder(folder))
        return refusal(MHD_HTTP_NOT_FOUND);
    Reply reply{MHD_HTTP_OK,
                Response(MHD_create_response_from_callback(
                    MHD_SIZE_UNKNOWN, kPiece, SentArchive::read,
                    new SentArchive{FolderZip(folder), context.filesAreOpen}, SentArchive::end))};
    addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_TYPE, "application/zip");
    addHeader(reply.response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    addDownloadName(reply.response, folder.section(QLatin1Char('/'), -1) + QStringLiteral(".zip"));
    guard(reply.response, Origin::Card);
    return reply;
}

Reply firstPictureReply(const Context &, MHD_Connection *, const QString &name)
{
    const auto film = CardFile::find(name);
    const QByteArray picture = film ? firstPicture(*film) : QByteArray();
    return picture.isEmpty() ? refusal(MHD_HTTP_NOT_FOUND)
                             : contentReply(picture, "image/jpeg", Origin::Card);
}

Reply foldersReply(const Context &, MHD_Connection *, const QString &)
{
    return contentReply(folderList(), kJson);
}

Reply capturesReply(const Context &, MHD_Connection *, const QString &folder)
{
    return isFolder(folder) ? contentReply(captureList(folder), kJson) : refusal(MHD_HTTP_NOT_FOUND);
}

} // namespace viewer
