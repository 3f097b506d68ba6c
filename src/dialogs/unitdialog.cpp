#include "dialogs/unitdialog.h"

// By name: the rooms of the dialogs know no window.
void UnitDialog::closeWithCard(const QObject *owner)
{
    if (owner && owner->metaObject()->indexOfSignal("SDCardRemoved()") >= 0)
        connect(owner, SIGNAL(SDCardRemoved()), this, SLOT(onSDCardRemoved()), Qt::UniqueConnection);
}

void UnitDialog::onSDCardRemoved()
{
    reject();
}

void UnitDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!parentWidget())
        return;
    const QWidget *under = parentWidget()->window();
    move(under->mapToGlobal(QPoint((under->width() - width()) / 2, (under->height() - height()) / 2)));
}
