// Brings what has been recorded onto the card once a second.
#pragma once

#include <QByteArray>

#include <memory>

// While it lives, a thread of its own syncs the file at `hostPath` (which may come into being later). Not on
// the streaming thread: a card that takes two seconds for a sync would stop the film there. The end, after
// the file was closed, syncs it a last time and waits for that, 10 s at most: a sync that takes longer is one
// of a card that is gone, and its thread is left to the kernel. Made and ended on the GUI thread.
class FilmSync
{
public:
    explicit FilmSync(const QByteArray &hostPath);
    ~FilmSync();
    Q_DISABLE_COPY_MOVE(FilmSync)

private:
    struct Work;

    std::shared_ptr<Work> m_work; // shared with the thread
};
