// What every dialog of the unit shares: it stands in the middle of the window, on any platform plug-in.
#pragma once

#include <QDialog>

class UnitDialog : public QDialog
{
    Q_OBJECT

public:
    using QDialog::QDialog;

protected:
    void showEvent(QShowEvent *event) override;
};
