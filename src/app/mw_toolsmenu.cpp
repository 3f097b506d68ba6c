// The tools page: coming, going, and the settings that a touch steps on. Each is applied, shown, logged and
// saved at once.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "app/graphics.h"
#include "core/toolscycle.h"
#include "hw/hardware.h"
#include "media/gst_videoinput.h"
#include "platform/unit.h"
#include "settings/params.h"
#include "storage/dcim.h"
#include "storage/eventlog.h"
#include "storage/sdcard.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimer>

namespace {

struct Switch
{
    const char *on;
    const char *off;
    eEventLogOperation event;
    const char *text;
};

constexpr Switch kStamp = {"btn_tools_timedatestamp_on.png", "btn_tools_timedatestamp_off.png",
                           eEventDateTimeStamp, "Date Time Stamp button clicked - %1"};
constexpr Switch kMicrophone = {"btn_tools_microphone_on.png", "btn_tools_microphone_off.png",
                                eEventMicrophoneOnOff, "Microphone on/off button clicked - %1"};
constexpr Switch kStreaming = {"btn_tools_networkstreaming_on.png", "btn_tools_networkstreaming_off.png",
                               eEventNetworkStreaming, "Network_Streaming on/off button clicked - %1"};
constexpr Switch kHotspot = {"btn_tools_wifi_hotspot_on.png", "btn_tools_wifi_hotspot_off.png",
                             eEventWiFIHotspot, "WiFI hotspot on/off button clicked - %1"};

void showSwitch(QPushButton *button, const Switch &what, bool on)
{
    button->setIcon(graphicIcon(on ? what.on : what.off));
}

void logSwitch(const Switch &what, bool on)
{
    UpdateEventLog(what.event,
                   QString::fromLatin1(what.text).arg(on ? QStringLiteral("ON") : QStringLiteral("OFF")));
}

// A label over a button must not take its touches.
template <typename Widget> void letTouchesThrough(QWidget *page)
{
    for (Widget *widget : page->findChildren<Widget *>())
        widget->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void showAutoShutdown(const Ui::MainWindow &ui, const _GlobalSystemSettings &settings)
{
    const auto [above, chosen, next] =
        toolscycle::delaysAround(settings.AutoShutdownOptions, settings.AutoShutdownIdx);
    ui.lbl_menu_AutoOff_lineOne->setText(above);
    ui.lbl_menu_AutoOff_lineTwo->setText(chosen);
    ui.lbl_menu_AutoOff_lineThree->setText(next);
}

void showLanguage(const Ui::MainWindow &ui, const _GlobalSystemSettings &settings)
{
    // A language that the settings file made up has no picture; the button keeps its last one.
    if (const QString abbreviation = settings.LanguageAbbreviation; !abbreviation.isEmpty())
        ui.btn_tools_Set_Language->setIcon(
            QIcon(QPixmap(graphic("btn_tools_lang_") + abbreviation + QLatin1String(".png"))));
}

// The chosen unit, and below it the other one.
void showUnitOfMeasure(const Ui::MainWindow &ui, const _GlobalSystemSettings &settings)
{
    const bool feet = settings.UnitofMeasure == eFeet;
    ui.lbl_menu_UnitofMeasure_lineOne->setText(feet ? QStringLiteral("ft") : QStringLiteral("m"));
    ui.lbl_menu_UnitofMeasure_lineTwo->setText(feet ? QStringLiteral("m") : QStringLiteral("ft"));
}

} // namespace

void MainWindow::on_btn_menu_Tools_clicked()
{
    route(eEventEnterToolsMenu, "Enter tools menu", eStateToolsMenu);
}

void MainWindow::on_btn_menu_BackButton_clicked()
{
    route(eEventToolsMenuExit, "Exit tools menu", eStateToolsMenuExit);
}

void MainWindow::enterToolsMenu()
{
    emit BusyIndicator(true);
    imageTimer->stop();
    gst_EndVideoInputPipeline();
    chooseLivePipelineMode(); // a failure of the old pipeline ends with it
    initToolsMenu();
    toolsClockTimer->start();
    emit BusyIndicator(false);
}

void MainWindow::enterToolsMenuExit()
{
    emit BusyIndicator(true);
    if (m_card == CardHold::Taken) {
        restoreCurrentFolder(); // a card that was formatted has none
        showCurrentFolder();
    }
    chooseLivePipelineMode();
    buildLivePicture();
    emit BusyIndicator(false);
    ChangeMainState(eStateLive);
    showLivePicture();
}

void MainWindow::chooseLivePipelineMode()
{
    g_gst_VideoPipelineMode =
        m_pParams->getParams().bNetworkStreaming ? eGSTStateStreaming : eGSTStateLiveVideo;
}

void MainWindow::initToolsMenu()
{
    m_pParams->GetWifiStatus(); // the network gives its address when it likes
    gst_SetNetworkStreamingIPAddress(m_pParams->getParams().WIFIipAddr.toUtf8().constData());
    letTouchesThrough<QLabel>(ui->frm_ToolsMenuButtons);
    letTouchesThrough<QProgressBar>(ui->frm_ToolsMenuButtons);
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    showSwitch(ui->btn_tools_DateTimeStamp, kStamp, settings.bDateTimeStamp);
    showSwitch(ui->btn_tools_Network_Streaming_On_Off, kStreaming, settings.bNetworkStreaming);
    showSwitch(ui->btn_tools_Microphone_On_Off, kMicrophone, settings.bMicrophoneActive);
    ui->pb_menu_LCD_Backlight->setValue(settings.LCDBacklightValue);
    showClock();
    showAutoShutdown(*ui, settings);
    showLanguage(*ui, settings);
    showUnitOfMeasure(*ui, settings);
    showHotspot();
    showCameraHead();
    updateMainMenuSDCardInfo();
    UpdateMenuSystemInformation();
}

void MainWindow::UpdateMenuSystemInformation()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    const QString head = settings.ImagerTypeDescription.at(size_t(settings.ImagerType));
    ui->lbl_menu_SystemInfo->setText(
        QStringLiteral("FW: %1/%2\nIP: %3\nWi-FI AP: %4\nWi-FI MAC: %5\nKERNEL: %6\n%7")
            .arg(QStringLiteral(TUBIX_VERSION), settings.EncoderBoardFWVersion, settings.WIFIipAddr,
                 settings.WIFIHotSpotSSID, settings.WIFImacAddress, settings.KernelInfo, head));
}

