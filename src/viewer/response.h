// An answer of the HTTP library, with the headers that every one of ours has.
#pragma once

#include <QByteArray>

#include <memory>
#include <microhttpd.h>

namespace viewer {

struct ResponseEnd
{
    void operator()(MHD_Response *response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, ResponseEnd>;

// The answer and its number, as it is sent.
struct Reply
{
    unsigned status = MHD_HTTP_OK;
    Response response;
};

// Where a text comes from decides what a browser may do with it.
enum class Origin { Program, Card };

void addHeader(const Response &response, const char *name, const QByteArray &value);

// Nothing of it is of use to another site, and nothing is taken for what it is not.
void guard(const Response &response, Origin origin);

// `content` is copied.
Reply contentReply(const QByteArray &content, const QByteArray &type, Origin origin = Origin::Program);

// An answer without content but its number's.
Reply refusal(unsigned status);

} // namespace viewer
