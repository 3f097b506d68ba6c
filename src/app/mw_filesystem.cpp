// The card in the states of the unit, and the stills that go onto it.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "dialogs/confirmationbox.h"
#include "media/gst_videoinput.h"
#include "media/zoom.h"
#include "settings/params.h"
#include "storage/dcim.h"
#include "storage/inspectionlog.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"

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

void MainWindow::showCurrentFolder()
{
    ui->lbl_CurrentFilenameandPath->setText(shownFolder(g_SavedFSInfo.currRootDirectory));
    ui->lbl_CurrentFilenameandPath->show();
}

void MainWindow::enterSDCardInserted()
{
    const eMainStates previous = g_prevMainState;
    setCardButtonsEnabled(true);
    Sleeper::sleep(1); // the mount follows the kernel's message
    updateMainMenuSDCardInfo();
    CreateDCIMStructure(QString());
    repairFilms();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    showCurrentFolder();
    ActivateMSDC(true);
    restoreMainState(previous);
}

void MainWindow::enterSDCardRemoved()
{
    const eMainStates previous = g_prevMainState;
    Sleeper::sleep(1);
    updateMainMenuSDCardInfo();
    setCardButtonsEnabled(false);
    ui->lbl_CurrentFilenameandPath->hide();
    ui->lbl_menu_Format_Media_Capacity->setText(QStringLiteral("----"));
    ui->pb_menu_StorageCapacity->setValue(0);
    ActivateMSDC(false);
    emit SDCardRemoved();
    if (previous == eStateLiveSavingMovie)
        endRecordingWithoutCard();
    else
        restoreMainState(previous);
}

void MainWindow::enterSDCardCorrupt()
{
    const eMainStates previous = g_prevMainState;
    flagCorruptSDCard();
    confirm("confirmation_corrupt_sdcard.png");
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
    tmpQimage =
        stillpicture::compose(band, frame, zoom::stillCutOut(settings.ZoomLevel),
                              {ui->lbl_CableLength->text(), ui->lbl_DamageCatelogText->text(), stamp});
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
