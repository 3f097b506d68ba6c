// A finger on whatever dialog is open.
#pragma once

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

inline void touchIn(const QWidget *dialog, const QString &button)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(button), Qt::LeftButton);
}

// Does `act` on the dialog of that class that opens next, as soon as it is open.
template <typename Dialog = QDialog, typename Act> void whenOpen(Act act)
{
    auto *poll = new QTimer(qApp);
    const QPointer<QWidget> now = QApplication::activeModalWidget(); // the next may lie where this one lay
    QObject::connect(poll, &QTimer::timeout, poll, [poll, now, act] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (!dialog || dialog == now)
            return;
        poll->stop();
        poll->deleteLater();
        act(dialog);
    });
    poll->start(1);
}
