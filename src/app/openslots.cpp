// Buttons whose screens are not built: pressed, they leave everything as it is. docs/architecture.md lists
// them.
#include "app/mainwindow.h"

void MainWindow::on_btn_menu_ThumbnailEditImage_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditBack_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditArrow_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditCircle_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditDeleteItem_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditSave_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditText_clicked() {}
void MainWindow::on_btn_menu_ThumbnailImageEditColor_clicked() {}
