// The card in the states of the unit, and the stills that go onto it.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/cablelength.h"
#include "dialogs/confirmationbox.h"
#include "media/gst_videoinput.h"
#include "media/zoom.h"
#include "platform/servicemanager.h"
#include "settings/params.h"
#include "storage/capturenames.h"
#include "storage/dcim.h"
#include "storage/inspectionlog.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"
#include "storage/upgrade.h"

#include <QDateTime>
#include <QTimer>

namespace {

constexpr int kCaptureShown = 1000;   // ms
constexpr qint64 kLongestWait = 6000; // ms for the picture that a touch asked for

} // namespace

bool MainWindow::confirm(const char *picture)
{
    ConfirmationBox box(QPixmap(graphic(picture)), this);
    box.closeWithCard(this);
    ask(box);
    return box.returnStatus;
}

// Nothing is asked: it stays until it is seen, also when the card is gone meanwhile, unless its screen goes,
// too.
void MainWindow::tell(const char *picture)
{
    ConfirmationBox box(QPixmap(graphic(picture)), this);
    connect(this, &MainWindow::SDCardRemoved, &box, [this, &box] {
        if (endsScreen(UnitEvent::CardRemoved))
            box.onSDCardRemoved();
    });
    ask(box);
}

void MainWindow::tellCardLost()
{
    flagCorruptSDCard();
    tell("confirmation_corrupt_sdcard.png");
}

// A card that is full, or one that cannot be written: whoever touched has to know that nothing was saved.
void MainWindow::tellCardTakesNothing()
{
    const bool isFull = SDCardInfo.inserted && SDCardInfo.avail < kLeastAvailable;
    tell(isFull ? "confirmation_disk_full.png" : "confirmation_corrupt_sdcard.png");
}

void MainWindow::showCurrentFolder()
{
    ui->lbl_CurrentFilenameandPath->setText(shownPath(g_SavedFSInfo.currRootDirectory));
}

// The mount follows the kernel's message; one that takes longer is seen by lookForMount().
void MainWindow::enterSDCardInserted()
{
    const eMainStates previous = g_prevMainState;
    Sleeper::sleep(1);
    if (factsOf(previous).card == CardUse::Free) // else the kernel tells again what we know
        takeCard();
    endCardEvent(eStateSDCardInserted, previous);
}

void MainWindow::takeCard()
{
    updateMainMenuSDCardInfo();
    m_card = SDCardInfo.inserted ? CardHold::Taken : CardHold::Awaited;
    if (m_card == CardHold::Taken) {
        CreateDCIMStructure({});
        refreshFolder();
        if (mayAskForUpgrade(m_shown.screen) && SystemUpgradePresent())
            offerUpgrade();
        ActivateMSDC(true);
    }
    showScreen();
}

void MainWindow::refreshFolder()
{
    completeCurrentFolder();
    repairFilms();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    if (m_shown.screen == ScreenKind::Live || m_shown.screen == ScreenKind::Usb)
        showCurrentFolder();
}

void MainWindow::offerUpgrade()
{
    const bool showsPicture = m_shown.screen == ScreenKind::Live;
    gst_EndVideoInputPipeline();
    if (confirm("confirmation_software_upgrade.png")) {
        const servicemanager::LongWork atWork; // an archive is read four times, from a slow card
        emit BusyIndicator(true);
        ProcessSystemUpgrade();
        powerOff();
        emit BusyIndicator(false);
    }
    if (!showsPicture)
        return;
    buildLivePicture();
    showLivePicture();
}

