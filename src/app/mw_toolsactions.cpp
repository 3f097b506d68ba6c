// The tools page's actions: clock, folders, card, camera head, service.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "core/toolscycle.h"
#include "dialogs/fileexplorer.h"
#include "hw/i2c.h"
#include "platform/command.h"
#include "settings/damagecatelogfile.h"
#include "settings/params.h"
#include "storage/dcim.h"
#include "storage/eventlog.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"
#include "system/clocksetting.h"
#include "system/imagerconfigurationfile.h"
#include "system/setdate.h"
#include "system/settime.h"
#include "system/systemimagerconfiguration.h"

#include <QApplication>

namespace {

// While it lives the card is ours: no USB host works on it. Afterwards it is offered again, if it is there.
class CardWithoutHost
{
public:
    explicit CardWithoutHost(MainWindow &window) : m_window(window) { m_window.ActivateMSDC(false); }
    ~CardWithoutHost() { m_window.ActivateMSDC(true); }
    Q_DISABLE_COPY_MOVE(CardWithoutHost)

private:
    MainWindow &m_window;
};

template <typename ClockDialog> void askForClock(MainWindow &window)
{
    const CardWithoutHost card(window);
    ClockDialog dialog(&window);
    dialog.init();
    window.ask(dialog);
}

QString textOf(const toolscycle::Head *head)
{
    return head ? QString::fromLatin1(head->label) : QStringLiteral("---");
}

} // namespace

void MainWindow::on_btn_tools_SetDate_clicked()
{
    UpdateEventLog(eEventSetDate, QStringLiteral("Set date button clicked"));
    askForClock<setdate>(*this);
    showClock();
}

void MainWindow::on_btn_tools_SetTime_clicked()
{
    UpdateEventLog(eEventSetTime, QStringLiteral("Set time button clicked"));
    askForClock<settime>(*this);
    showClock();
}

void MainWindow::setSystemDateTime(const QString &dateTime)
{
    clocksetting::set(QString(), dateTime);
}

void MainWindow::on_btn_menu_FolderOptions_clicked()
{
    UpdateEventLog(eEventFolderOptions, QStringLiteral("Folder options button clicked"));
    const CardWithoutHost card(*this);
    FileExplorer explorer(this);
    explorer.init(this);
    explorer.setData(g_SavedFSInfo.currRootDirectory);
    ask(explorer);
    // Without a card there is no folder to go to; the next card brings its own.
    if (explorer.returnableText.isEmpty())
        return;
    // A folder that was made and then not chosen is not the current one.
    if (explorer.returnableText != g_SavedFSInfo.currRootDirectory)
        CreateDCIMStructure(explorer.returnableText);
    repairFilms();
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    showCurrentFolder();
}

void MainWindow::on_btn_tools_Format_Media_clicked()
{
    const CardWithoutHost card(*this);
    if (!confirm("confirmation_trashcan_format.png"))
        return;
    UpdateEventLog(eEventFormatMedia, QStringLiteral("Format media button clicked"));
    emit BusyIndicator(true);
    if (removeDir(kBaseFolder))
        updateMainMenuSDCardInfo();
    emit BusyIndicator(false);
}

void MainWindow::on_btn_menu_UnmountMedia_clicked()
{
    UpdateEventLog(eEventUnmountMedia, QStringLiteral("Unmount media button clicked"));
    emit BusyIndicator(true);
    command::run(QStringLiteral("umount"), {kCardMountPoint.text()});
    emit BusyIndicator(false);
    announce(UnitEvent::CardRemoved);
}

void MainWindow::on_btn_tools_Reset_Meter_Counter_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    UpdateEventLog(eEventResetMeterCounter, QStringLiteral("Reset meter counter button clicked"));
    if (settings.MeterCount >= 0) // else nobody knows where the cable stands
        settings.MeterOffset = static_cast<quint16>(settings.MeterCount);
}

// Asked for every language; three of them have no reset.
void MainWindow::on_btn_tools_Reset_Damage_Catelog_clicked()
{
    if (!confirm("confirmation_damgecatelog_reset.png"))
        return;
    const int language = m_pParams->getParams().LanguageIdx;
    const QString name = damagecatelog::resetName(language);
    if (name.isEmpty())
        return;
    UpdateEventLog(eEventResetDamageCatelog,
                   QStringLiteral("Reset damage catalog button clicked - %1").arg(name));
    restoreFactoryCatelog(language);
}

// For units with a mini module. What is attached, and below it what a touch selects.
void MainWindow::showCameraHead()
{
    const _GlobalSystemSettings &settings = m_pParams->getParams();
    ui->lbl_menu_Camera_Type_lineOne->setText(textOf(toolscycle::headOf(settings.ImagerType)));
    ui->lbl_menu_Camera_Type_lineTwo->setText(
        textOf(&toolscycle::headAfter(settings.ImagerType, settings.HWImagerConfiguration)));
    showScreen();
}

void MainWindow::on_btn_tools_Select_Camera_Type_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    const toolscycle::Head &head = toolscycle::headAfter(settings.ImagerType, settings.HWImagerConfiguration);
    settings.ImagerType = head.type;
    i2c_write(kEncoderBoardAddress, twiMeterCountAlgorithm, head.type);
    showCameraHead();
    UpdateMenuSystemInformation();
    UpdateEventLog(
        eEventSelectCameraType,
        QStringLiteral("Select camera type button clicked - %1").arg(QString::fromLatin1(head.logged)));
}

// The dialog comes up once for a missing file or on request, and once more when the file cannot be read then;
// the values stay as they are without one.
int MainWindow::ReadSystemImagerConfigurationFile()
{
    const auto askForHead = [this] {
        SystemImagerConfiguration dialog(this);
        ask(dialog);
    };
    if (!imagerconfigurationfile::exists() || imagerconfigurationfile::isAskedFor())
        askForHead();
    _GlobalSystemSettings &settings = m_pParams->getParams();
    imagerconfigurationfile::Fitted fitted = {settings.HWImagerConfiguration, settings.MiniModulePresent};
    if (!imagerconfigurationfile::read(fitted))
        askForHead();
    settings.HWImagerConfiguration = fitted.reel;
    settings.MiniModulePresent = fitted.hasMiniModule;
    return 0;
}

void MainWindow::on_btn_tools_ExitApplication_clicked()
{
    UpdateEventLog(eEventExitApplication, QStringLiteral("Exit application button clicked"));
    QApplication::quit();
}

// The button is there, but nothing is to be set.
void MainWindow::on_btn_tools_WiFI_Settings_clicked() {}
