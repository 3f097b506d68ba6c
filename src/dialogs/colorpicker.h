// The sixteen colours of the picture editor, a preview, a tick and a cross.
#pragma once

#include "dialogs/unitdialog.h"

#include <QColor>

#include <memory>

namespace Ui {
class ColorPicker;
}

class ColorPicker : public UnitDialog
{
    Q_OBJECT

public:
    // Build, setColor(), init(), exec(), read selectedColor.
    explicit ColorPicker(QWidget *parent);
    ~ColorPicker() override;

    void setColor(const QColor &color); // current when the dialog opens
    void init();                        // shows it

    // The last swatch touched; invalid when the tick came without one. Closed any other way than by the tick:
    // the colour of setColor().
    QColor selectedColor;

public slots:
    void reject() override;

private slots:
    void on_btn_ColorPicker_Navy_clicked();
    void on_btn_ColorPicker_Blue_clicked();
    void on_btn_ColorPicker_Aqua_clicked();
    void on_btn_ColorPicker_Teal_clicked();
    void on_btn_ColorPicker_Olive_clicked();
    void on_btn_ColorPicker_Green_clicked();
    void on_btn_ColorPicker_Lime_clicked();
    void on_btn_ColorPicker_Yellow_clicked();
    void on_btn_ColorPicker_Orange_clicked();
    void on_btn_ColorPicker_Red_clicked();
    void on_btn_ColorPicker_Maroon_clicked();
    void on_btn_ColorPicker_Fuchsia_clicked();
    void on_btn_ColorPicker_Purple_clicked();
    void on_btn_ColorPicker_Silver_clicked();
    void on_btn_ColorPicker_Gray_clicked();
    void on_btn_ColorPicker_Black_clicked();
    void on_btn_Confirm_clicked();
    void on_btn_Cancel_clicked();

private:
    void choose(const QColor &color);
    void preview(const QColor &color);

    std::unique_ptr<Ui::ColorPicker> ui;
    QColor currColor;
};
