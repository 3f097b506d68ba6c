// Films: start, running time, end.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/runningtime.h"
#include "film/avirepair.h"
#include "film/filmlimit.h"
#include "media/gst_videoinput.h"
#include "platform/command.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/capturefiles.h"
#include "storage/capturenames.h"
#include "storage/inspectionlog.h"
#include "storage/position.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace {

constexpr int kLostSoundShown = 3000;   // ms
constexpr int kCardCheckTicks = 15;     // frames between two looks at the card's room and the film's size
constexpr qint64 kLongestStart = 12000; // ms to a film's first picture: a slow camera and a mute microphone

UnitPath thumbnailOf(const QString &film)
{
    return inCurrentFolder(capturefiles::storedThumbnailOf(film));
}

// The microphone's picture over the camera's, for a moment.
void tellLostSound(const QWidget &picture)
{
    auto *sign = new QLabel(picture.parentWidget());
    sign->setObjectName(QStringLiteral("lbl_LostSound"));
    sign->setPixmap(QPixmap(graphic("btn_tools_microphone_off.png")));
    sign->setAttribute(Qt::WA_TransparentForMouseEvents);
    sign->adjustSize();
    sign->move(picture.geometry().center() - sign->rect().center());
    sign->show();
    QTimer::singleShot(kLostSoundShown, sign, &QObject::deleteLater);
}

} // namespace

// A file of its own for what is recorded from here on.
void MainWindow::startFilm()
{
    g_SavedFSInfo.currFileName = freeCaptureName(QStringLiteral(".avi"));
    const QByteArray damage = ui->lbl_DamageCatelogText->text().toUtf8();
    gst_BeginWithDamageText(damage.constData(), int(damage.size()));
    const QByteArray file = unit::path(inCurrentFolder(g_SavedFSInfo.currFileName)).encoded();
    gst_StartRecordingAVIFile(file.constData(), int(file.size()));
    m_film = Film::Awaited;
    m_awaitedSince.start();
}

// The film counts from its first picture: name, row and running time wait for it, so that each row has its
// file and no number is used up for nothing.
void MainWindow::enterLiveSavingMovieQueued()
{
    if (!mayCapture(eStateLive))
        return;
    startFilm();
    clearLiveVideoLabel();
    m_shown.hasPicture = false;
    ui->lbl_VideoLengthIndicator->setText(runningTimeText(0));
    ui->btn_menu_Capture->setIcon(graphicIcon("btn_stop.png"));
    imageTimer->start();
}

// A film that ends has the same state as one whose end was touched before its first picture, and painting the
// busy sign lets the frame pump in: that film has its row.
void MainWindow::awaitFilm()
{
    if (m_film != Film::Awaited)
        return;
    if (gst_FilmHasPicture())
        noteFilmStart();
    else if (g_gst_VideoPipelineMode == eGSTStateVideoRecordError || m_awaitedSince.hasExpired(kLongestStart))
        giveUpFilm();
}

void MainWindow::noteFilmStart()
{
    m_film = Film::Runs;
    ++g_SavedFSInfo.currDCIMIndex;
    logCapture(eVideoStart, g_SavedFSInfo.currFileName);
    ActivateMSDC(false);
    if (g_MainState == eStateLiveTerminateSavingMovie)
        endFilm(); // the touch that ends it came before its first picture
    else
        ChangeMainState(eStateLiveSavingMovie);
}

void MainWindow::enterLiveSavingMovie()
{
    elapsedTime.start();
}

void MainWindow::followRecording()
{
    ui->lbl_VideoLengthIndicator->setText(runningTimeText(elapsedTime.elapsed()));
    if (gst_TakeLostSound())
        tellLostSound(*ui->labelInputVideo);
    if (nFrame % kCardCheckTicks != 0)
        return;
    if (isDiskFull())
        announce(UnitEvent::FilmEnds);
    else if (QFileInfo(unit::path(inCurrentFolder(g_SavedFSInfo.currFileName))).size() >= filmlimit::bytes())
        continueInNextFilm();
}

