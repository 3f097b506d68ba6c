// The real window on a simulated unit of its own, for benches; off screen or not as the environment says.
#pragma once

#include "testunit.h"

#include "app/appearance.h"
#include "app/debounce.h"
#include "app/mainwindow.h"
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
        fixPixels();
        m_application = std::make_unique<debounce>(argc, argv);
        fixLook();
        m_application->init();
        m_window = std::make_unique<MainWindow>();
        m_window->init();
        showOnDesk(*m_window);
        while (!g_InputFrameReady)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    // From here on nothing happens but what the bench asks for.
    void standStill()
    {
        gst_EndVideoInputPipeline();
        for (QTimer *timer : m_window->findChildren<QTimer *>())
            timer->stop();
        QCoreApplication::processEvents();
    }

    ~BenchWindow() { gst_EndVideoInputPipeline(); }

    MainWindow &operator*() const { return *m_window; }
    MainWindow *operator->() const { return m_window.get(); }

private:
    TestUnit m_unit;
    std::unique_ptr<debounce> m_application;
    std::unique_ptr<MainWindow> m_window;
};
