#include "viewer/answers.h"

#include "viewer/cardfiles.h"
#include "viewer/cardreplies.h"
#include "viewer/livereply.h"
#include "viewer/page.h"
#include "viewer/response.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

namespace {

using namespace viewer;

constexpr size_t kLargestHeaders = 8 * 1024; // of a request

Reply stateReply(const Context &context, MHD_Connection *, const QString &)
{
    const QJsonObject state{{QStringLiteral("live"), context.pictures.isLive()},
                            {QStringLiteral("full"), context.pictures.isFull()},
                            {QStringLiteral("files"), context.filesAreOpen.load()}};
    return contentReply(QJsonDocument(state).toJson(QJsonDocument::Compact), "application/json");
}

// An address that ends in "/" takes the name of something on the card behind it.
struct Route
{
    const char *address;
    bool isOfCard;
    Reply (*reply)(const Context &, MHD_Connection *, const QString &name);
};
constexpr std::array kRoutes = {
    Route{"/state", false, stateReply},        Route{"/live", false, liveReply},
    Route{"/folders", true, foldersReply},     Route{"/folders/", true, capturesReply},
    Route{"/files/", true, fileReply},         Route{"/zip/", true, archiveReply},
    Route{"/first/", true, firstPictureReply},
};

bool takes(const Route &route, const QByteArray &address)
{
    const QByteArray own(route.address);
    return own.endsWith('/') ? address.startsWith(own) : address == own;
}

// A page of another site that was led to our address by its own name knocks with that name.
bool isMeantForUs(const Context &context, MHD_Connection *connection)
{
    const QByteArray host = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
    const QByteArray own = dotted(context.subnet.address).toLatin1();
    return host == own + ':' + QByteArray::number(context.port) || (context.port == 80 && host == own);
}

Reply replyOfRoute(const Context &context, MHD_Connection *connection, const QByteArray &address)
{
    const auto route = std::find_if(kRoutes.begin(), kRoutes.end(),
                                    [&address](const Route &each) { return takes(each, address); });
    if (route == kRoutes.end())
        return pageReply(address);
    if (!route->isOfCard)
        return route->reply(context, connection, QString());
    if (!context.filesAreOpen)
        return refusal(MHD_HTTP_SERVICE_UNAVAILABLE);
    const QByteArray encoded = address.mid(qsizetype(qstrlen(route->address)));
    if (encoded.isEmpty() && !address.endsWith('/'))
        return route->reply(context, connection, QString());
    const auto name = nameInAddress(encoded);
    return name ? route->reply(context, connection, *name) : refusal(MHD_HTTP_NOT_FOUND);
}

Reply replyTo(const Context &context, MHD_Connection *connection, const QByteArray &address, bool isReading)
{
    const auto *headers = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    if (!headers || headers->header_size > kLargestHeaders)
        return refusal(MHD_HTTP_REQUEST_HEADER_FIELDS_TOO_LARGE);
    if (!isReading) {
        Reply reply = refusal(MHD_HTTP_METHOD_NOT_ALLOWED);
        addHeader(reply.response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
        return reply;
    }
    if (!isMeantForUs(context, connection))
        return refusal(MHD_HTTP_MISDIRECTED_REQUEST);
    return replyOfRoute(context, connection, address);
}

} // namespace

namespace viewer {

MHD_Result answer(const Context &context, MHD_Connection *connection, const char *address, bool isReading)
{
    const Reply reply = replyTo(context, connection, address, isReading);
    return reply.response ? MHD_queue_response(connection, reply.status, reply.response.get()) : MHD_NO;
}

} // namespace viewer
