// Events of the unit: each is taken when no action and no question is on the stack, one at a time.
#include "app/mainwindow.h"

#include "hw/hardware.h"
#include "settings/params.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

namespace {

// The dialogs of the tools page that need no card stay, and so does what an action on its way through asks or
// tells; any other goes with the screen under it.
bool closesDialogs(UnitEvent event, eMainStates state, bool actionIsAtWork)
{
    const bool passesThrough = actionIsAtWork && afterRemoval(state) == CardRemovalResult::Restore;
    switch (event) {
    case UnitEvent::Shutdown:
        return true;
    case UnitEvent::UsbChanged:
        return !passesThrough;
    case UnitEvent::CardRemoved:
        return !passesThrough && screenOf(state) != ScreenKind::Tools;
    default:
        return false;
    }
}

} // namespace

void MainWindow::announce(UnitEvent event)
{
    m_events.add(event);
    if (event == UnitEvent::CardRemoved && QApplication::activeModalWidget())
        emit SDCardRemoved(); // what works on the card closes now; the rest follows when it is gone
    takeEvents();
}

void MainWindow::takeEvents()
{
    while (!m_events.isEmpty()) {
        const UnitEvent event = m_events.first();
        const bool wasQuestion = QApplication::activeModalWidget() != nullptr;
        if (wasQuestion && closesDialogs(event, g_MainState, m_actionDepth > 0))
            closeDialogs();
        // A dialog of the tools page has nothing of the card in its hands, and no action of a state below it.
        const bool mayRunBelow =
            event == UnitEvent::CardRemoved && screenOf(g_MainState) == ScreenKind::Tools;
        if (m_actionDepth > 0 || (wasQuestion && !mayRunBelow))
            return; // systemCheck() comes by again
        m_events.removeFirst();
        take(event);
    }
}

void MainWindow::take(UnitEvent event)
{
    switch (event) {
    case UnitEvent::CardInserted:
        takeCardEvent(eStateSDCardInserted);
        break;
    case UnitEvent::CardRemoved:
        takeCardEvent(eStateSDCardRemoved);
        break;
    case UnitEvent::CardCorrupt:
        takeCardEvent(eStateSDCardCorrupt);
        break;
    case UnitEvent::UsbChanged:
        if (usbHostIsAttached() != (g_MainState == eStateUsbActive))
            ChangeMainState(g_MainState == eStateUsbActive ? eStateUsbDisconnected : eStateUsbActive);
        break;
    case UnitEvent::Shutdown:
        shutDown();
        break;
    }
}

// A pop-up that would end now finds a card's state instead of its own: it gets its time afterwards.
void MainWindow::takeCardEvent(eMainStates state)
{
    const eMainStates previous = g_MainState;
    const int popUpLeft = popUpTimer->isActive() ? popUpTimer->remainingTime() : -1;
    popUpTimer->stop();
    ChangeMainState(state);
    if (popUpLeft >= 0 && g_MainState == previous)
        popUpTimer->start(popUpLeft);
}

// The topmost first; each counts as cancelled.
void MainWindow::closeDialogs()
{
    while (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
        dialog->reject();
        if (dialog == QApplication::activeModalWidget())
            return;
    }
}

// Without the module no host sees the card, whatever the cable says.
bool MainWindow::usbHostIsAttached() const
{
    return m_pParams->getParams().MSDC_ModuleInstalled && USBHostDeviceAttached();
}

void MainWindow::checkUsbHost()
{
    if (usbHostIsAttached() != (g_MainState == eStateUsbActive))
        announce(UnitEvent::UsbChanged);
}
