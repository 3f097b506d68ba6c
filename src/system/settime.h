// The dialog that sets hours, minutes and seconds of the unit's clock; the date stays today's. GUI thread.
#pragma once

#include "dialogs/unitdialog.h"

#include <memory>

class QLabel;
namespace Ui {
class settime;
}

class settime : public UnitDialog
{
    Q_OBJECT

public:
    // Build, init(), exec().
    explicit settime(QWidget *parent);
    ~settime() override;

    void init(); // shows the time of now

    // "2015-06-30 14:05:09": into the system's and the hardware's clock; waits for both commands.
    void setSystemDateTime(QString dateTime);

private slots:
    void on_btn_settime_hour_up_clicked();
    void on_btn_settime_hour_down_clicked();
    void on_btn_settime_minute_up_clicked();
    void on_btn_settime_minute_down_clicked();
    void on_btn_settime_second_up_clicked();
    void on_btn_settime_second_down_clicked();
    void on_btn_settime_confirm_clicked();
    void on_btn_settime_cancel_clicked();

private:
    std::unique_ptr<Ui::settime> ui;
};
