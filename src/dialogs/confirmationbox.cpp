#include "dialogs/confirmationbox.h"
#include "ui_confirmationbox.h"

ConfirmationBox::ConfirmationBox(const QPixmap &picture, QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      ui(std::make_unique<Ui::ConfirmationBox>())
{
    ui->setupUi(this);
    ui->lbl_MainIcon->setPixmap(picture);
}

ConfirmationBox::~ConfirmationBox() = default;

void ConfirmationBox::on_btn_Confirm_clicked()
{
    returnStatus = true;
    close();
}

void ConfirmationBox::on_btn_Cancel_clicked()
{
    returnStatus = false;
    close();
}
