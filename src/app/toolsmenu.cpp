// The tools menu.
#include "app/mainwindow.h"
#include "ui_mainwindow.h"

#include "settings/params.h"
#include "storage/eventlog.h"
#include "storage/sdcard.h"

#include <QApplication>

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

void MainWindow::on_btn_tools_Reset_Meter_Counter_clicked()
{
    _GlobalSystemSettings &settings = m_pParams->getParams();
    UpdateEventLog(eEventResetMeterCounter, QStringLiteral("Reset meter counter button clicked"));
    settings.MeterOffset = static_cast<quint16>(settings.MeterCount);
}

void MainWindow::on_btn_tools_ExitApplication_clicked()
{
    UpdateEventLog(eEventExitApplication, QStringLiteral("Exit application button clicked"));
    QApplication::quit();
}

// The button is there, but nothing is to be set.
void MainWindow::on_btn_tools_WiFI_Settings_clicked() {}
