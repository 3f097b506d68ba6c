#include "app/touchguard.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>

#include <utility>

namespace {

constexpr qint64 kNewScreen = 300; // ms: a finger's second touch was meant for the screen before

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
    // A timer without an interval waits until nothing else is left to do.
    m_settling.setSingleShot(true);
    connect(&m_settling, &QTimer::timeout, this, &TouchGuard::settle);
}

void TouchGuard::screenChanged()
{
    m_isNewScreen = true;
    m_settling.start();
}

void TouchGuard::actionEnded()
{
    m_settling.start();
}

void TouchGuard::settle()
{
    if (std::exchange(m_isNewScreen, false))
        m_sinceScreen.start();
}

void TouchGuard::close()
{
    m_isClosed = true;
}

void TouchGuard::open()
{
    m_isClosed = false;
}

bool TouchGuard::eventFilter(QObject *watched, QEvent *event)
{
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) && qobject_cast<QDialog *>(watched))
        screenChanged();
    if (!watched->isWindowType()) // the window is an event's first stop
        return false;
    if (isPress(*event))
        m_isDropping = m_isClosed || m_settling.isActive() ||
                       (m_sinceScreen.isValid() && !m_sinceScreen.hasExpired(kNewScreen));
    const bool isTouch =
        isPress(*event) || event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease;
    return isTouch && m_isDropping;
}
