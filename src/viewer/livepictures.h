// The network stream for many: one connection to the unit's port while somebody looks, none otherwise. Each
// viewer takes the latest picture when it is ready for one; what it missed is not kept for it.
#pragma once

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace viewer {

class LivePictures
{
public:
    static constexpr int kMostViewers = 8;
    using Picture = std::shared_ptr<const QByteArray>;

    // `address`: of the unit, in the byte order of the host. Nothing is connected yet.
    explicit LivePictures(quint32 address);
    ~LivePictures(); // every seat has to be gone; end() sees to it that they go
    Q_DISABLE_COPY_MOVE(LivePictures)

    // Whoever waits for a picture gets none any more.
    void end();

    // Pictures come; without a viewer nobody knows.
    bool isLive() const { return m_isLive; }
    bool isFull() const { return m_seats >= kMostViewers; }

    // A viewer's place; one thread uses it.
    class Seat
    {
    public:
        ~Seat();
        Q_DISABLE_COPY_MOVE(Seat)

        // Waits for a picture that this viewer has not had. None when the stream is off, or was meanwhile.
        Picture next();

    private:
        friend class LivePictures;
        explicit Seat(LivePictures &pictures);

        LivePictures &m_pictures;
        quint64 m_had = 0;
        quint64 m_breaksBefore = 0;
    };

    // Nothing when all places are taken.
    std::unique_ptr<Seat> sitDown();

private:
    void run();
    int connect() const;
    bool receive(int fd);
    void publish(QByteArray picture);

    const quint32 m_address;
    std::atomic<int> m_seats = 0;
    std::atomic<bool> m_isLive = false;
    std::atomic<bool> m_isOver = false;

    std::mutex m_lock; // for what follows
    std::condition_variable m_news;
    Picture m_latest;
    quint64 m_count = 0;  // of pictures so far
    quint64 m_breaks = 0; // how often there was no stream, or none any more
    std::thread m_thread;
};

} // namespace viewer
