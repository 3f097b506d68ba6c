// The one yes/no question of the unit: a picture, a tick, a back arrow.
#pragma once

#include "dialogs/unitdialog.h"

#include <memory>

namespace Ui {
class ConfirmationBox;
}

class ConfirmationBox : public UnitDialog
{
    Q_OBJECT

public:
    // Build, exec(), read returnStatus. `picture`: 64 x 64, a larger one is clipped.
    ConfirmationBox(const QPixmap &picture, QWidget *parent);
    ~ConfirmationBox() override;

    bool returnStatus = false; // true: confirmed; closed any other way counts as cancel

private slots:
    void on_btn_Confirm_clicked();
    void on_btn_Cancel_clicked();

private:
    std::unique_ptr<Ui::ConfirmationBox> ui;
};
