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
    m_events.add(event);
    takeEvents();
}

// A question is over when whoever asked goes on, not yet when its dialog is gone.
void MainWindow::ask(QDialog &dialog)
{
    const QScopedValueRollback asked(m_questions, m_questions + 1);
    dialog.exec();
}

void MainWindow::takeEvents()
{
    while (!m_events.isEmpty()) {
        if (m_questions > 0)
            tellDialogs();
        if (m_questions > 0 || m_actionDepth > 0)
            return; // systemCheck() comes by again
        take(m_events.takeFirst());
    }
}

void MainWindow::take(UnitEvent event)
{
    switch (event) {
    case UnitEvent::CardInserted:
        ChangeMainState(eStateSDCardInserted);
        break;
    case UnitEvent::CardMounted: {
        const QScopedValueRollback atWork(m_actionDepth, m_actionDepth + 1);
        if (m_card != CardHold::Taken)
            takeCard();
        break;
    }
    case UnitEvent::CardRemoved:
        ChangeMainState(eStateSDCardRemoved);
        break;
    case UnitEvent::CardCorrupt:
        ChangeMainState(eStateSDCardCorrupt);
        break;
    case UnitEvent::UsbChanged:
        if (usbHostIsAttached() != (g_MainState == eStateUsbActive))
            ChangeMainState(g_MainState == eStateUsbActive ? eStateUsbDisconnected : eStateUsbActive);
        break;
    case UnitEvent::CameraLost:
        if (g_gst_VideoPipelineMode == eGSTStateError)
            ChangeMainState(eStateVideoInputPipelineFailure);
        break;
    case UnitEvent::FilmEnds:
        if (m_film != Film::None)
            ChangeMainState(eStateLiveTerminateSavingMovie);
        break;
    case UnitEvent::NoteEnds:
        if (g_MainState == eStatePlaybackSnapshotRecordingAudio)
            ChangeMainState(eStatePlaybackSnapshotTerminateRecordingAudio);
        break;
    case UnitEvent::PlaybackOver:
        endPlayback();
        break;
    case UnitEvent::PopUpOver:
        ChangeMainState(g_MainState == eStateCaptureWindowEntry ? eStateCaptureWindowExit
                                                                : eStatePlaybackEditSaveImageExit);
        break;
    case UnitEvent::DelayOver:
        endDelay();
        break;
    case UnitEvent::Shutdown:
        shutDown();
        break;
    }
}

bool MainWindow::endsScreen(UnitEvent event) const
{
    return closesDialogs(event, m_screen, g_MainState, m_actionDepth > 0);
}

// Of a pulled card a dialog learns by the signal alone, and knows what that means for it; told again as long
// as one stands, since it may have come up after the card went.
void MainWindow::tellDialogs()
{
    if (m_events.contains(UnitEvent::CardRemoved))
        emit SDCardRemoved();
    if (m_events.first() != UnitEvent::CardRemoved && endsScreen(m_events.first()))
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
