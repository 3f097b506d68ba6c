#include "viewer/livepictures.h"

#include "viewer/jpegsplitter.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr quint16 kStreamPort = 1234;
constexpr int kConnectLimitMs = 500;
constexpr int kLookMs = 100;            // how soon the last viewer's going is noticed when no picture comes
constexpr int kSilenceLimitMs = 3000;   // a stream that is silent for so long is off
constexpr auto kPause = 300ms;          // between two attempts
constexpr auto kPictureLimit = 4s;      // longer than the silence: a break is told before
constexpr qsizetype kPiece = 64 * 1024; // about a picture

bool becomesReady(int fd, short what, int limitMs)
{
    pollfd wanted = {fd, what, 0};
    return ::poll(&wanted, 1, limitMs) == 1;
}

} // namespace

namespace viewer {

LivePictures::LivePictures(quint32 address) : m_address(address), m_thread(&LivePictures::run, this) {}

LivePictures::~LivePictures()
{
    end();
    m_thread.join();
}

void LivePictures::end()
{
    const std::lock_guard lock(m_lock);
    m_isOver = true;
    m_news.notify_all();
}

std::unique_ptr<LivePictures::Seat> LivePictures::sitDown()
{
    const std::lock_guard lock(m_lock);
    if (isFull() || m_isOver)
        return nullptr;
    ++m_seats;
    m_news.notify_all();
    return std::unique_ptr<Seat>(new Seat(*this));
}

LivePictures::Seat::Seat(LivePictures &pictures)
    : m_pictures(pictures),
      m_had(pictures.m_isLive && pictures.m_count ? pictures.m_count - 1 : pictures.m_count),
      m_breaksBefore(pictures.m_breaks)
{
}

LivePictures::Seat::~Seat()
{
    --m_pictures.m_seats;
}

LivePictures::Picture LivePictures::Seat::next()
{
    std::unique_lock lock(m_pictures.m_lock);
    m_pictures.m_news.wait_for(lock, kPictureLimit, [this] {
        return m_pictures.m_isOver || m_pictures.m_breaks != m_breaksBefore || m_pictures.m_count != m_had;
    });
    if (m_pictures.m_isOver || m_pictures.m_breaks != m_breaksBefore || m_pictures.m_count == m_had)
        return nullptr;
    m_had = m_pictures.m_count;
    return m_pictures.m_latest;
}

void LivePictures::run()
{
    while (!m_isOver) {
        {
            std::unique_lock lock(m_lock);
            m_news.wait(lock, [this] { return m_isOver || m_seats > 0; });
        }
        bool isWanted = true;
        if (const int fd = m_isOver ? -1 : connect(); fd >= 0) {
            isWanted = receive(fd);
            ::close(fd);
        }
        std::unique_lock lock(m_lock);
        m_isLive = false;
        m_latest.reset();
        if (!isWanted)
            continue; // whoever sits down just now gets a stream of its own
        ++m_breaks;
        m_news.notify_all();
        m_news.wait_for(lock, kPause, [this] { return m_isOver.load(); });
    }
}

// A connection to the stream, or -1.
int LivePictures::connect() const
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(kStreamPort);
    address.sin_addr.s_addr = htonl(m_address);
    int error = 0;
    socklen_t size = sizeof error;
    if ((::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ||
         errno == EINPROGRESS) &&
        becomesReady(fd, POLLOUT, kConnectLimitMs) &&
        ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0)
        return fd;
    ::close(fd);
    return -1;
}

// Until the stream ends or falls silent: true. False when nobody looks any more.
bool LivePictures::receive(int fd)
{
    JpegSplitter splitter;
    int silentMs = 0;
    while (!m_isOver && silentMs < kSilenceLimitMs) {
        if (m_seats == 0)
            return false;
        if (!becomesReady(fd, POLLIN, kLookMs)) {
            silentMs += kLookMs;
            continue;
        }
        const ssize_t count = ::recv(fd, splitter.room(kPiece), kPiece, 0);
        if (count <= 0)
            return true;
        splitter.taken(count);
        while (auto picture = splitter.next()) {
            silentMs = 0;
            publish(std::move(*picture));
        }
    }
    return true;
}

void LivePictures::publish(QByteArray picture)
{
    const auto shared = std::make_shared<const QByteArray>(std::move(picture));
    const std::lock_guard lock(m_lock);
    m_latest = shared;
    ++m_count;
    m_isLive = true;
    m_news.notify_all();
}

} // namespace viewer