void MainWindow::updateMainMenuSDCardInfo()
{
    getSDCardInfo();
    ui->lbl_menu_Format_Media_Capacity->setText(cardSummary(SDCardInfo));
    ui->pb_menu_StorageCapacity->setValue(SDCardInfo.percentFull);
}

void MainWindow::showClock()
{
    if (m_shown.screen != ScreenKind::Tools && g_MainState != eStateToolsMenu)
        toolsClockTimer->stop();
    const QDateTime now = QDateTime::currentDateTime();
    ui->lbl_menu_CurrentTime->setText(now.toString(QStringLiteral("hh:mm")));
    ui->lbl_menu_CurrentDate->setText(now.toString(QStringLiteral("dd.MM.yyyy")));
}

void MainWindow::on_btn_tools_DateTimeStamp_clicked()
{
    quint8 &on = m_pParams->getParams().bDateTimeStamp;
    on = on ? 0 : 1;
    gst_EnableDateTimeOverlay(on);
    showSwitch(ui->btn_tools_DateTimeStamp, kStamp, on);
    logSwitch(kStamp, on);
    m_pParams->WriteGlobalSystemSettingsFile(false);
}

void MainWindow::on_btn_tools_Microphone_On_Off_clicked()
{
    qint8 &on = m_pParams->getParams().bMicrophoneActive;
    on = on ? 0 : 1;
    gst_EnableAudioRecording(on);
    showSwitch(ui->btn_tools_Microphone_On_Off, kMicrophone, on);
    logSwitch(kMicrophone, on);
    showScreen(); // a note can be recorded, or not
    m_pParams->WriteGlobalSystemSettingsFile(false);
}

// Not kept over a restart.
void MainWindow::on_btn_tools_Network_Streaming_On_Off_clicked()
{
    quint8 &on = m_pParams->getParams().bNetworkStreaming;
    on = on ? 0 : 1;
    chooseLivePipelineMode();
    showSwitch(ui->btn_tools_Network_Streaming_On_Off, kStreaming, on);
    logSwitch(kStreaming, on);
}

void MainWindow::showHotspot()
{
    const bool on = m_pParams->getParams().bWIFIHotSpotActive;
    showSwitch(ui->btn_tools_WiFI_Hotspot_On_Off, kHotspot, on);
    ui->lbl_WiFiIndicator->setPixmap(QPixmap(graphic(on ? "ind_WIFI_active.png" : "ind_WIFI_inactive.png")));
}

void MainWindow::on_btn_tools_WiFI_Hotspot_On_Off_clicked()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    emit BusyIndicator(true);
    m_pParams->toggleWifiMode();
    gst_SetNetworkStreamingIPAddress(settings.WIFIipAddr.toUtf8().constData());
    UpdateMenuSystemInformation();
    showHotspot();
    logSwitch(kHotspot, settings.bWIFIHotSpotActive);
    emit BusyIndicator(false);
}

void MainWindow::on_btn_tools_Auto_On_Off_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    settings.AutoShutdownIdx = toolscycle::autoShutdownAfter(settings.AutoShutdownIdx);
    emit resetAutoShutdownTimer();
    showAutoShutdown(*ui, settings);
    UpdateEventLog(eEventAutoOnOff, QStringLiteral("Auto on/off button clicked - %1")
                                        .arg(settings.AutoShutdownOptions[size_t(settings.AutoShutdownIdx)]));
    m_pParams->WriteGlobalSystemSettingsFile(false);
}

void MainWindow::on_btn_tools_LCD_Backlight_clicked()
{
    quint8 &level = m_pParams->getParams().LCDBacklightValue;
    level = toolscycle::backlightAfter(level);
    SetLCDBrightness(static_cast<char>(level));
    ui->pb_menu_LCD_Backlight->setValue(level);
    UpdateEventLog(eEventLCDBacklight, QStringLiteral("LCD backlight button clicked - %1").arg(level));
    m_pParams->WriteGlobalSystemSettingsFile(false);
}

void MainWindow::on_btn_tools_Set_Language_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    settings.LanguageIdx = toolscycle::languageAfter(settings.LanguageIdx, eTheEnd);
    m_pParams->SetLanguage(static_cast<eLanguages>(settings.LanguageIdx));
    showLanguage(*ui, settings);
    UpdateEventLog(
        eEventSetLanguage,
        QStringLiteral("Set language button clicked language = %1").arg(settings.LanguageAbbreviation));
    m_pParams->WriteGlobalSystemSettingsFile(false);
}

void MainWindow::on_btn_tools_Set_UnitofMeasure_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    quint8 &unitOfMeasure = settings.UnitofMeasure;
    unitOfMeasure = unitOfMeasure == eMeter ? eFeet : eMeter;
    showUnitOfMeasure(*ui, settings);
    UpdateEventLog(eEventSetUnitOfMeasure,
                   QStringLiteral("Set unit of measure button clicked - %1")
                       .arg(unitOfMeasure == eFeet ? QStringLiteral("feet") : QStringLiteral("meter")));
    m_pParams->WriteGlobalSystemSettingsFile(false);
}
