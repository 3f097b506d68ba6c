#include "app/debounce.h"

#include "platform/command.h"
#include "settings/params.h"
#include "storage/eventlog.h"

#include <QKeyEvent>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.app")

constexpr int kMillisecondsOfMinute = 60000;

} // namespace

debounce::debounce(int &argc, char **argv) : QApplication(argc, argv), m_AutoShutdownTimer(this)
{
    installEventFilter(this);
}

void debounce::init()
{
    m_pParams = params::getInstance();
    connect(&m_AutoShutdownTimer, &QTimer::timeout, this, &debounce::AutoShutDownExpired);
}

int debounce::autoShutdownInterval() const
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    const int index = settings.AutoShutdownIdx;
    // The settings file may name an entry that is not there: then nobody asked for a power-off.
    if (index <= 0 || size_t(index) >= settings.AutoShutdownOptions.size())
        return 0;
    return kMillisecondsOfMinute * int(settings.AutoShutdownOptions[size_t(index)]);
}

void debounce::stopAutoShutdownTimer()
{
    m_AutoShutdownTimer.stop();
}

void debounce::onInitAutoShutdownTimer()
{
    if (const int interval = autoShutdownInterval())
        m_AutoShutdownTimer.start(interval);
}

void debounce::onresetAutoShutdownTimer()
{
    if (autoShutdownInterval())
        onInitAutoShutdownTimer();
    else
        stopAutoShutdownTimer();
}

void debounce::AutoShutDownExpired()
{
    UpdateEventLog(eEventshutdownTimerExpired, QStringLiteral("Shutdown timer expired"));
    qCDebug(log) << "Shutting Down...";
    command::run(QStringLiteral("poweroff"));
}

// The filter sees an event once for every object on its way: the window object is its first stop.
bool debounce::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWindowType())
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        // Restarts the count of a running timer; a stopped one only takes the interval.
        if (const int interval = autoShutdownInterval())
            m_AutoShutdownTimer.setInterval(interval);
        return false;
    case QEvent::MouseButtonRelease:
        return false;
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_PowerOff)
            emit ProcessSystemShutdown();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
