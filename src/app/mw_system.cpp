// What comes from the system around the window: the 200 ms check, the kernel log, the power key.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/cablelength.h"
#include "hw/i2c.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "platform/command.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/eventlog.h"
#include "storage/position.h"
#include "storage/sdcard.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QTimer>

#include <array>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.system")

constexpr int kMostMeterRetries = 10;
constexpr int kSlowCheck = 16;               // calls between two looks at battery and camera head
constexpr int kCardCheck = 5;                // the one call that asks for the card
constexpr int kMountLook = 5;                // calls between two looks for a card that is waited for
constexpr int kCriticalShutdownDelay = 3000; // ms

constexpr std::array kBatteryPictures = {"ind_Battery100.png",         "ind_Battery80.png",
                                         "ind_Battery60.png",          "ind_Battery40.png",
                                         "ind_Battery20.png",          "ind_BatteryEmpty.png",
                                         "ind_BatteryError.png",       "ind_BatteryPluggedIn.png",
                                         "ind_BatteryTemperature.png", "ind_BatteryTemperature.png"};

// The meter count, or the raw encoder count; negative when the board did not answer.
qint16 readMeterCount(bool raw)
{
    return raw ? i2c_read_word(kEncoderBoardAddress, twiEncoderCountHighByte, twiEncoderCountLowByte)
               : i2c_read_word(kEncoderBoardAddress, twiMeterCountHighByte, twiMeterCountLowByte);
}

} // namespace

void MainWindow::systemCheck()
{
    takeEvents();
    if (g_gst_VideoPipelineMode == eGSTStateError) {
        announce(UnitEvent::CameraLost);
        return;
    }
    followNetworkStream();
    followDisplay();
    if (m_i2cRetries < kMostMeterRetries)
        showCableLength();
    if (m_i2cRetries >= kMostMeterRetries) {
        ui->lbl_CableLength->setText(kUnknownLength);
    } else if (nSystemCheck % kSlowCheck == 0) {
        showBattery();
        m_pParams->selectActiveCameraInterface();
        UpdateMenuSystemInformation();
        checkUsbHost();
    }
    const qint32 check = nSystemCheck++; // before an event's action, which may wait with a dialog
    if (check == kCardCheck) {
        getSDCardInfo();
        announce(SDCardInfo.inserted ? UnitEvent::CardInserted : UnitEvent::CardRemoved);
    } else if (check > kCardCheck && check % kMountLook == 0) {
        lookForMount();
    }
}

// Where the board's overlay plane draws, nothing is painted here: the first frame received is on the screen.
// A plane that could not be opened leaves the drawing to us.
void MainWindow::followDisplay()
{
    const bool planeDraws = displayDraws(boardElements());
    if (g_InputFrameReady && !m_isReady && planeDraws)
        announceReady();
    if (!planeDraws && m_shown.screen == ScreenKind::Live && ui->labelInputVideo->isHidden())
        showLivePicture();
}

void MainWindow::showCableLength()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    settings.MeterCount = readMeterCount(settings.ReadRawEncoderValues);
    const bool isKnown = settings.MeterCount >= 0;
    m_i2cRetries = qint16(isKnown ? 0 : m_i2cRetries + 1);
    const int reading = settings.MeterCount - settings.MeterOffset;
    if (isKnown) {
        ui->lbl_CableLength->setText(settings.ReadRawEncoderValues
                                         ? rawCountText(reading)
                                         : cableLengthText(reading, eUnitofMeasure(settings.UnitofMeasure)));
    }
    const QByteArray overlay = burntInLength(settings.MeterCount, ui->lbl_CableLength->text()).toLocal8Bit();
    gst_UpdateVideoMeterCount(overlay.constData(), int(overlay.size()));
    if (!isKnown)
        return;
    if (settings.currDamageCatelogMeterCount < 0)
        settings.currDamageCatelogMeterCount = settings.MeterCount; // noted where the length was not known
    if (!settings.bDamageCatelogAnnotationActive ||
        !hasLeftDamageNote(settings.MeterCount, settings.currDamageCatelogMeterCount))
        return;
    settings.bDamageCatelogAnnotationActive = false;
    ui->lbl_DamageCatelogText->clear();
    gst_UpdateVideoDamageCatelog("", 0);
}

