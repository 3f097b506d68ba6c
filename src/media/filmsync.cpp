#include "media/filmsync.h"

#include <chrono>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::chrono::seconds kInterval(1);

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

FilmSync::FilmSync(const QByteArray &hostPath)
    : m_thread([this, hostPath](const std::stop_token &stop) { run(stop, hostPath); })
{
}

void FilmSync::run(const std::stop_token &stop, const QByteArray &hostPath)
{
    int film = -1;
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, stop, kInterval, [&] { return stop.stop_requested(); })) {
        if (film < 0) {
            film = ::open(hostPath.constData(), O_WRONLY | O_CLOEXEC);
            syncFolder(hostPath);
        }
        // A card that is gone is told by the pipeline, which cannot write any more.
        if (film >= 0)
            ::fdatasync(film);
    }
    // With the film's end its index and headers are written: it is on the card before anybody hears of the
    // end.
    if (film < 0)
        film = ::open(hostPath.constData(), O_WRONLY | O_CLOEXEC);
    if (film < 0)
        return;
    ::fsync(film);
    ::close(film);
    syncFolder(hostPath);
}
