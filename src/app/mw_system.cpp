// What comes from the system around the window: the 200 ms check, the kernel log, the power key.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/cablelength.h"
#include "hw/i2c.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "platform/command.h"
#include "settings/params.h"
#include "storage/eventlog.h"

#include <QLoggingCategory>

#include <array>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.system")

constexpr int kMostMeterRetries = 10;
constexpr int kSlowCheck = 16; // calls between two looks at battery and camera head

constexpr std::array kBatteryPictures = {
    "ind_Battery100.png",   "ind_Battery80.png",        "ind_Battery60.png",
    "ind_Battery40.png",    "ind_Battery20.png",        "ind_BatteryEmpty.png",
    "ind_BatteryError.png", "ind_BatteryPluggedIn.png", "ind_BatteryTemperature.png",
    "ind_BatteryTemperature.png"};

// The meter count, or the raw encoder count; negative when the board did not answer.
qint16 readMeterCount(bool raw)
{
    const int high = i2c_read(kEncoderBoardAddress, raw ? twiEncoderCountHighByte : twiMeterCountHighByte);
    const int low = i2c_read(kEncoderBoardAddress, raw ? twiEncoderCountLowByte : twiMeterCountLowByte);
    return static_cast<qint16>(high * 256 | low);
}

} // namespace

void MainWindow::systemCheck()
{
    static qint32 nSystemCheck = 0;
    if (g_gst_VideoPipelineMode == eGSTStateError) {
        ChangeMainState(eStateVideoInputPipelineFailure);
        return;
    }
    // Where the board's overlay plane draws, nothing is painted here: the first frame received is on the screen.
    if (g_InputFrameReady && !m_isReady && displayDraws(boardElements()))
        announceReady();
    if (m_i2cRetries < kMostMeterRetries)
        showCableLength();
    if (m_i2cRetries >= kMostMeterRetries) {
        ui->lbl_CableLength->setText(QStringLiteral("-!-"));
    } else if (nSystemCheck % kSlowCheck == 0) {
        showBattery();
        m_pParams->selectActiveCameraInterface();
        UpdateMenuSystemInformation();
    }
    ++nSystemCheck;
}

void MainWindow::showCableLength()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    settings.MeterCount = readMeterCount(settings.ReadRawEncoderValues);
    if (settings.MeterCount < 0) {
        ++m_i2cRetries;
        return;
    }
    m_i2cRetries = 0;
    ui->lbl_CableLength->setText(cableLengthText(settings));
}

void MainWindow::showBattery()
{
    m_pParams->ReadBatteryPotential();
    const auto status = size_t(m_pParams->getParams().BatteryStatus);
    if (status < kBatteryPictures.size()) {
        ui->lbl_BatteryIndicator->setPixmap(QPixmap(QStringLiteral(":/MyGraphicResources/graphics/") +
                                                    QLatin1String(kBatteryPictures[status])));
    }
}

void MainWindow::onProcessSystemShutdown()
{
    emit BusyIndicator(true);
    UpdateEventLog(eEventShutDown, QStringLiteral("Shutdown power switch pressed"));
    qCDebug(log) << "Shutting Down...";
    command::run(QStringLiteral("poweroff"));
}

void MainWindow::onDirectoryChanged(const QString &path)
{
    qCDebug(log) << "Directory Changed: " << path;
}

void MainWindow::onLogfileChanged(const QString &) {}

void MainWindow::setSystemDateTime(QString) {}
