// Buttons of the main screen: what a touch logs, and the state it asks for.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/eventlog.h"
#include "storage/sdcard.h"

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
    ui->btn_menu_CaptureModeSelect->setIcon(QIcon(graphic(face.picture)));
    mode = face.mode;
    ChangeMainState(eStateLive);
}

void MainWindow::on_btn_menu_Capture_clicked()
{
    if (isDiskFull()) {
        tellCardFullInLiveView();
    } else if (m_pParams->getParams().CaptureMode == eStillImageCapture) {
        UpdateEventLog(eEventImageCapture, QStringLiteral("Capture button clicked - save still"));
        ChangeMainState(eStateLiveSavingStill);
    } else if (g_MainState == eStateLive) {
        UpdateEventLog(eEventImageCapture, QStringLiteral("Capture button clicked - start movie"));
        ChangeMainState(eStateLiveSavingMovieQueued);
    } else {
        UpdateEventLog(eEventImageCapture, QStringLiteral("Capture button clicked - stop movie"));
        ChangeMainState(eStateLiveTerminateSavingMovie);
    }
}

void MainWindow::tellCardFullInLiveView()
{
    gst_SendVideoInputPipelineEOS(true);
    confirm("confirmation_disk_full.png");
    gst_VideoInputPipeline(0);
    showLivePicture();
}
