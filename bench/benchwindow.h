// The real window on a simulated unit of its own, for benches; off screen or not as the environment says.
#pragma once

#include "testunit.h"

#include "app/unitapplication.h"
#include "media/gst_videoinput.h"
#include "storage/position.h"

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
        // The simulated unit's weighs a folder, with four programs where a unit runs one.
        m_unit.put(u"/usr/bin/df"_unit,
                   "#!/bin/cat\n/dev/mmcblk1p1 7766016 120000 7646016 2% /media/mmcblk1p1\n");
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

    // Files and stored thumbnails, with the times that they have.
    bool copyIntoCurrentFolder(const QString &from) const
    {
        return QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), from + QStringLiteral("/."),
                                                        unit::path(g_SavedFSInfo.currRootDirectory)}) == 0;
    }

    const TestUnit &unit() const { return m_unit; }
    MainWindow &operator*() const { return m_running->window; }
    MainWindow *operator->() const { return &m_running->window; }

private:
    TestUnit m_unit;
    std::unique_ptr<UnitApplication> m_application;
    std::unique_ptr<RunningUnit> m_running;
};
