// The application as a whole, put together once for all who run it: the program, the tour, tests and benches.
#pragma once

#include "app/debounce.h"
#include "app/mainwindow.h"
#include "platform/servicemanager.h"

// The application object with the unit's pixels, look and settings. One a process; after unit::setRoot().
class UnitApplication : public debounce
{
public:
    UnitApplication(int &argc, char **argv);
};

// A unit that runs: the window, wired to the application, started and shown. Its end closes what is being
// written, whatever ended the event loop.
class RunningUnit
{
public:
    explicit RunningUnit(UnitApplication &application);
    ~RunningUnit();
    Q_DISABLE_COPY_MOVE(RunningUnit)

    MainWindow window;

private:
    servicemanager::Watchdog m_watchdog;
};
