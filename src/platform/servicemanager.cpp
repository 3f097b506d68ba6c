#include "platform/servicemanager.h"

#include <QLoggingCategory>
#include <QTimer>

#include <chrono>
#include <systemd/sd-daemon.h>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.platform")

constexpr int kKeepEnvironment = 0;       // it is read again with every call
constexpr quint64 kLongWork = 3600000000; // microseconds

void tell(const char *state)
{
    if (const int result = sd_notify(kKeepEnvironment, state); result < 0)
        qCWarning(log) << "the service manager was not told" << state << ':' << qt_error_string(-result);
}

// The time between two beats that the manager allows, in microseconds; 0: it does not wait for any.
quint64 allowedTime()
{
    uint64_t allowed = 0;
    return sd_watchdog_enabled(kKeepEnvironment, &allowed) > 0 ? allowed : 0;
}

void allow(quint64 microseconds)
{
    if (allowedTime() > 0)
        tell(QByteArray("WATCHDOG_USEC=" + QByteArray::number(microseconds)).constData());
}

} // namespace

namespace servicemanager {

bool isAlive(const Frames &before, const Frames &now)
{
    return !now.expected || !before.expected || now.count != before.count;
}

void tellReady()
{
    tell("READY=1");
}

void tellStopping()
{
    tell("STOPPING=1");
}

LongWork::LongWork()
{
    allow(kLongWork);
}

LongWork::~LongWork()
{
    allow(allowedTime());
}

Watchdog::Watchdog(std::function<Frames()> look, QObject *parent)
    : QObject(parent), m_look(std::move(look)), m_before(m_look())
{
    const quint64 allowed = allowedTime();
    if (allowed == 0)
        return;
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &Watchdog::beat);
    timer->start(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(allowed / 2)));
}

void Watchdog::beat()
{
    const Frames now = m_look();
    if (isAlive(std::exchange(m_before, now), now))
        tell("WATCHDOG=1");
    else
        qCWarning(log) << "no frame since the last look: the watchdog is not fed";
}

} // namespace servicemanager
