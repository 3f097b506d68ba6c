// Brings what has been recorded onto the card once a second.
#pragma once

#include <QByteArray>

#include <condition_variable>
#include <mutex>
#include <thread>

// While it lives, a thread of its own syncs the file at `hostPath` (which may come into being later). Not on
// the streaming thread: a card that takes two seconds for a sync would stop the film there. The end, after
// the file was closed, syncs it a last time and waits for that. Made and ended on the GUI thread.
class FilmSync
{
public:
    explicit FilmSync(const QByteArray &hostPath);
    Q_DISABLE_COPY_MOVE(FilmSync)

private:
    void run(const std::stop_token &stop, const QByteArray &hostPath);

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::jthread m_thread; // last: its end needs the others
};
