// Films: start, running time, end.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "app/livemode.h"
#include "app/runningtime.h"
#include "film/avirepair.h"
#include "film/filmlimit.h"
#include "media/gst_videoinput.h"
#include "platform/command.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/capturefiles.h"
#include "storage/dcim.h"
#include "storage/inspectionlog.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace {

constexpr int kLostSoundShown = 3000; // ms
constexpr int kCardCheckTicks = 15;   // frames between two looks at the card's room and the film's size

QString thumbnailOf(const QString &film)
{
    return inCurrentFolder(capturefiles::storedThumbnailOf(film));
}

} // namespace

// A file of its own for what is recorded from here on.
void MainWindow::startFilm()
{
    g_SavedFSInfo.currFileName = freeCaptureName(QStringLiteral(".avi"));
    const QByteArray file = unit::path(inCurrentFolder(g_SavedFSInfo.currFileName)).toUtf8();
    gst_StartRecordingAVIFile(file.constData(), int(file.size()));
}

void MainWindow::enterLiveSavingMovieQueued()
{
    startFilm();
    clearLiveVideoLabel();
    ui->labelInputVideo->show();
    ui->btn_DamageCatelog->show();
    imageTimer->start();
    ++g_SavedFSInfo.currDCIMIndex;
    logCapture(eVideoStart, g_SavedFSInfo.currFileName);
    ActivateMSDC(false);
    ChangeMainState(eStateLiveSavingMovie);
}

void MainWindow::enterLiveSavingMovie()
{
    ui->lbl_VideoLengthIndicator->setText(QStringLiteral("00:00:00"));
    ui->frm_VideoLengthIndicator->show();
    ui->btn_menu_Capture->setIcon(graphicIcon("btn_stop.png"));
    setRecordingButtonsEnabled(false);
    elapsedTime.start();
}

void MainWindow::setRecordingButtonsEnabled(bool enabled)
{
    for (QWidget *button : {ui->btn_menu_Thumbnails, ui->btn_menu_Tools, ui->btn_menu_CaptureModeSelect})
        button->setEnabled(enabled);
}

void MainWindow::followRecording()
{
    ui->lbl_VideoLengthIndicator->setText(runningTimeText(elapsedTime.elapsed()));
    if (gst_TakeLostSound())
        tellLostSound();
    if (nFrame % kCardCheckTicks != 0)
        return;
    if (isDiskFull())
        ChangeMainState(eStateLiveTerminateSavingMovie);
    else if (QFileInfo(unit::path(inCurrentFolder(g_SavedFSInfo.currFileName))).size() >= filmlimit::bytes())
        continueInNextFilm();
}

void MainWindow::tellLostSound()
{
    auto *sign = new QLabel(this);
    sign->setObjectName(QStringLiteral("lbl_LostSound"));
    sign->setPixmap(QPixmap(graphic("btn_tools_microphone_off.png")));
    sign->setAttribute(Qt::WA_TransparentForMouseEvents);
    sign->adjustSize();
    sign->move(ui->labelInputVideo->geometry().center() - sign->rect().center());
    sign->show();
    QTimer::singleShot(kLostSoundShown, sign, &QObject::deleteLater);
}

// Whoever looks at the screen sees the recording go on, running time and all. First the new film, then what
// has time.
void MainWindow::continueInNextFilm()
{
    const QString closed = g_SavedFSInfo.currFileName;
    gst_EndVideoInputPipeline();
    startFilm();
    ++g_SavedFSInfo.currDCIMIndex;
    logCapture(eVideoStop, closed);
    logCapture(eVideoStart, g_SavedFSInfo.currFileName);
    saveFilmThumbnail(closed);
}

void MainWindow::enterLiveTerminateSavingMovie()
{
    emit RecordingEnds();
    emit BusyIndicator(true);
    g_gst_VideoPipelineMode = liveMode(m_pParams->getParams());
    // Waited for: what comes now reads the closed film.
    gst_EndVideoInputPipeline();
    if (isDiskFull()) {
        // A card that is gone has no room either.
        if (SDCardInfo.inserted)
            confirm("confirmation_disk_full.png");
        else
            tellCardLost();
    }
    gst_VideoInputPipeline(0);
    imageTimer->stop();
    command::run(QStringLiteral("sync"));
    logCapture(eVideoStop, g_SavedFSInfo.currFileName);
    saveFilmThumbnail(g_SavedFSInfo.currFileName);
    showRecordingEnded();
    ActivateMSDC(true);
    emit BusyIndicator(false);
    ChangeMainState(eStateLive);
    showLivePicture();
}

void MainWindow::saveFilmThumbnail(const QString &name)
{
    if (getThumbnailImage(inCurrentFolder(name)))
        stillpicture::save(tmpQimage, thumbnailOf(name));
}

void MainWindow::repairFilms()
{
    const QStringList names =
        QDir(unit::path(g_SavedFSInfo.currRootDirectory)).entryList({QStringLiteral("*.avi")}, QDir::Files);
    bool isBusy = false;
    for (const QString &name : names) {
        const QString film = unit::path(inCurrentFolder(name));
        if (!avirepair::isCutOff(film))
            continue;
        if (!isBusy)
            emit BusyIndicator(true);
        isBusy = true;
        if (avirepair::repair(film) && !QFileInfo::exists(unit::path(thumbnailOf(name))))
            saveFilmThumbnail(name);
    }
    if (isBusy)
        emit BusyIndicator(false);
}

void MainWindow::showRecordingEnded()
{
    ui->btn_menu_Capture->setIcon(graphicIcon("btn_capture_active.png"));
    ui->frm_VideoLengthIndicator->hide();
    setRecordingButtonsEnabled(true);
    showCardButtons(SDCardInfo.inserted, eStateLive); // the film may have ended because the card went
    ui->btn_DamageCatelog->hide();
}

void MainWindow::endRecordingWithoutCard()
{
    g_gst_VideoPipelineMode = liveMode(m_pParams->getParams());
    gst_EndVideoInputPipeline();
    showRecordingEnded();
    showCardButtons(false, eStateLive);
    tellCardLost();
    gst_VideoInputPipeline(0);
    ChangeMainState(eStateLive);
    showLivePicture();
}

void MainWindow::followNetworkStream()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    if (!settings.bNetworkStreaming || g_gst_VideoPipelineMode != eGSTStateLiveVideo)
        return;
    settings.bNetworkStreaming = 0;
    ui->btn_tools_Network_Streaming_On_Off->setIcon(graphicIcon("btn_tools_networkstreaming_off.png"));
}
