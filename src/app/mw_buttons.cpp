// Buttons of the main screen: what a touch logs, and the state it asks for.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "media/gst_audioplayback.h"
#include "media/gst_audiorecord.h"
#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "settings/params.h"
#include "storage/eventlog.h"
#include "storage/listing.h"
#include "storage/sdcard.h"

#include <optional>

namespace {

struct CaptureModeFace
{
    eCaptureModes mode;
    const char *picture;
    const char *text;
};

// What the mode button turns into when it is touched in the other mode.
constexpr CaptureModeFace kVideo = {eVideoCapture, "btn_capturemode_video.png",
                                    "Capture mode changed button clicked - video"};
constexpr CaptureModeFace kStill = {eStillImageCapture, "btn_capturemode_still.png",
                                    "Capture mode changed button clicked - still"};

struct NoteTouch
{
    const char *text;
    eMainStates next;
};

std::optional<NoteTouch> playOrPause(eGstreamerState playback)
{
    switch (playback) {
    case eGSTStateLiveVideo:
    case eGSTStateQueued:
    case eGSTStatePaused:
    case eGSTStateNull:
    case eGSTStateReady:
        return NoteTouch{"Thumbnail Annotate/Record/Play/Pause button clicked - audio playing",
                         eStatePlaybackSnapshotAudioPlaying};
    case eGSTStatePlaying:
        return NoteTouch{"Thumbnail Annotate/Record/Play/Pause button clicked - audio paused",
                         eStatePlaybackSnapshotAudioPaused};
    default:
        return std::nullopt;
    }
}

std::optional<NoteTouch> startOrStop(eGstreamerState recording)
{
    switch (recording) {
    case eGSTStateNull:
        return NoteTouch{"Thumbnail Annotate/Record/Play/Pause button clicked - recording audio",
                         eStatePlaybackSnapshotRecordingAudio};
    case eGSTStateRecordingAudio:
        return NoteTouch{"Thumbnail Annotate/Record/Play/Pause button clicked - terminate recording audio",
                         eStatePlaybackSnapshotTerminateRecordingAudio};
    default:
        return std::nullopt;
    }
}

} // namespace

void MainWindow::on_btn_menu_CaptureModeSelect_clicked()
{
    ChangeMainState(eStateCaptureModeChange);
}

void MainWindow::enterCaptureModeChange()
{
    eCaptureModes &mode = m_pParams->getParams().CaptureMode;
    const CaptureModeFace &face = mode == eStillImageCapture ? kVideo : kStill;
    UpdateEventLog(eEventCaptureModeChange, QString::fromLatin1(face.text));
    ui->btn_menu_CaptureModeSelect->setIcon(graphicIcon(face.picture));
    mode = face.mode;
    ChangeMainState(eStateLive);
}

// While a film runs the touch ends it, also on a full card.
void MainWindow::on_btn_menu_Capture_clicked()
{
    constexpr eEventLogOperation operation = eEventImageCapture;
    const bool isFilmRunning = m_film != Film::None;
    if (!isFilmRunning && isDiskFull() && SDCardInfo.inserted)
        tellCardFullInLiveView();
    else if (!isFilmRunning && m_pParams->getParams().CaptureMode == eStillImageCapture)
        route(operation, "Capture button clicked - save still", eStateLiveSavingStill);
    else if (!isFilmRunning && g_MainState == eStateLive)
        route(operation, "Capture button clicked - start movie", eStateLiveSavingMovieQueued);
    else
        route(operation, "Capture button clicked - stop movie", eStateLiveTerminateSavingMovie);
}

void MainWindow::tellCardFullInLiveView()
{
    gst_SendVideoInputPipelineEOS(true);
    confirm("confirmation_disk_full.png");
    buildLivePicture();
    showLivePicture();
}

void MainWindow::route(eEventLogOperation operation, const char *text, eMainStates next)
{
    UpdateEventLog(operation, QString::fromLatin1(text));
    ChangeMainState(next);
}

void MainWindow::on_btn_menu_Thumbnails_clicked()
{
    route(eEventThumbnails, "Thumbnails button clicked", eStateEnterPlaybackThumbnails);
}

