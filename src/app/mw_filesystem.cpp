// The card in the states of the unit, and the stills that go onto it.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/cablelength.h"
#include "app/graphics.h"
#include "dialogs/confirmationbox.h"
#include "media/gst_videoinput.h"
#include "media/zoom.h"
#include "settings/params.h"
#include "storage/dcim.h"
#include "storage/inspectionlog.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"
#include "storage/upgrade.h"

#include <QDateTime>
#include <QTimer>

namespace {

constexpr int kCaptureShown = 1000; // ms

} // namespace

bool MainWindow::confirm(const char *picture)
{
    ConfirmationBox box(QPixmap(graphic(picture)), this);
    connect(this, &MainWindow::SDCardRemoved, &box, &QDialog::reject);
    box.exec();
    return box.returnStatus;
}

// What was being written is lost: this stays until it is seen, the card being gone already.
void MainWindow::tellCardLost()
{
    flagCorruptSDCard();
    ConfirmationBox box(QPixmap(graphic("confirmation_corrupt_sdcard.png")), this);
    box.exec();
}

void MainWindow::showCurrentFolder()
{
    ui->lbl_CurrentFilenameandPath->setText(shownFolder(g_SavedFSInfo.currRootDirectory));
    ui->lbl_CurrentFilenameandPath->show();
}

void MainWindow::showCardButtons(bool cardIsThere, eMainStates state)
{
    const CardButtons can = cardButtons(cardIsThere, state);
    ui->btn_menu_Capture->setEnabled(can.capture);
    ui->btn_menu_CaptureModeSelect->setEnabled(can.captureMode);
    ui->btn_menu_Thumbnails->setEnabled(can.thumbnails);
    for (QWidget *button :
         {ui->btn_menu_FolderOptions, ui->btn_tools_Format_Media, ui->btn_menu_UnmountMedia})
        button->setEnabled(can.toolsPage);
}

void MainWindow::enterSDCardInserted()
{
    const eMainStates previous = g_prevMainState;
    showCardButtons(true, previous);
    Sleeper::sleep(1); // the mount follows the kernel's message
    updateMainMenuSDCardInfo();
    if (!holdsCard(previous)) // else the kernel tells again what we know
        takeCard(previous);
    endCardEvent(eStateSDCardInserted, previous);
}

void MainWindow::takeCard(eMainStates previous)
{
    CreateDCIMStructure(QString());
    repairFilms();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    if (screenOf(previous) == ScreenKind::Live)
        showCurrentFolder();
    if (mayAskForUpgrade(previous) && SystemUpgradePresent())
        offerUpgrade(previous);
    ActivateMSDC(true);
}

void MainWindow::offerUpgrade(eMainStates previous)
{
    gst_EndVideoInputPipeline();
    if (confirm("confirmation_software_upgrade.png")) {
        emit BusyIndicator(true);
        ProcessSystemUpgrade();
        powerOff();
        emit BusyIndicator(false);
    }
    if (screenOf(previous) != ScreenKind::Live)
        return;
    gst_VideoInputPipeline(0);
    showLivePicture();
}

void MainWindow::enterSDCardRemoved()
{
    const eMainStates previous = g_prevMainState;
    const CardRemovalResult result = afterRemoval(previous);
    Sleeper::sleep(1);
    updateMainMenuSDCardInfo();
    showCardButtons(false, previous);
    ui->lbl_CurrentFilenameandPath->hide();
    ui->lbl_menu_Format_Media_Capacity->setText(QStringLiteral("----"));
    ui->pb_menu_StorageCapacity->setValue(0);
    ActivateMSDC(false);
    emit SDCardRemoved();
    switch (result) {
    case CardRemovalResult::Restore:
        endCardEvent(eStateSDCardRemoved, previous);
        break;
    case CardRemovalResult::EndRecording:
        endRecordingWithoutCard();
        break;
    case CardRemovalResult::EndVoiceNote:
        recordAudioTimer->stop();
        endNoteRecording();
        setNoteRecordingButtonsEnabled(true);
        tellCardLost();
        ChangeMainState(eStatePlaybackNothingSaved);
        break;
    case CardRemovalResult::EndPlayback:
    case CardRemovalResult::NothingSaved:
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

void MainWindow::logCapture(eLogFileOperation operation, const QString &name)
{
    UpdateLogFiles(operation, static_cast<unsigned short>(m_pParams->getParams().MeterCount),
                   inCurrentFolder(name), QString());
}

void MainWindow::enterLiveSavingStill()
{
    savePicture();
}

void MainWindow::savePicture()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    g_SavedFSInfo.currFileName = freeCaptureName(QStringLiteral(".jpg"));
    const QString path = inCurrentFolder(g_SavedFSInfo.currFileName);
    const QImage band(graphic("quenvale_brand_base_image.png"));
    const QImage frame(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    const QString stamp = settings.bDateTimeStamp
                              ? QDateTime::currentDateTime().toString(QStringLiteral("HH:mm dd.MM.yyyy"))
                              : QString();
    tmpQimage = stillpicture::compose(
        band, frame, zoom::stillCutOut(settings.ZoomLevel),
        {burntInLength(settings, ui->lbl_CableLength->text()), ui->lbl_DamageCatelogText->text(), stamp});
    stillpicture::save(tmpQimage, path);
    logCapture(eImageCapture, g_SavedFSInfo.currFileName);
    ++g_SavedFSInfo.currDCIMIndex;
    ChangeMainState(eStateCaptureWindowEntry);
}

void MainWindow::enterCaptureWindowEntry()
{
    ui->frm_LiveMenuButtons_Left->setEnabled(false);
    ui->lbl_saving_filename->setText(g_SavedFSInfo.currFileName);
    ui->lbl_saving_thumbnail->setPixmap(QPixmap::fromImage(
        tmpQimage.scaled(ui->lbl_saving_thumbnail->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    ui->frm_saving_information->show();
    popUpTimer->start(kCaptureShown);
}

void MainWindow::enterCaptureWindowExit()
{
    ui->frm_saving_information->hide();
    ui->frm_LiveMenuButtons_Left->setEnabled(true);
    ChangeMainState(eStateLive);
}
