#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "media/gst_audioplayback.h"
#include "media/gst_audiorecord.h"
#include "media/gst_videoinput.h"
#include "media/gst_videoplayback.h"
#include "platform/command.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "settings/wifi.h"
#include "storage/eventlog.h"
#include "storage/sdcard.h"
#include "storage/upgrade.h"

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int kFrameInterval = 40;        // ms: one PAL frame
constexpr int kSystemCheckInterval = 200; // ms
constexpr int kRecordAudioInterval = 1000;
constexpr int kToolsClockInterval = 1000;

void turnHeadphoneUp()
{
    command::run(QStringLiteral("amixer"),
                 {QStringLiteral("set"), QStringLiteral("Headphone"), QStringLiteral("127")});
}

// The one that every unit leaves the factory with is known to everybody.
void renewPassPhrase(params &unit)
{
    const _GlobalSystemSettings &settings = unit.getParams();
    if (settings.WIFIHotSpotPW.contains(wifi::kFactoryPassPhrase))
        unit.SetWIFIHotspotPW(settings.WIFIHotSpotPW, wifi::devicePassPhrase(settings.WIFImacAddress));
}

} // namespace

WindowState::WindowState() = default;
WindowState::~WindowState() = default;

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent, Qt::FramelessWindowHint)
{
    ui = std::make_unique<Ui::MainWindow>();
    ui->setupUi(this);
    // The list's own sheet gives rgb() an alpha, which the toolkit no longer reads.
    ui->listW_ThumbnailViewer->viewport()->setStyleSheet(
        QStringLiteral("QWidget { background-color: rgba(164, 164, 164, 50%); }"));
    setWindowState(Qt::WindowFullScreen); // after the form, whose size would end it
    for (const WidgetRule &rule : widgetRules())
        m_screenWidgets.push_back({findChild<QWidget *>(QString::fromLatin1(rule.widget)), &rule});
}

MainWindow::~MainWindow() = default;

void MainWindow::init()
{
    turnHeadphoneUp();
    m_pParams = params::getInstance();
    _GlobalSystemSettings &settings = m_pParams->getParams();
    m_pParams->GetKernelInformation();
    enableRawEncoderDisplay();
    m_pParams->applyBacklight();

    renewPassPhrase(*m_pParams);
    m_pParams->configureWifi();
    showHotspot();
    gst_EnableAudioRecording(settings.bMicrophoneActive);
    gst_SetNetworkStreamingIPAddress(settings.WIFIipAddr.toUtf8().constData());

    createEditorScene();
    ui->lbl_LEDLevel->setText(QStringLiteral("%1/10").arg(settings.LEDIntensityStep));
    nFrame = 0;
    SDCardInfo.statechanged = 1;
    // Always the first entry, whatever step was stored.
    SetImagerLEDBrightness(settings.LEDIntensitySteps[0][0]);

    createTimers();
    m_touches = new TouchGuard(this);
    connect(this, &MainWindow::BusyIndicator, this, &MainWindow::onBusyIndicator);
    emit initShutdownTimer();
    startMediaFramework();

    m_pParams->selectActiveCameraInterface();
    UpdateMenuSystemInformation();
    m_pParams->initMessageLog();
    m_pParams->initEventLog();
    mendEventLog();
    removeUnfinishedUpgrade();
    UpdateEventLog(eEventBoot, QStringLiteral("System boot"));
    watchMessageLog();
    systemCheckTimer->start();
    ChangeMainState(eStateLive);
    showLivePicture();
}

