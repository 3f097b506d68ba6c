// The application object: power key, and the power-off of a unit that nobody touches. GUI thread.
#pragma once

#include "app/sleeper.h"

#include <QApplication>
#include <QTimer>

class params;

class debounce : public QApplication
{
    Q_OBJECT

public:
    debounce(int &argc, char **argv);
    void init(); // takes the settings; after construction, before the window
    void stopAutoShutdownTimer();

signals:
    void m_screenTouched();
    void ProcessSystemShutdown(); // the power key was pressed

public slots:
    void onInitAutoShutdownTimer();  // arms the timer; does nothing when the setting is off
    void onresetAutoShutdownTimer(); // the same, but stops it when the setting is off

private slots:
    void AutoShutDownExpired();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int autoShutdownInterval() const; // milliseconds; 0: off

    params *m_pParams = nullptr; // not owned
    QTimer m_AutoShutdownTimer;
    QTimer m_timer;
    Sleeper delay;
};
