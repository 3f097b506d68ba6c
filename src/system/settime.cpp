#include "system/settime.h"
#include "ui_settime.h"

#include "system/clocksetting.h"
#include "system/figurelabel.h"

#include <QDateTime>

namespace {

constexpr int kHours = 24;
constexpr int kMinutes = 60;

void turn(QLabel *label, int step, int count)
{
    showFigure(label, clocksetting::wrapped(figure(label), step, 0, count - 1));
}

} // namespace

settime::settime(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint), ui(std::make_unique<Ui::settime>())
{
    ui->setupUi(this);
}

settime::~settime() = default;

void settime::init()
{
    const QTime now = QTime::currentTime();
    showFigure(ui->lbl_settime_Hour, now.hour());
    showFigure(ui->lbl_settime_Minute, now.minute());
    showFigure(ui->lbl_settime_Second, now.second());
}

void settime::on_btn_settime_hour_up_clicked()
{
    turn(ui->lbl_settime_Hour, +1, kHours);
}

void settime::on_btn_settime_hour_down_clicked()
{
    turn(ui->lbl_settime_Hour, -1, kHours);
}

void settime::on_btn_settime_minute_up_clicked()
{
    turn(ui->lbl_settime_Minute, +1, kMinutes);
}

void settime::on_btn_settime_minute_down_clicked()
{
    turn(ui->lbl_settime_Minute, -1, kMinutes);
}

void settime::on_btn_settime_second_up_clicked()
{
    turn(ui->lbl_settime_Second, +1, kMinutes);
}

void settime::on_btn_settime_second_down_clicked()
{
    turn(ui->lbl_settime_Second, -1, kMinutes);
}

void settime::on_btn_settime_confirm_clicked()
{
    showWaiting(ui->lbl_settime_clock_icon);
    setSystemDateTime(QStringLiteral("%1 %2:%3:%4")
                          .arg(QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")),
                               ui->lbl_settime_Hour->text(), ui->lbl_settime_Minute->text(),
                               ui->lbl_settime_Second->text()));
    close();
}

void settime::on_btn_settime_cancel_clicked()
{
    close();
}

void settime::setSystemDateTime(QString dateTime)
{
    clocksetting::set(QStringLiteral("+%T"), dateTime);
}
