// The HTTP side: who may connect, and how much of everything. One thread a connection, so that a slow card or
// a slow viewer holds nobody else up.
#pragma once

#include "viewer/livepictures.h"
#include "viewer/unitstate.h"

#include <atomic>
#include <memory>

struct MHD_Daemon;

namespace viewer {

// What an answer is made from. Lives as long as the server.
struct Context
{
    Subnet subnet;
    quint16 port = 0;
    LivePictures &pictures;
    const std::atomic<bool> &filesAreOpen; // false at any moment: what is being sent ends
};

class Server
{
public:
    // Listens on the subnet's own address. Nothing when the port is not free.
    static std::unique_ptr<Server> start(Subnet subnet, quint16 port, const std::atomic<bool> &filesAreOpen);
    ~Server(); // ends every connection
    Q_DISABLE_COPY_MOVE(Server)

    quint16 port() const { return m_context.port; }

private:
    Server(Subnet subnet, quint16 port, const std::atomic<bool> &filesAreOpen);
    bool listen();

    LivePictures m_pictures;
    Context m_context;
    MHD_Daemon *m_daemon = nullptr;
};

} // namespace viewer
