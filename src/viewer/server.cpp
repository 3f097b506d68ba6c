#include "viewer/server.h"

#include "viewer/answers.h"

#include <arpa/inet.h>
#include <cstring>
#include <microhttpd.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

using namespace viewer;

constexpr unsigned kMostConnections = 256; // each a thread that mostly waits
constexpr unsigned kMostOfOneAddress = 16; // a browser keeps six
constexpr unsigned kPatienceSeconds = 10;  // with a connection on which nothing moves
// Holds the headers of a request and the piece that is being sent, about one live picture.
constexpr size_t kMemoryOfConnection = 128 * 1024;
constexpr size_t kStackOfConnection = 512 * 1024;

MHD_Result acceptNeighbour(void *context, const sockaddr *peer, socklen_t)
{
    const auto *address = static_cast<const sockaddr_in *>(static_cast<const void *>(peer));
    const bool isNeighbour =
        peer->sa_family == AF_INET &&
        static_cast<const Context *>(context)->subnet.holds(ntohl(address->sin_addr.s_addr));
    return isNeighbour ? MHD_YES : MHD_NO;
}

// The address stays as it came: "%00" is to be seen, not to end a text.
size_t leaveEncoded(void *, MHD_Connection *, char *text)
{
    return std::strlen(text);
}

MHD_Result answerTo(void *context, MHD_Connection *connection, const char *address, const char *method,
                    const char *, const char *, size_t *bytesBehind, void **request)
{
    static constexpr char kKnown = 0;
    const QByteArray asked = method;
    const bool isReading = asked == MHD_HTTP_METHOD_GET || asked == MHD_HTTP_METHOD_HEAD;
    if (isReading && !*request) { // an answer now would end the connection
        *request = const_cast<char *>(&kKnown);
        return MHD_YES;
    }
    if (isReading && *bytesBehind > 0)
        return MHD_NO;
    return answer(*static_cast<const Context *>(context), connection, address, isReading);
}

// The kernel keeps little for a viewer: what waits there is old when it arrives.
void keepLittle(void *, MHD_Connection *connection, void **, MHD_ConnectionNotificationCode code)
{
    constexpr int kBytes = 64 * 1024; // doubled by the kernel
    if (code != MHD_CONNECTION_NOTIFY_STARTED)
        return;
    const auto *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    ::setsockopt(info->connect_fd, SOL_SOCKET, SO_SNDBUF, &kBytes, sizeof kBytes);
}

} // namespace

namespace viewer {

Server::Server(Subnet subnet, quint16 port, const std::atomic<bool> &filesAreOpen)
    : m_pictures(subnet.address), m_context{subnet, port, m_pictures, filesAreOpen}
{
}

std::unique_ptr<Server> Server::start(Subnet subnet, quint16 port, const std::atomic<bool> &filesAreOpen)
{
    std::unique_ptr<Server> server(new Server(subnet, port, filesAreOpen));
    return server->listen() ? std::move(server) : nullptr;
}

bool Server::listen()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_context.port);
    address.sin_addr.s_addr = htonl(m_context.subnet.address);
    // With a way to wake the listening thread: it closes what a connection's thread has done with.
    constexpr unsigned kWays =
        MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_POLL | MHD_USE_ITC;
    m_daemon = MHD_start_daemon(
        kWays, m_context.port, acceptNeighbour, &m_context, answerTo, &m_context, MHD_OPTION_SOCK_ADDR,
        &address, MHD_OPTION_CONNECTION_LIMIT, kMostConnections, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
        kMostOfOneAddress, MHD_OPTION_CONNECTION_TIMEOUT, kPatienceSeconds,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, kMemoryOfConnection, MHD_OPTION_THREAD_STACK_SIZE,
        kStackOfConnection, MHD_OPTION_UNESCAPE_CALLBACK, leaveEncoded, nullptr, MHD_OPTION_NOTIFY_CONNECTION,
        keepLittle, nullptr, MHD_OPTION_END);
    return m_daemon;
}

Server::~Server()
{
    m_pictures.end(); // no connection waits for a picture any more
    if (m_daemon)
        MHD_stop_daemon(m_daemon);
}

} // namespace viewer
