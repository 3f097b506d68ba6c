// The one table of states, and the two functions that walk it.
#include "app/mainstatemachine.h"

#include "app/mainwindow.h"

#include <QLoggingCategory>
#include <QScopedValueRollback>

#include <iterator>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.app.state")

} // namespace

// In enumeration order. Without an action the state only marks a mode, and whoever sets it does the work.
struct MainStateTable
{
    struct Row
    {
        eMainStates state;
        const char *name;
        void (MainWindow::*enter)();
    };
    static constexpr Row rows[] = {
        {eStateLive, "eStateLive", nullptr},
        {eStateLiveZoomLevelIncrease, "eStateLiveZoomLevelIncrease", nullptr},
        {eStateLiveZoomLevelDecrease, "eStateLiveZoomLevelDecrease", nullptr},
        {eStateLiveLEDIncrease, "eStateLiveLEDIncrease", nullptr},
        {eStateLiveLEDDecrease, "eStateLiveLEDDecrease", nullptr},
        {eStateLiveDamageCatelog, "eStateLiveDamageCatelog", nullptr},
        {eStateCaptureModeChange, "eStateCaptureModeChange", &MainWindow::enterCaptureModeChange},
        {eStateLiveSavingStill, "eStateLiveSavingStill", &MainWindow::enterLiveSavingStill},
        {eStateLiveSavingMovieQueued, "eStateLiveSavingMovieQueued", &MainWindow::enterLiveSavingMovieQueued},
        {eStateLiveSavingMovie, "eStateLiveSavingMovie", &MainWindow::enterLiveSavingMovie},
        {eStateCaptureWindowEntry, "eStateCaptureWindowEntry", &MainWindow::enterCaptureWindowEntry},
        {eStateCaptureWindowExit, "eStateCaptureWindowExit", &MainWindow::enterCaptureWindowExit},
        {eStateEditorCaptureWindowEntry, "eStateEditorCaptureWindowEntry", nullptr},
        {eStateEditorCaptureWindowExit, "eStateEditorCaptureWindowExit", nullptr},
        {eStateLiveTerminateSavingMovie, "eStateLiveTerminateSavingMovie",
         &MainWindow::enterLiveTerminateSavingMovie},
        {eStateEnterPlaybackThumbnails, "eStateEnterPlaybackThumbnails",
         &MainWindow::enterEnterPlaybackThumbnails},
        {eStatePlaybackThumbnailsPreviousPage, "eStatePlaybackThumbnailsPreviousPage",
         &MainWindow::enterPlaybackThumbnailsPreviousPage},
        {eStatePlaybackThumbnailsNextPage, "eStatePlaybackThumbnailsNextPage",
         &MainWindow::enterPlaybackThumbnailsNextPage},
        {eStatePlaybackThumbnailsSelectable, "eStatePlaybackThumbnailsSelectable",
         &MainWindow::enterPlaybackThumbnailsSelectable},
        {eStatePlaybackPreviousSelectedThumbnail, "eStatePlaybackPreviousSelectedThumbnail",
         &MainWindow::enterPlaybackPreviousSelectedThumbnail},
        {eStatePlaybackNextSelectedThumbnail, "eStatePlaybackNextSelectedThumbnail",
         &MainWindow::enterPlaybackNextSelectedThumbnail},
        {eStatePlaybackNothingSaved, "eStatePlaybackNothingSaved", &MainWindow::enterPlaybackNothingSaved},
        {eStatePlaybackSnapshot, "eStatePlaybackSnapshot", nullptr},
        {eStatePlaybackEditImage, "eStatePlaybackEditImage", &MainWindow::enterPlaybackEditImage},
        {eStatePlaybackEditAddCircle, "eStatePlaybackEditAddCircle", &MainWindow::enterPlaybackEditAddCircle},
        {eStatePlaybackEditAddArrow, "eStatePlaybackEditAddArrow", &MainWindow::enterPlaybackEditAddArrow},
        {eStatePlaybackEditAddText, "eStatePlaybackEditAddText", &MainWindow::enterPlaybackEditAddText},
        {eStatePlaybackEditColor, "eStatePlaybackEditColor", &MainWindow::enterPlaybackEditColor},
        {eStatePlaybackEditSaveImage, "eStatePlaybackEditSaveImage", &MainWindow::enterPlaybackEditSaveImage},
        {eStatePlaybackEditSaveImageExit, "eStatePlaybackEditSaveImageExit",
         &MainWindow::enterPlaybackEditSaveImageExit},
        {eStatePlaybackEditDeleteItem, "eStatePlaybackEditDeleteItem",
         &MainWindow::enterPlaybackEditDeleteItem},
        {eStateDamageCatelogEntry, "eStateDamageCatelogEntry", nullptr},
        {eStateDamageCatelogConfirm, "eStateDamageCatelogConfirm", nullptr},
        {eStateDamageCatelogCancel, "eStateDamageCatelogCancel", nullptr},
        {eStatePlaybackSnapshotRecordingAudio, "eStatePlaybackSnapshotRecordingAudio",
         &MainWindow::enterPlaybackSnapshotRecordingAudio},
        {eStatePlaybackSnapshotTerminateRecordingAudio, "eStatePlaybackSnapshotTerminateRecordingAudio",
         &MainWindow::enterPlaybackSnapshotTerminateRecordingAudio},
        {eStatePlaybackSnapshotAudioQueued, "eStatePlaybackSnapshotAudioQueued",
         &MainWindow::enterPlaybackSnapshotAudioQueued},
        {eStatePlaybackSnapshotAudioPlaying, "eStatePlaybackSnapshotAudioPlaying",
         &MainWindow::enterPlaybackSnapshotAudioPlaying},
        {eStatePlaybackSnapshotAudioPaused, "eStatePlaybackSnapshotAudioPaused",
         &MainWindow::enterPlaybackSnapshotAudioPaused},
        {eStatePlaybackMovieQueued, "eStatePlaybackMovieQueued", &MainWindow::enterPlaybackMovieQueued},
        {eStatePlaybackMoviePlaying, "eStatePlaybackMoviePlaying", &MainWindow::enterPlaybackMoviePlaying},
        {eStatePlaybackMovieResumePlaying, "eStatePlaybackMovieResumePlaying",
         &MainWindow::enterPlaybackMovieResumePlaying},
        {eStatePlaybackMoviePaused, "eStatePlaybackMoviePaused", &MainWindow::enterPlaybackMoviePaused},
        {eStatePlaybackRenameFile, "eStatePlaybackRenameFile", &MainWindow::enterPlaybackRenameFile},
        {eStateVideoInputPipelineFailure, "eStateVideoInputPipelineFailure",
         &MainWindow::enterVideoInputPipelineFailure},
        {eStateUsbActive, "eStateUsbActive", &MainWindow::enterUsbActive},
        {eStateUsbDisconnected, "eStateUsbDisconnected", &MainWindow::enterUsbDisconnected},
        {eStateToolsMenu, "eStateToolsMenu", &MainWindow::enterToolsMenu},
        {eStateToolsMenuExit, "eStateToolsMenuExit", &MainWindow::enterToolsMenuExit},
        {eStateToolsSetDate, "eStateToolsSetDate", nullptr},
        {eStateFirmwareUpdate, "eStateFirmwareUpdate", nullptr},
        {eStateFileDeleteImage, "eStateFileDeleteImage", &MainWindow::enterFileDeleteImage},
        {eStateFileDeleteAudio, "eStateFileDeleteAudio", &MainWindow::enterFileDeleteAudio},
        {eStateSDCardInserted, "eStateSDCardInserted", &MainWindow::enterSDCardInserted},
        {eStateSDCardRemoved, "eStateSDCardRemoved", &MainWindow::enterSDCardRemoved},
        {eStateSDCardCorrupt, "eStateSDCardCorrupt", &MainWindow::enterSDCardCorrupt},
        {eStateSentinel, "eStateSentinel", nullptr},
    };
};

static_assert(std::size(MainStateTable::rows) == eStates + 1);
static_assert([] {
    for (int i = 0; i <= eStates; ++i) {
        if (MainStateTable::rows[i].state != i)
            return false;
    }
    return true;
}());

const char *stateName(eMainStates state)
{
    return MainStateTable::rows[state].name;
}

void MainWindow::MainStateMachine()
{
    if (const auto enter = MainStateTable::rows[g_MainState].enter) {
        const QScopedValueRollback atWork(m_actionDepth, m_actionDepth + 1);
        (this->*enter)();
    }
}

void MainWindow::ChangeMainState(eMainStates next)
{
    g_prevMainState = g_MainState;
    g_MainState = next;
    // A broken pipeline is handed in again and again; one line tells it.
    if (g_prevMainState != next)
        qCDebug(log) << stateName(g_prevMainState) << "->" << stateName(next);
    MainStateMachine();
}

void MainWindow::restoreMainState(eMainStates state)
{
    qCDebug(log) << stateName(g_MainState) << "-> back to" << stateName(state);
    g_prevMainState = g_MainState;
    g_MainState = state;
}
