// Buttons whose screens are not built: pressed, they leave everything as it is. docs/architecture.md lists
// them.
#include "app/mainwindow.h"

void MainWindow::on_btn_menu_Tools_clicked() {}
void MainWindow::on_btn_menu_BackButton_clicked() {}
void MainWindow::on_btn_menu_FolderOptions_clicked() {}
void MainWindow::on_btn_tools_SetDate_clicked() {}
void MainWindow::on_btn_tools_SetTime_clicked() {}
void MainWindow::on_btn_tools_DateTimeStamp_clicked() {}
void MainWindow::on_btn_tools_Auto_On_Off_clicked() {}
void MainWindow::on_btn_tools_LCD_Backlight_clicked() {}
void MainWindow::on_btn_tools_Set_Language_clicked() {}
void MainWindow::on_btn_tools_WiFI_Hotspot_On_Off_clicked() {}
void MainWindow::on_btn_tools_Select_Camera_Type_clicked() {}
void MainWindow::on_btn_tools_Set_UnitofMeasure_clicked() {}
void MainWindow::on_btn_tools_Microphone_On_Off_clicked() {}
void MainWindow::on_btn_tools_Format_Media_clicked() {}
void MainWindow::on_btn_tools_Network_Streaming_On_Off_clicked() {}
void MainWindow::on_btn_tools_Reset_Damage_Catelog_clicked() {}
void MainWindow::on_btn_menu_UnmountMedia_clicked() {}

void MainWindow::setSystemDateTime(QString) {}
