// The dialog that sets day, month and year of the unit's clock; the time stays that of now. GUI thread.
#pragma once

#include "dialogs/unitdialog.h"

#include <memory>

namespace Ui {
class setdate;
}

class setdate : public UnitDialog
{
    Q_OBJECT

public:
    // Build, init(), exec().
    explicit setdate(QWidget *parent);
    ~setdate() override;

    void init(); // shows today

    // "2015-06-30 14:05:09": into the system's and the hardware's clock; waits for both commands.
    void setSystemDateTime(QString dateTime);

private slots:
    void on_btn_setdate_month_up_clicked();
    void on_btn_setdate_month_down_clicked();
    void on_btn_setdate_day_up_clicked();
    void on_btn_setdate_day_down_clicked();
    void on_btn_setdate_year_up_clicked();
    void on_btn_setdate_year_down_clicked();
    void on_btn_setdate_confirm_clicked();
    void on_btn_setdate_cancel_clicked();

private:
    void turnMonth(int step);
    void turnDay(int step);
    void turnYear(int step);

    std::unique_ptr<Ui::setdate> ui;
};
