#include "app/touchguard.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>

namespace {

constexpr qint64 kNewScreen = 300; // ms: a finger's second touch was meant for the screen before
constexpr qint64 kQueued = 20;     // ms in which all comes in that was touched during an action

bool isPress(const QEvent &event)
{
    return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
}

} // namespace

TouchGuard::TouchGuard(QObject *parent) : QObject(parent)
{
    qApp->installEventFilter(this);
    // The last one installed sees an event first: the application's own, which counts every touch as a sign
    // of a user, stays before this one.
    qApp->removeEventFilter(qApp);
    qApp->installEventFilter(qApp);
}

void TouchGuard::screenChanged()
{
    m_sinceScreen.start();
}

void TouchGuard::actionEnded()
{
    m_sinceAction.start();
}

void TouchGuard::close()
{
    m_isClosed = true;
}

void TouchGuard::open()
{
    m_isClosed = false;
}

bool TouchGuard::countsNow() const
{
    const auto within = [](const QElapsedTimer &since, qint64 limit) {
        return since.isValid() && !since.hasExpired(limit);
    };
    return !m_isClosed && !within(m_sinceScreen, kNewScreen) && !within(m_sinceAction, kQueued);
}

bool TouchGuard::eventFilter(QObject *watched, QEvent *event)
{
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) && qobject_cast<QDialog *>(watched))
        screenChanged();
    if (!watched->isWindowType()) // the window is an event's first stop
        return false;
    if (isPress(*event))
        m_isDropping = !countsNow();
    const bool isTouch =
        isPress(*event) || event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease;
    return isTouch && m_isDropping;
}
