#include "media/filmsync.h"

#include <QLoggingCategory>

#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.media")

constexpr std::chrono::seconds kInterval(1);
constexpr std::chrono::seconds kLongestEnd(10);

// The file's entry in its folder: a film that no folder names is lost with all that was synced.
void syncFolder(const QByteArray &hostPath)
{
    const int folder =
        ::open(hostPath.left(hostPath.lastIndexOf('/')).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    ::fsync(folder);
    ::close(folder);
}

} // namespace

struct FilmSync::Work
{
    void run();

    QByteArray hostPath;
    std::mutex mutex; // of the two below
    bool isAsked = false;
    bool isDone = false;
    std::condition_variable asked;
    std::condition_variable done;
};

FilmSync::FilmSync(const QByteArray &hostPath) : m_work(std::make_shared<Work>())
{
    m_work->hostPath = hostPath;
    std::thread([work = m_work] { work->run(); }).detach();
}

FilmSync::~FilmSync()
{
    std::unique_lock lock(m_work->mutex);
    m_work->isAsked = true;
    m_work->asked.notify_one();
    if (!m_work->done.wait_for(lock, kLongestEnd, [this] { return m_work->isDone; }))
        qCWarning(log) << "the film's last sync does not come back";
}

void FilmSync::Work::run()
{
    int film = -1;
    std::unique_lock lock(mutex);
    while (!asked.wait_for(lock, kInterval, [this] { return isAsked; })) {
        lock.unlock();
        if (film < 0) {
            film = ::open(hostPath.constData(), O_WRONLY | O_CLOEXEC);
            syncFolder(hostPath);
        }
        // A card that is gone is told by the pipeline, which cannot write any more.
        if (film >= 0)
            ::fdatasync(film);
        lock.lock();
    }
    lock.unlock();
    // With the film's end its index and headers are written: it is on the card before anybody hears of the
    // end.
    if (film < 0)
        film = ::open(hostPath.constData(), O_WRONLY | O_CLOEXEC);
    if (film >= 0) {
        ::fsync(film);
        ::close(film);
        syncFolder(hostPath);
    }
    lock.lock();
    isDone = true;
    done.notify_one();
}
