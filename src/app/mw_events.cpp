// Events of the unit: each is taken when no action and no question is on the stack, one at a time.
#include "app/mainwindow.h"

#include "hw/hardware.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/sdcard.h"

#include <QApplication>
#include <QDialog>
#include <QScopedValueRollback>
#include <QTimer>

void MainWindow::announce(UnitEvent event)
{
    m_waiting.events.add(event);
    takeEvents();
}

// A question is over when whoever asked goes on, not yet when its dialog is gone.
void MainWindow::ask(QDialog &dialog)
{
    const QScopedValueRollback asked(m_waiting.questions, m_waiting.questions + 1);
    dialog.exec();
}

void MainWindow::takeEvents()
{
    while (!m_waiting.events.isEmpty()) {
        if (m_waiting.questions > 0)
            tellDialogs();
        if (m_waiting.questions > 0 || m_waiting.actions > 0)
            return; // systemCheck() comes by again
        take(m_waiting.events.takeFirst());
    }
}

void MainWindow::take(UnitEvent event)
{
    switch (event) {
    case UnitEvent::CardInserted:
        return ChangeMainState(eStateSDCardInserted);
    case UnitEvent::CardMounted:
        return takeMountedCard();
    case UnitEvent::CardRemoved:
        return ChangeMainState(eStateSDCardRemoved);
    case UnitEvent::CardCorrupt:
        return ChangeMainState(eStateSDCardCorrupt);
    case UnitEvent::UsbChanged:
        if (usbHostIsAttached() != (g_MainState == eStateUsbActive))
            ChangeMainState(g_MainState == eStateUsbActive ? eStateUsbDisconnected : eStateUsbActive);
        return;
    case UnitEvent::CameraLost:
        if (g_gst_VideoPipelineMode == eGSTStateError)
            ChangeMainState(eStateVideoInputPipelineFailure);
        return;
    case UnitEvent::FilmEnds:
        if (m_film != Film::None)
            ChangeMainState(eStateLiveTerminateSavingMovie);
        return;
    case UnitEvent::NoteEnds:
        if (g_MainState == eStatePlaybackSnapshotRecordingAudio)
            ChangeMainState(eStatePlaybackSnapshotTerminateRecordingAudio);
        return;
    case UnitEvent::PlaybackOver:
        return endPlayback();
    case UnitEvent::PopUpOver:
        return ChangeMainState(g_MainState == eStateCaptureWindowEntry ? eStateCaptureWindowExit
                                                                       : eStatePlaybackEditSaveImageExit);
    case UnitEvent::DelayOver:
        return endDelay();
    case UnitEvent::Shutdown:
        return shutDown();
    }
}

// In no state of its own: the screen goes on, with the card.
void MainWindow::takeMountedCard()
{
    const QScopedValueRollback atWork(m_waiting.actions, m_waiting.actions + 1);
    if (m_card != CardHold::Taken)
        takeCard();
}

bool MainWindow::endsScreen(UnitEvent event) const
{
    return closesDialogs(event, m_shown.screen, g_MainState, m_waiting.actions > 0);
}

// Of a pulled card a dialog learns by the signal alone, and knows what that means for it; told again as long
// as one stands, since it may have come up after the card went.
void MainWindow::tellDialogs()
{
    if (m_waiting.events.contains(UnitEvent::CardRemoved))
        emit SDCardRemoved();
    if (m_waiting.events.first() != UnitEvent::CardRemoved && endsScreen(m_waiting.events.first()))
        closeDialogs();
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

// While we work on the card no host is asked for: it does not get it.
void MainWindow::checkUsbHost()
{
    if (factsOf(g_MainState).card == CardUse::Free && usbHostIsAttached() != (g_MainState == eStateUsbActive))
        announce(UnitEvent::UsbChanged);
}

void MainWindow::lookForMount()
{
    if (m_card == CardHold::Taken)
        return;
    const bool isMounted = mountTableShowsCard();
    m_card = afterLook(m_card, isMounted);
    if (m_card == CardHold::Awaited && isMounted)
        announce(UnitEvent::CardMounted);
}
