// The service dialog that tells the unit which reel is fitted and whether a mini module is there. GUI thread.
#pragma once

#include "dialogs/unitdialog.h"

#include <memory>

namespace Ui {
class SystemImagerConfiguration;
}

class SystemImagerConfiguration : public UnitDialog
{
    Q_OBJECT

public:
    // Build, exec(), then read the file. It stays open while the file cannot be written.
    explicit SystemImagerConfiguration(QWidget *parent);
    ~SystemImagerConfiguration() override;

private slots:
    void on_pushButton_clicked();

private:
    std::unique_ptr<Ui::SystemImagerConfiguration> ui;
};
