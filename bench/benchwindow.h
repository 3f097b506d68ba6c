// The real window on a simulated unit of its own, for benches; off screen or not as the environment says.
#pragma once

#include "testunit.h"

#include "app/unitapplication.h"
#include "media/gst_videoinput.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>

class BenchWindow
{
public:
    BenchWindow(int &argc, char **argv)
    {
        m_application = std::make_unique<UnitApplication>(argc, argv);
        m_running = std::make_unique<RunningUnit>(*m_application);
        while (!g_InputFrameReady)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    // From here on nothing happens but what the bench asks for.
    void standStill()
    {
        gst_EndVideoInputPipeline();
        for (QTimer *timer : m_running->window.findChildren<QTimer *>())
            timer->stop();
        QCoreApplication::processEvents();
    }

    MainWindow &operator*() const { return m_running->window; }
    MainWindow *operator->() const { return &m_running->window; }

private:
    TestUnit m_unit;
    std::unique_ptr<UnitApplication> m_application;
    std::unique_ptr<RunningUnit> m_running;
};
