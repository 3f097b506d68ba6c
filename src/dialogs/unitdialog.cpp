#include "dialogs/unitdialog.h"

void UnitDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!parentWidget())
        return;
    const QWidget *under = parentWidget()->window();
    move(under->mapToGlobal(QPoint((under->width() - width()) / 2, (under->height() - height()) / 2)));
}
