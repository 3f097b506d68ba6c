#include "dialogs/colorpicker.h"
#include "ui_colorpicker.h"

#include <QPalette>

ColorPicker::ColorPicker(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint), ui(std::make_unique<Ui::ColorPicker>())
{
    ui->setupUi(this);
}

ColorPicker::~ColorPicker() = default;

void ColorPicker::setColor(const QColor &color)
{
    currColor = color;
}

void ColorPicker::init()
{
    preview(currColor);
}

void ColorPicker::preview(const QColor &color)
{
    ui->lbl_ColorPicker_Curr_Color->ensurePolished(); // later its sheet would take the palette of the window
    QPalette palette = ui->lbl_ColorPicker_Curr_Color->palette();
    palette.setBrush(QPalette::Window, QBrush(color, Qt::SolidPattern));
    ui->lbl_ColorPicker_Curr_Color->setPalette(palette);
    ui->lbl_ColorPicker_Curr_Color->setAutoFillBackground(true);
}

void ColorPicker::choose(const QColor &color)
{
    selectedColor = color;
    preview(color);
}

void ColorPicker::on_btn_Confirm_clicked()
{
    accept();
}

void ColorPicker::on_btn_Cancel_clicked()
{
    reject();
}

void ColorPicker::reject()
{
    selectedColor = currColor;
    UnitDialog::reject();
}

void ColorPicker::on_btn_ColorPicker_Navy_clicked()
{
    choose(Qt::darkBlue);
}

void ColorPicker::on_btn_ColorPicker_Blue_clicked()
{
    choose(Qt::blue);
}

void ColorPicker::on_btn_ColorPicker_Aqua_clicked()
{
    choose(Qt::cyan);
}

void ColorPicker::on_btn_ColorPicker_Teal_clicked()
{
    choose(Qt::darkCyan);
}

void ColorPicker::on_btn_ColorPicker_Olive_clicked()
{
    choose(Qt::darkYellow);
}

void ColorPicker::on_btn_ColorPicker_Green_clicked()
{
    choose(Qt::darkGreen);
}

void ColorPicker::on_btn_ColorPicker_Lime_clicked()
{
    choose(Qt::green);
}

void ColorPicker::on_btn_ColorPicker_Yellow_clicked()
{
    choose(Qt::yellow);
}

void ColorPicker::on_btn_ColorPicker_Orange_clicked()
{
    choose(QColor(255, 133, 27));
}

void ColorPicker::on_btn_ColorPicker_Red_clicked()
{
    choose(Qt::red);
}

void ColorPicker::on_btn_ColorPicker_Maroon_clicked()
{
    choose(Qt::darkRed);
}

void ColorPicker::on_btn_ColorPicker_Fuchsia_clicked()
{
    choose(Qt::magenta);
}

void ColorPicker::on_btn_ColorPicker_Purple_clicked()
{
    choose(Qt::darkMagenta);
}

void ColorPicker::on_btn_ColorPicker_Silver_clicked()
{
    choose(Qt::lightGray);
}

void ColorPicker::on_btn_ColorPicker_Gray_clicked()
{
    choose(Qt::darkGray);
}

void ColorPicker::on_btn_ColorPicker_Black_clicked()
{
    choose(Qt::black);
}
