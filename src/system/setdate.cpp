#include "system/setdate.h"
#include "ui_setdate.h"

#include "system/clocksetting.h"
#include "system/figurelabel.h"

#include <QDateTime>

namespace {

constexpr int kMonths = 12;

} // namespace

setdate::setdate(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint), ui(std::make_unique<Ui::setdate>())
{
    ui->setupUi(this);
}

setdate::~setdate() = default;

void setdate::init()
{
    const QDate today = QDate::currentDate();
    showFigure(ui->lbl_setdate_Day, today.day());
    showFigure(ui->lbl_setdate_Month, today.month());
    showFigure(ui->lbl_setdate_Year, today.year());
}

// The day stays when month or year change: a day that the month does not have is refused when it is set.
void setdate::turnMonth(int step)
{
    showFigure(ui->lbl_setdate_Month, clocksetting::wrapped(figure(ui->lbl_setdate_Month), step, 1, kMonths));
}

void setdate::turnDay(int step)
{
    showFigure(ui->lbl_setdate_Day,
               clocksetting::dayAfter(figure(ui->lbl_setdate_Day), step, figure(ui->lbl_setdate_Month),
                                      figure(ui->lbl_setdate_Year)));
}

void setdate::turnYear(int step)
{
    showFigure(ui->lbl_setdate_Year, clocksetting::yearAfter(figure(ui->lbl_setdate_Year), step));
}

void setdate::on_btn_setdate_month_up_clicked()
{
    turnMonth(+1);
}

void setdate::on_btn_setdate_month_down_clicked()
{
    turnMonth(-1);
}

void setdate::on_btn_setdate_day_up_clicked()
{
    turnDay(+1);
}

void setdate::on_btn_setdate_day_down_clicked()
{
    turnDay(-1);
}

void setdate::on_btn_setdate_year_up_clicked()
{
    turnYear(+1);
}

void setdate::on_btn_setdate_year_down_clicked()
{
    turnYear(-1);
}

void setdate::on_btn_setdate_confirm_clicked()
{
    showWaiting(ui->lbl_setdate_calendar_icon);
    setSystemDateTime(QStringLiteral("%1-%2-%3 %4")
                          .arg(ui->lbl_setdate_Year->text(), ui->lbl_setdate_Month->text(),
                               ui->lbl_setdate_Day->text(),
                               QTime::currentTime().toString(QStringLiteral("hh:mm:ss"))));
    close();
}

void setdate::on_btn_setdate_cancel_clicked()
{
    close();
}

void setdate::setSystemDateTime(QString dateTime)
{
    clocksetting::set(QStringLiteral("+%F"), dateTime);
}
