// Playing what is selected: films, and the voice notes of pictures.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "film/filmduration.h"
#include "media/gst_audioplayback.h"
#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "platform/unit.h"
#include "storage/position.h"

#include <QFile>
#include <QTimer>

namespace {

bool isOver(eGstreamerState state)
{
    return state == eGSTStateReady || state == eGSTStateError;
}

bool isRunning(eGstreamerState state)
{
    return state == eGSTStatePlaying || state == eGSTStatePaused;
}

} // namespace

void MainWindow::stopPlayback()
{
    const bool usedCard =
        isRunning(g_GstreamerVideoPlaybackPipelineState) || isRunning(g_GstreamerAudioPlaybackPipelineState);
    gst_StopVideoFilePipeline();
    gst_StopAudioPlaybacking();
    imageTimer->stop();
    if (usedCard)
        ActivateMSDC(true);
}

void MainWindow::endProgress()
{
    imageTimer->stop();
    ui->pb_PlaybackIndicator->setValue(0);
    startPostGstreamerPlayTimer();
    ActivateMSDC(true);
}

void MainWindow::enterPlaybackMovieQueued()
{
    ui->btn_menu_ThumbnailVideoPlayPause->setIcon(graphicIcon("btn_play.png"));
}

void MainWindow::enterPlaybackMoviePlaying()
{
    ActivateMSDC(false);
    const UnitPath path = inCurrentFolder(g_SavedFSInfo.currSelectedFile);
    gst_VideoPlayback(unit::path(path).encoded().constData(), filmDuration(path));
    ui->pb_PlaybackIndicator->setValue(0);
    imageTimer->start();
    ui->btn_menu_ThumbnailVideoPlayPause->setIcon(graphicIcon("btn_pause.png"));
}

void MainWindow::enterPlaybackMovieResumePlaying()
{
    gst_PlayVideoFilePipeline();
    startPostGstreamerPlayTimer();
    imageTimer->start();
    ui->btn_menu_ThumbnailVideoPlayPause->setIcon(graphicIcon("btn_pause.png"));
}

void MainWindow::enterPlaybackMoviePaused()
{
    gst_PauseVideoFilePipeline();
    showFilmFrame(); // the film went on since the last tick: what can be marked is what is seen
    ui->btn_menu_ThumbnailVideoPlayPause->setIcon(graphicIcon("btn_play.png"));
}

void MainWindow::showFilmFrame()
{
    if (!g_FilmFrameReady)
        return;
    m_shown.fileIsReadable = true; // whatever its first frame was like
    tmpQimage = QImage(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    ui->labelInputVideo->showFrame(tmpQimage, tmpQimage.rect());
}

void MainWindow::followFilm()
{
    showFilmFrame();
    ui->pb_PlaybackIndicator->setValue(g_PercentPlayback);
    if (isOver(g_GstreamerVideoPlaybackPipelineState))
        announce(UnitEvent::PlaybackOver);
}

// What could not be played waits to be tried again.
void MainWindow::endPlayback()
{
    switch (factsOf(g_MainState).frame) {
    case FrameJob::PlayFilm:
        if (g_GstreamerVideoPlaybackPipelineState == eGSTStateError)
            gst_QueueVideoFilePipeline();
        endProgress();
        ChangeMainState(eStatePlaybackMovieQueued);
        break;
    case FrameJob::PlayNote:
        g_GstreamerAudioPlaybackPipelineState = eGSTStateReady;
        endProgress();
        ChangeMainState(eStatePlaybackSnapshotAudioQueued);
        break;
    default: // left meanwhile
        break;
    }
}

// The film's pipeline gets its time to go before the next screen; nothing can be touched meanwhile.
void MainWindow::leaveFilm()
{
    stopPlayback();
    startPostGstreamerPlayTimer();
    setGenericDelayTimer(quint16(kLongestPostPlay - elapsedTimePostGstreamerPlayExpired()));
    startGenericDelayTimer();
    showScreen();
}

void MainWindow::enterPlaybackSnapshotAudioQueued()
{
    ui->btn_menu_ThumbnailAnnotateRecordPlayPause->setIcon(graphicIcon("btn_play.png"));
}

void MainWindow::enterPlaybackSnapshotAudioPlaying()
{
    ActivateMSDC(false);
    if (g_GstreamerAudioPlaybackPipelineState == eGSTStatePaused) {
        gst_ResumeAudioPlayback();
    } else {
        gst_AudioPlaybackPipeline(
            unit::path(inCurrentFolder(g_SavedFSInfo.currSelectedAudioFile)).encoded().constData());
        ui->pb_PlaybackIndicator->setValue(0);
    }
    ui->btn_menu_ThumbnailAnnotateRecordPlayPause->setIcon(graphicIcon("btn_pause.png"));
    imageTimer->start();
}

void MainWindow::enterPlaybackSnapshotAudioPaused()
{
    gst_PauseAudioPlayback();
    ui->btn_menu_ThumbnailAnnotateRecordPlayPause->setIcon(graphicIcon("btn_play.png"));
}

void MainWindow::followNote()
{
    ui->pb_PlaybackIndicator->setValue(gst_getCurrentAudioPercentPlayed());
    if (isOver(g_GstreamerAudioPlaybackPipelineState))
        announce(UnitEvent::PlaybackOver);
}

void MainWindow::leaveNote()
{
    stopPlayback();
    startPostGstreamerPlayTimer();
    ChangeMainState(eStatePlaybackThumbnailsSelectable);
}
