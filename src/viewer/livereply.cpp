#include "viewer/livereply.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using namespace viewer;

constexpr size_t kPiece = 64 * 1024;
constexpr char kType[] = "multipart/x-mixed-replace; boundary=picture";
// A browser shows a picture when it sees the boundary behind it: it is sent with the picture, not with the
// next.
constexpr char kBoundary[] = "\r\n--picture\r\n";

// One viewer's stream on its way.
class SentPictures
{
public:
    SentPictures(std::unique_ptr<LivePictures::Seat> seat, LivePictures::Picture first)
        : m_seat(std::move(seat)), m_picture(std::move(first)), m_head(kBoundary)
    {
        m_head += headOfPicture();
    }

    static ssize_t read(void *self, uint64_t, char *to, size_t most)
    {
        return static_cast<SentPictures *>(self)->fill(to, qsizetype(most));
    }
    static void end(void *self) { delete static_cast<SentPictures *>(self); }

private:
    QByteArray headOfPicture() const
    {
        return "Content-Type: image/jpeg\r\nContent-Length: " + QByteArray::number(m_picture->size()) +
               "\r\n\r\n";
    }

    // At most the rest of one picture.
    ssize_t fill(char *to, qsizetype most)
    {
        if (m_sent == m_head.size() + m_picture->size() + m_tail.size()) {
            m_picture = m_seat->next();
            if (!m_picture)
                return MHD_CONTENT_READER_END_OF_STREAM;
            m_head = headOfPicture();
            m_sent = 0;
        }
        qsizetype count = 0;
        qsizetype before = 0; // the piece's place among the three
        for (const QByteArray *each : {&std::as_const(m_head), m_picture.get(), &m_tail}) {
            const qsizetype from = m_sent + count - before;
            if (from >= 0 && from < each->size()) {
                const qsizetype part = std::min(each->size() - from, most - count);
                std::memcpy(to + count, each->constData() + from, size_t(part));
                count += part;
            }
            before += each->size();
        }
        m_sent += count;
        return ssize_t(count);
    }

    std::unique_ptr<LivePictures::Seat> m_seat;
    LivePictures::Picture m_picture;
    QByteArray m_head;
    const QByteArray m_tail = kBoundary;
    qsizetype m_sent = 0; // of head, picture and tail
};

} // namespace

namespace viewer {

Reply liveReply(const Context &context, MHD_Connection *, const QString &)
{
    auto seat = context.pictures.sitDown();
    auto first = seat ? seat->next() : nullptr;
    if (!first)
        return refusal(MHD_HTTP_SERVICE_UNAVAILABLE);
    Reply reply{MHD_HTTP_OK, Response(MHD_create_response_from_callback(
                                 MHD_SIZE_UNKNOWN, kPiece, SentPictures::read,
                                 new SentPictures(std::move(seat), std::move(first)), SentPictures::end))};
    addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_TYPE, kType);
    addHeader(reply.response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    guard(reply.response, Origin::Program);
    return reply;
}

} // namespace viewer
