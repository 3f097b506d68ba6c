// Live picture, digital zoom and the light of the camera head.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "media/zoom.h"
#include "platform/attribute.h"
#include "platform/servicemanager.h"
#include "settings/params.h"
#include "storage/eventlog.h"

#include <QTimer>

#include <cstdio>
#include <utility>

namespace {

constexpr qint8 kBrightestStep = 10;

using LightSteps = decltype(_GlobalSystemSettings::LEDIntensitySteps);

// The value for the brightness file. The mini module has its own row; an unknown head stays dark.
qint8 brightness(eImagerTypes head, int step, const LightSteps &values)
{
    switch (head) {
    case eMinimodule_10m:
        return values[1][size_t(step)];
    case e60meter:
    case e30meter:
        return values[0][size_t(step)];
    default:
        return values[0][0];
    }
}

} // namespace

void MainWindow::buildLivePicture()
{
    const QByteArray damage = ui->lbl_DamageCatelogText->text().toUtf8();
    gst_BeginWithDamageText(damage.constData(), int(damage.size())); // a stream carries it, too
    gst_VideoInputPipeline(0);
    showNoPicture();
}

void MainWindow::showLivePicture()
{
    // A fresh pipeline shows the whole frame: the picture has to agree with the figure in the top bar.
    if (const quint8 level = m_pParams->getParams().ZoomLevel; level > 0)
        gst_SetZoomLevel(level);
    if (displayDraws(boardElements())) {
        m_shown.hasPicture = true; // the overlay plane shows it as it comes
        showScreen();
        return;
    }
    ui->labelInputVideo->setGeometry(80, 24, kFrameWidth, kFrameHeight);
    showNoPicture();
    if (!m_isReady) {
        connect(ui->labelInputVideo, &PictureLabel::framePainted, this, &MainWindow::announceReady,
                Qt::UniqueConnection);
    }
    imageTimer->start();
}

void MainWindow::announceReady()
{
    disconnect(ui->labelInputVideo, &PictureLabel::framePainted, this, nullptr);
    if (m_isReady)
        return;
    m_isReady = true;
    std::puts("ready: the camera picture is on the screen");
    std::fflush(stdout);
    servicemanager::tellReady();
}

void MainWindow::doNextFrame()
{
    ++nFrame;
    if (g_gst_VideoPipelineMode == eGSTStateError) {
        announce(UnitEvent::CameraLost);
        return;
    }
    if (g_gst_VideoPipelineMode == eGSTStateVideoRecordError)
        announce(UnitEvent::FilmEnds);
    switch (factsOf(g_MainState).frame) {
    case FrameJob::None:
        break;
    case FrameJob::Live:
        followPicture();
        break;
    case FrameJob::AwaitStill:
        followPicture();
        if (m_waiting.actions == 0)
            awaitStill();
        break;
    case FrameJob::AwaitFilm:
        if (m_waiting.actions == 0)
            awaitFilm();
        break;
    case FrameJob::Recording:
        followPicture();
        followRecording();
        break;
    case FrameJob::PlayNote:
        followNote();
        break;
    case FrameJob::PlayFilm:
        followFilm();
        break;
    }
}

// Only a frame of this moment stands for the camera's picture: not that of a film that was looked at, nor the
// one in which a camera froze.
void MainWindow::followPicture()
{
    if (!gst_PictureIsCurrent()) {
        if (m_shown.hasPicture)
            showNoPicture();
        return;
    }
    tmpQimage = QImage(g_pcFrameBuffer[g_fbOutIdx], kFrameWidth, kFrameHeight, QImage::Format_RGB16);
    ui->labelInputVideo->showFrame(tmpQimage, zoom::liveCrop(m_pParams->getParams().ZoomLevel));
    if (!std::exchange(m_shown.hasPicture, true))
        showScreen();
}

void MainWindow::showNoPicture()
{
    m_shown.hasPicture = false;
    QPixmap black(kFrameWidth, kFrameHeight);
    black.fill(Qt::black);
    ui->labelInputVideo->setPixmap(black);
    showScreen();
}

void MainWindow::enterVideoInputPipelineFailure()
{
    imageTimer->stop();
    ui->labelInputVideo->setPixmap(QPixmap(graphic("critical_system_error_bg.png")));
    ui->lbl_CurrentFilenameandPath->clear();
}

void MainWindow::on_btn_menu_zoom_plus_clicked()
{
    changeZoom(+1);
}

void MainWindow::on_btn_menu_zoom_minus_clicked()
{
    changeZoom(-1);
}

// Outside live view (while recording) only the picture on the screen follows: nothing is logged or sent.
void MainWindow::changeZoom(int step)
{
    quint8 &level = m_pParams->getParams().ZoomLevel;
    const int wanted = level + step;
    const bool changes = wanted >= 0 && wanted <= zoom::kLargestStep;
    if (changes)
        level = static_cast<quint8>(wanted);
    ui->lbl_ZoomLevel->setText(zoom::label(level));
    if (!changes || g_MainState != eStateLive)
        return;
    UpdateEventLog(
        step > 0 ? eEventZoomPlus : eEventZoomMinus,
        QStringLiteral("Zoom %1 button clicked - %2")
            .arg(step > 0 ? QStringLiteral("plus") : QStringLiteral("minus"), QString::number(level)));
    gst_SetZoomLevel(level);
}

void MainWindow::on_btn_menu_LED_plus_clicked()
{
    changeLight(+1);
}

void MainWindow::on_btn_menu_LED_minus_clicked()
{
    changeLight(-1);
}

void MainWindow::changeLight(int step)
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    const int wanted = settings.LEDIntensityStep + step;
    if (wanted < 0 || wanted > kBrightestStep)
        return;
    settings.LEDIntensityStep = static_cast<qint8>(wanted);
    UpdateEventLog(
        step > 0 ? eEventLedPlus : eEventLedMinus,
        QStringLiteral("LED %1 button clicked - %2")
            .arg(step > 0 ? QStringLiteral("plus") : QStringLiteral("minus"), QString::number(wanted)));
    ui->lbl_LEDLevel->setText(QStringLiteral("%1/10").arg(wanted));
    SetImagerLEDBrightness(brightness(settings.ImagerType, wanted, settings.LEDIntensitySteps));
}

void MainWindow::SetImagerLEDBrightness(qint8 value)
{
    // Twice in succession: the controller takes the second for certain.
    for (int i = 0; i < 2; ++i) {
        if (!attribute::write(u"/sys/class/backlight/extledcontrol.27/brightness"_unit,
                              QByteArray::number(value))) {
            ui->lbl_LEDLevel->setText(QStringLiteral("ER"));
            return;
        }
    }
}