void MainWindow::createTimers()
{
    const auto create = [this](int interval, bool singleShot, void (MainWindow::*slot)()) {
        auto *timer = new QTimer(this);
        timer->setInterval(interval);
        timer->setSingleShot(singleShot);
        connect(timer, &QTimer::timeout, this, slot);
        return timer;
    };
    imageTimer = create(kFrameInterval, false, &MainWindow::doNextFrame);
    imageTimer->setTimerType(Qt::PreciseTimer);
    systemCheckTimer = create(kSystemCheckInterval, false, &MainWindow::systemCheck);
    popUpTimer = create(0, true, &MainWindow::popUpExpired);
    shutdownTimer = create(0, true, &MainWindow::shutdownTimerExpired);
    genericDelayTimer = create(0, true, &MainWindow::genericDelayTimerExpired);
    genericDelayTimer->setObjectName(QStringLiteral("genericDelayTimer"));
    recordAudioTimer = create(kRecordAudioInterval, false, &MainWindow::onRecordAudioTimerExpired);
    toolsClockTimer = create(kToolsClockInterval, false, &MainWindow::showClock);
}

void MainWindow::startMediaFramework()
{
    for (quint8 *&buffer : g_pcFrameBuffer) {
        if (!buffer) // once a process: they are never freed
            buffer = static_cast<quint8 *>(std::calloc(1, kFrameBytes));
    }
    qputenv("GST_DEBUG_DUMP_DOT_DIR", unit::path(u"/home/root"_unit).encoded());
    gst_init(nullptr, nullptr);
    for (GMainLoop **loop : {&g_VideoInput_loop, &g_VideoPlayback_loop, &g_AudioRecordPipeline_loop,
                             &g_AudioPlaybackPipeline_loop}) {
        if (!*loop)
            *loop = g_main_loop_new(nullptr, FALSE);
    }
    gst_AudioRecordPipeline();
    g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    gst_EnableDateTimeOverlay(m_pParams->getParams().bDateTimeStamp);
    gst_VideoInputPipeline(0);
}

void MainWindow::setGenericDelayTimer(quint16 ms)
{
    genericDelayTimer->setInterval(ms);
}

void MainWindow::startGenericDelayTimer()
{
    emit BusyIndicator(true);
    genericDelayTimer->start();
}

void MainWindow::genericDelayTimerExpired()
{
    announce(UnitEvent::DelayOver);
}

// Unless something else has taken the screen meanwhile.
void MainWindow::endDelay()
{
    if (factsOf(g_MainState).back == Back::LeaveFilm)
        ChangeMainState(eStatePlaybackThumbnailsSelectable);
    else
        emit BusyIndicator(false);
}

void MainWindow::startPostGstreamerPlayTimer()
{
    elapsedTimePostGstreamerPlaying.restart();
}

quint16 MainWindow::elapsedTimePostGstreamerPlayExpired() const
{
    if (!elapsedTimePostGstreamerPlaying.isValid())
        return kLongestPostPlay;
    return quint16(std::min<qint64>(elapsedTimePostGstreamerPlaying.elapsed(), kLongestPostPlay));
}

void MainWindow::popUpExpired()
{
    announce(UnitEvent::PopUpOver);
}

void MainWindow::shutdownTimerExpired()
{
    onProcessSystemShutdown();
}

void MainWindow::onBusyIndicator(bool on)
{
    m_shown.isBusy = on;
    showScreen();
    if (!on)
        m_touches->actionEnded();
    const QScopedValueRollback atWork(m_waiting.actions, m_waiting.actions + 1);
    // Painted before the caller blocks; a touch waits until it is done.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void MainWindow::onClearPictureEditorButtons()
{
    const auto setInactive = [](QPushButton *button, const char *picture) {
        button->setIcon(graphicIcon(picture));
    };
    setInactive(ui->btn_menu_ThumbnailImageEditArrow, "btn_imageedit_add_arrow_inactive.png");
    setInactive(ui->btn_menu_ThumbnailImageEditCircle, "btn_imageedit_add_circle_inactive.png");
    setInactive(ui->btn_menu_ThumbnailImageEditText, "btn_imageedit_add_text_inactive.png");
    setInactive(ui->btn_menu_ThumbnailImageEditColor, "btn_imageedit_choose_color_inactive.png");
}

void MainWindow::clearLiveVideoLabel()
{
    QPixmap black(kFrameWidth, kFrameHeight);
    black.fill(Qt::black);
    ui->labelInputVideo->setPixmap(black);
    const QScopedValueRollback atWork(m_waiting.actions, m_waiting.actions + 1);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}
