#include "system/systemimagerconfiguration.h"
#include "ui_systemimagerconfiguration.h"

#include "system/imagerconfigurationfile.h"

SystemImagerConfiguration::SystemImagerConfiguration(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint), ui(std::make_unique<Ui::SystemImagerConfiguration>())
{
    ui->setupUi(this);
    imagerconfigurationfile::Fitted now;
    imagerconfigurationfile::read(now);
    ui->radioButton_30m->setChecked(now.reel == e30meter);
    ui->checkBox_MiniModule->setChecked(now.hasMiniModule);
}

SystemImagerConfiguration::~SystemImagerConfiguration() = default;

void SystemImagerConfiguration::on_pushButton_clicked()
{
    if (imagerconfigurationfile::write(ui->radioButton_30m->isChecked(),
                                       ui->checkBox_MiniModule->isChecked()))
        close();
}