void MainWindow::enterSDCardRemoved()
{
    const eMainStates previous = g_prevMainState;
    Sleeper::sleep(1);
    updateMainMenuSDCardInfo();
    m_card = afterRemoval(m_card, mountTableShowsCard());
    ui->lbl_menu_Format_Media_Capacity->setText(QStringLiteral("----"));
    ui->pb_menu_StorageCapacity->setValue(0);
    ActivateMSDC(false);
    emit SDCardRemoved();
    switch (factsOf(previous).removal) {
    case Removal::Restore:
        endCardEvent(eStateSDCardRemoved, previous);
        break;
    case Removal::EndRecording:
        endRecordingWithoutCard();
        break;
    case Removal::EndVoiceNote:
        recordAudioTimer->stop();
        endNoteRecording();
        tellCardLost();
        ChangeMainState(eStatePlaybackNothingSaved);
        break;
    case Removal::EndPlayback:
    case Removal::NothingSaved:
        stopPlayback();
        ChangeMainState(eStatePlaybackNothingSaved);
        break;
    }
}

void MainWindow::enterSDCardCorrupt()
{
    const eMainStates previous = g_prevMainState;
    flagCorruptSDCard();
    confirm("confirmation_corrupt_sdcard.png");
    endCardEvent(eStateSDCardCorrupt, previous);
}

// Back to where the event came in, unless the question's time brought something else: a film that ended by an
// error, a lost camera.
void MainWindow::endCardEvent(eMainStates event, eMainStates previous)
{
    if (g_MainState == event)
        restoreMainState(previous);
}

void MainWindow::logCapture(eLogFileOperation operation, const QString &name, const QTime &time)
{
    UpdateLogFiles(operation, static_cast<unsigned short>(m_pParams->getParams().MeterCount), name, QString(),
                   time);
}

// The picture of this moment is saved, or none: a camera that has just been started gets its time.
void MainWindow::enterLiveSavingStill()
{
    if (!mayCapture(eStateLive))
        return;
    if (gst_PictureIsCurrent()) {
        savePicture();
        return;
    }
    m_awaitedSince.start();
    imageTimer->start();
}

// Asked before whatever writes a capture, just after the look at the card's room. No: the user is told, and
// the unit is back in `state`.
bool MainWindow::mayCapture(eMainStates state)
{
    if (usbHostIsAttached()) { // since the last look
        restoreMainState(state);
        announce(UnitEvent::UsbChanged);
        return false;
    }
    if (SDCardInfo.inserted && mountTableShowsCard() && restoreCurrentFolder())
        return true;
    restoreMainState(state);
    tellCardTakesNothing();
    return false;
}

void MainWindow::awaitStill()
{
    if (gst_PictureIsCurrent())
        savePicture();
    else if (m_awaitedSince.hasExpired(kLongestWait))
        ChangeMainState(eStateLive);
}

void MainWindow::savePicture()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    g_SavedFSInfo.currFileName = freeCaptureName(QStringLiteral(".jpg"));
    const UnitPath path = inCurrentFolder(g_SavedFSInfo.currFileName);
    const QImage band(graphic("quenvale_brand_base_image.png"));
    const QImage frame(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    const QString stamp = settings.bDateTimeStamp
                              ? QDateTime::currentDateTime().toString(QStringLiteral("HH:mm dd.MM.yyyy"))
                              : QString();
    tmpQimage = stillpicture::compose(band, frame, zoom::stillCutOut(settings.ZoomLevel),
                                      {burntInLength(settings.MeterCount, ui->lbl_CableLength->text()),
                                       ui->lbl_DamageCatelogText->text(), stamp});
    const bool isSaved = stillpicture::save(tmpQimage, path);
    logCapture(eImageCapture, g_SavedFSInfo.currFileName);
    ++g_SavedFSInfo.currDCIMIndex;
    if (isSaved) {
        ChangeMainState(eStateCaptureWindowEntry);
        return;
    }
    ChangeMainState(eStateLive);
    isDiskFull(); // the figures for the picture that fits
    tellCardTakesNothing();
}

void MainWindow::enterCaptureWindowEntry()
{
    ui->lbl_saving_filename->setText(g_SavedFSInfo.currFileName);
    ui->lbl_saving_thumbnail->setPixmap(QPixmap::fromImage(
        tmpQimage.scaled(ui->lbl_saving_thumbnail->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    popUpTimer->start(kCaptureShown);
}

void MainWindow::enterCaptureWindowExit()
{
    ChangeMainState(eStateLive);
}