void MainWindow::showBattery()
{
    m_pParams->ReadBatteryPotential();
    const eBatteryStatus status = m_pParams->getParams().BatteryStatus;
    if (size_t(status) < kBatteryPictures.size())
        ui->lbl_BatteryIndicator->setPixmap(QPixmap(graphic(kBatteryPictures[size_t(status)])));
    if (status == eBatteryEmpty) {
        showCriticalBattery("critical_battery_bg.png");
    } else if (status == eBatteryCriticalTemperature) {
        qCDebug(log) << "Battery Temperature too HOT. Shutting Down...";
        showCriticalBattery("critical_battery_temperature_bg.png");
    }
}

void MainWindow::showCriticalBattery(const char *picture)
{
    closeDialogs(); // nobody answers them any more, and they hide the picture
    imageTimer->stop();
    m_shown.batteryIsCritical = true;
    ui->labelInputVideo->setPixmap(QPixmap(graphic(picture)));
    showScreen();
    // The next look at the battery comes in 3.2 s: it must not put the end off again and again.
    if (!shutdownTimer->isActive())
        shutdownTimer->start(kCriticalShutdownDelay);
}

// The card belongs to the host now: no button may write to it.
void MainWindow::enterUsbActive()
{
    gst_SendVideoInputPipelineEOS(true);
    imageTimer->stop();
    popUpTimer->stop();
    genericDelayTimer->stop();
    closeEditor();
    stopPlayback();
    ui->labelInputVideo->setGeometry(80, 24, kFrameWidth, kFrameHeight);
    ui->labelInputVideo->setPixmap(QPixmap(graphic("usb_connected_bg.png")));
    // Two file systems on one card damage each other: ours is closed while the host has it.
    command::run(QStringLiteral("sync"));
    command::run(QStringLiteral("umount"), {kCardMountPoint.text()});
}

// The host has written what it liked, and may have gone without a word: nothing is read or written before the
// card is mounted afresh.
void MainWindow::enterUsbDisconnected()
{
    if (m_card == CardHold::Taken) {
        command::run(QStringLiteral("umount"), {kCardMountPoint.text()}); // where the first one failed
        mountCard();
        if (mountTableShowsCard())
            refreshFolder();
        else
            m_card = CardHold::Awaited;
    }
    backToLiveView();
}

int MainWindow::enableRawEncoderDisplay()
{
    if (QFileInfo::exists(unit::path(kDcimFolder / QStringLiteral("__RAWENCODER__"))))
        m_pParams->getParams().ReadRawEncoderValues = true;
    return 1;
}

void MainWindow::ActivateMSDC(bool activate)
{
    const bool offers = activate && SDCardInfo.inserted;
    if (offers) {
        command::run(QStringLiteral("modprobe"),
                     {QStringLiteral("g_mass_storage"), QStringLiteral("file=") + kCardDevice.text(),
                      QStringLiteral("removable=y")});
    } else {
        command::run(QStringLiteral("rmmod"), {QStringLiteral("g_mass_storage")});
    }
    m_pParams->getParams().MSDC_ModuleInstalled = offers;
}

// A key that repeats, or a battery that runs empty meanwhile, ends the unit once.
void MainWindow::onProcessSystemShutdown()
{
    if (!m_isShuttingDown)
        announce(UnitEvent::Shutdown);
}

void MainWindow::shutDown()
{
    m_isShuttingDown = true;
    m_touches->close();
    emit BusyIndicator(true);
    const bool endedPicture = m_shown.screen == ScreenKind::Live || m_shown.screen == ScreenKind::Recording;
    imageTimer->stop();
    closeOpenRecords(); // a film is on the card, whole, before the power goes
    UpdateEventLog(eEventShutDown, QStringLiteral("Shutdown power switch pressed"));
    if (powerOff())
        return;
    m_isShuttingDown = false; // the key may be pressed again
    m_touches->open();
    emit BusyIndicator(false);
    if (endedPicture)
        backToLiveView();
    else if (g_MainState == eStatePlaybackSnapshotRecordingAudio)
        displaySelectedThumbnail();
}

bool MainWindow::powerOff()
{
    qCDebug(log) << "Shutting Down...";
    const command::Result end = command::run(QStringLiteral("poweroff"));
    return end.started && end.exitCode == 0;
}