// Whoever looks at the screen sees the recording go on, running time and all. First the new film, then what
// has time.
void MainWindow::continueInNextFilm()
{
    const QString closed = g_SavedFSInfo.currFileName;
    const QTime ended = QTime::currentTime();
    gst_EndVideoInputPipeline();
    if (gst_FilmFileFailed()) {
        announce(UnitEvent::FilmEnds);
        return;
    }
    startFilm();
    m_film = Film::Runs;
    ++g_SavedFSInfo.currDCIMIndex;
    logCapture(eVideoStop, closed, ended);
    logCapture(eVideoStart, g_SavedFSInfo.currFileName);
    saveFilmThumbnail(closed);
}

void MainWindow::enterLiveTerminateSavingMovie()
{
    switch (m_film) {
    case Film::Awaited: // the frame pump goes on with it
        break;
    case Film::Runs:
        endFilm();
        break;
    case Film::None:
        ChangeMainState(eStateLive);
        break;
    }
}

// The end and its row are on the card before anything is asked or told: power may go while a box stands.
void MainWindow::endFilm()
{
    emit BusyIndicator(true);
    chooseLivePipelineMode();
    const bool isWhole = closeFilm();
    if (isDiskFull() || !isWhole)
        tellCardTakesNothing();
    imageTimer->stop();
    ActivateMSDC(true);
    emit BusyIndicator(false);
    backToLiveView();
}

// A slow card takes seconds to close it: the row has the time of the film's end. What could not be closed in
// time is mended at once. False: not all that was to be written is on the card.
bool MainWindow::closeFilm()
{
    const QTime ended = QTime::currentTime();
    gst_EndVideoInputPipeline();
    m_film = Film::None;
    const HostPath film = unit::path(inCurrentFolder(g_SavedFSInfo.currFileName));
    const bool isWhole =
        QFileInfo(film).size() > 0 && (!avirepair::isCutOff(film) || avirepair::repair(film));
    command::run(QStringLiteral("sync"));
    logCapture(eVideoStop, g_SavedFSInfo.currFileName, ended);
    saveFilmThumbnail(g_SavedFSInfo.currFileName);
    return isWhole && !gst_FilmFileFailed();
}

// No picture came, or no file: nothing of it stays, neither on the card nor in the logs.
void MainWindow::dropFilm()
{
    m_film = Film::None;
    chooseLivePipelineMode();
    gst_EndVideoInputPipeline();
    QFile::remove(unit::path(inCurrentFolder(g_SavedFSInfo.currFileName)));
}

void MainWindow::giveUpFilm()
{
    const bool fileFailed = gst_FilmFileFailed();
    dropFilm();
    backToLiveView();
    if (fileFailed)
        tellCardTakesNothing();
}

void MainWindow::endRecordingWithoutCard()
{
    m_film = Film::None;
    chooseLivePipelineMode();
    gst_EndVideoInputPipeline();
    tellCardLost();
    backToLiveView();
}

void MainWindow::backToLiveView()
{
    ui->btn_menu_Capture->setIcon(graphicIcon("btn_capture_active.png"));
    buildLivePicture();
    ChangeMainState(eStateLive);
    showLivePicture();
}

void MainWindow::closeOpenRecords()
{
    if (m_film == Film::Runs)
        closeFilm();
    else if (m_film == Film::Awaited)
        dropFilm();
    if (g_MainState == eStatePlaybackSnapshotRecordingAudio) {
        recordAudioTimer->stop();
        endNoteRecording();
    }
    gst_EndVideoInputPipeline();
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
        const HostPath film = unit::path(inCurrentFolder(name));
        const QFileInfo thumbnail(unit::path(thumbnailOf(name)));
        const bool isCutOff = avirepair::isCutOff(film);
        if (!isCutOff && (!thumbnail.exists() || thumbnail.size() > 0)) // an empty one: the card was pulled
            continue;
        if (!isBusy)
            emit BusyIndicator(true);
        isBusy = true;
        if ((!isCutOff || avirepair::repair(film)) && thumbnail.size() == 0)
            saveFilmThumbnail(name);
    }
    if (isBusy)
        emit BusyIndicator(false);
}

void MainWindow::followNetworkStream()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    if (!settings.bNetworkStreaming || g_gst_VideoPipelineMode != eGSTStateLiveVideo)
        return;
    settings.bNetworkStreaming = 0;
    ui->btn_tools_Network_Streaming_On_Off->setIcon(graphicIcon("btn_tools_networkstreaming_off.png"));
}
