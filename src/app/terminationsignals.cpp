#include "app/terminationsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Made by the constructor; the handler writes into 0, the notifier reads from 1.
int g_wakeUp[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(g_wakeUp[0], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_wakeUp) != 0)
        return; // the signals then keep their default: they end the program at once
    auto *notifier = new QSocketNotifier(g_wakeUp[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(g_wakeUp[1], &byte, 1) > 0) {
        }
        emit received();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}
