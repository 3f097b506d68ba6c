// What the service manager that started us is told: ready, alive, stopping. Nothing where none did. GUI
// thread.
#pragma once

#include <QObject>

#include <functional>

namespace servicemanager {

// The picture's sign of life at one moment.
struct Frames
{
    bool expected = false; // a pipeline that delivers frames runs, or should
    qint32 count = 0;      // frames received so far
};

// True when the watchdog may be fed: no frames are due, or some came since the last look. A pipeline that
// started in between has until the next look to bring its first.
bool isAlive(const Frames &before, const Frames &now);

// The picture is on the screen. From now on the manager waits for Watchdog's beats.
void tellReady();

// The end begins: what takes time now is no hang.
void tellStopping();

// While it lives the manager waits an hour for the next beat: for work that holds the event loop for as long
// as a card makes it.
class LongWork
{
public:
    LongWork();
    ~LongWork();
    Q_DISABLE_COPY_MOVE(LongWork)
};

// Beats twice in the time the manager allows, from the event loop of the thread that made it.
class Watchdog : public QObject
{
public:
    explicit Watchdog(std::function<Frames()> look, QObject *parent = nullptr);

private:
    void beat();

    std::function<Frames()> m_look;
    Frames m_before;
};

} // namespace servicemanager
