#include "viewer/response.h"

namespace {

// The page shows what lies on the unit and runs its own script alone.
constexpr char kProgramPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
// A card may come from anywhere: what is on it runs nothing.
constexpr char kCardPolicy[] =
    "default-src 'none'; style-src 'self' 'unsafe-inline'; img-src 'self'; media-src 'self'; base-uri "
    "'none'; "
    "form-action 'none'; frame-ancestors 'none'; sandbox allow-same-origin allow-downloads";

} // namespace

namespace viewer {

void addHeader(const Response &response, const char *name, const QByteArray &value)
{
    MHD_add_response_header(response.get(), name, value.constData());
}

void guard(const Response &response, Origin origin)
{
    addHeader(response, "Content-Security-Policy", origin == Origin::Card ? kCardPolicy : kProgramPolicy);
    addHeader(response, "X-Content-Type-Options", "nosniff");
    addHeader(response, "Cross-Origin-Resource-Policy", "same-origin");
    addHeader(response, "Cross-Origin-Opener-Policy", "same-origin");
    addHeader(response, "Referrer-Policy", "no-referrer");
}

Reply contentReply(const QByteArray &content, const QByteArray &type, Origin origin)
{
    Reply reply{MHD_HTTP_OK,
                Response(MHD_create_response_from_buffer(
                    size_t(content.size()), const_cast<char *>(content.constData()), MHD_RESPMEM_MUST_COPY))};
    addHeader(reply.response, MHD_HTTP_HEADER_CONTENT_TYPE, type);
    addHeader(reply.response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    guard(reply.response, origin);
    return reply;
}

Reply refusal(unsigned status)
{
    Reply reply = contentReply(QByteArray(), "text/plain");
    reply.status = status;
    return reply;
}

} // namespace viewer
