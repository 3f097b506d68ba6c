// What every dialog of the unit shares: it stands in the middle of the window, on any platform plug-in, and
// goes with the card when it is about the card.
#pragma once

#include <QDialog>

class UnitDialog : public QDialog
{
    Q_OBJECT

public:
    using QDialog::QDialog;

    // onSDCardRemoved() from now on, when the owner's signal SDCardRemoved() comes. An owner without it, or
    // none: nothing.
    void closeWithCard(const QObject *owner);

public slots:
    virtual void onSDCardRemoved(); // closes it as cancelled

protected:
    void showEvent(QShowEvent *event) override;
};