void MainWindow::on_btn_menu_ThumbnailPrevious_clicked()
{
    ChangeMainState(eStatePlaybackPreviousSelectedThumbnail);
}

void MainWindow::on_btn_menu_ThumbnailNext_clicked()
{
    ChangeMainState(eStatePlaybackNextSelectedThumbnail);
}

void MainWindow::on_btn_menu_ThumbnailNextPage_clicked()
{
    ChangeMainState(eStatePlaybackThumbnailsNextPage);
}

void MainWindow::on_btn_menu_ThumbnailPreviousPage_clicked()
{
    ChangeMainState(eStatePlaybackThumbnailsPreviousPage);
}

void MainWindow::on_btn_menu_ThumbnailDeleteImage_clicked()
{
    route(eEventThumbnailDeleteImage, "Thumbnail Delete Image button clicked", eStateFileDeleteImage);
}

void MainWindow::on_btn_menu_ThumbnailDeleteAudio_clicked()
{
    route(eEventThumbnailDeleteAudio, "Thumbnail Delete Audio button clicked", eStateFileDeleteAudio);
}

void MainWindow::on_btn_menu_ThumbnailFileRename_clicked()
{
    route(eEventThumbnailFileRename, "Thumbnail File Rename button clicked", eStatePlaybackRenameFile);
}

void MainWindow::on_btn_menu_ThumbnailBack_clicked()
{
    UpdateEventLog(eEventThumbnailBack, QStringLiteral("Thumbnail Back button clicked"));
    ProcessBackRequest();
}

void MainWindow::on_listW_ThumbnailViewer_clicked(const QModelIndex &index)
{
    UpdateEventLog(eEventThumbnailViewer, QStringLiteral("Thumbnail viewer button clicked"));
    g_selectedItemFileIndex = index.data(Qt::UserRole).toInt();
    displaySelectedThumbnail();
}

void MainWindow::on_btn_menu_ThumbnailVideoPlayPause_clicked()
{
    constexpr eEventLogOperation operation = eEventThumbnailVideoPlayPause;
    switch (g_GstreamerVideoPlaybackPipelineState) {
    case eGSTStateLiveVideo:
    case eGSTStateQueued:
    case eGSTStateNull:
    case eGSTStateReady:
        route(operation, "Thumbnail Video/Play/Pause button clicked - play", eStatePlaybackMoviePlaying);
        break;
    case eGSTStatePaused:
        route(operation, "Thumbnail Video/Play/Pause button clicked - resume",
              eStatePlaybackMovieResumePlaying);
        break;
    case eGSTStatePlaying:
        route(operation, "Thumbnail Video/Play/Pause button clicked - pause", eStatePlaybackMoviePaused);
        break;
    default:
        break;
    }
}

// A note that is being recorded ends, also on a full card: its end tells of the card.
void MainWindow::on_btn_menu_ThumbnailAnnotateRecordPlayPause_clicked()
{
    const bool hasNote = g_FileListing[size_t(g_selectedItemFileIndex)].annotated;
    if (!hasNote && g_MainState != eStatePlaybackSnapshotRecordingAudio && isDiskFull())
        tellCardTakesNothing();
    else if (const auto asked = hasNote ? playOrPause(g_GstreamerAudioPlaybackPipelineState)
                                        : startOrStop(g_GstreamerAudioRecordPipelineState))
        route(eEventThumbnailAnnotateRecordPlayPause, asked->text, asked->next);
}

void MainWindow::ProcessBackRequest()
{
    switch (factsOf(g_MainState).back) {
    case Back::Nowhere:
        break;
    case Back::LiveView:
        leaveBrowser();
        break;
    case Back::Thumbnails:
        ChangeMainState(eStatePlaybackThumbnailsSelectable);
        break;
    case Back::LeaveNote:
        leaveNote();
        break;
    case Back::LeaveFilm:
        leaveFilm();
        break;
    case Back::LeaveEditor:
        leaveEditor();
        break;
    }
}
