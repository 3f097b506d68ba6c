// The real window on a simulated unit of its own, with a finger to touch it.
#pragma once

#include "testunit.h"

#include "app/unitapplication.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/dcim.h"
#include "storage/sdcard.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

class Screen
{
    // What a process keeps from the test before it.
    struct Forgotten
    {
        Forgotten()
        {
            params::resetForTests();
            resetBoardElementsForTests();
            g_InputFrameReady = false;
            g_SavedFSInfo = {};
            SDCardInfo = {};
        }
    };

public:
    // A finger on the glass: whatever lies on top there gets it.
    void touch(int x, int y)
    {
        QWidget *target = window.childAt(x, y);
        QTest::mouseClick(target, Qt::LeftButton, {}, target->mapFrom(&window, QPoint(x, y)));
    }

    // The card's state is asked for about a second after the start, and its folder takes another second.
    void waitForCard() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(params::getInstance()->getParams().MSDC_ModuleInstalled, 20000);
    }

    QPushButton *button(const char *name) const
    {
        return window.findChild<QPushButton *>(QString::fromLatin1(name));
    }

    QString logFile(const QString &extension) const
    {
        return inCurrentFolder(g_SavedFSInfo.currRootDirectory.section(QLatin1Char('/'), -1) + extension);
    }

    QString text(const char *label) const
    {
        return window.findChild<QLabel *>(QString::fromLatin1(label))->text();
    }

    // The lines of the event log without their times.
    QStringList events() const
    {
        QStringList lines;
        for (const QByteArray &line :
             folder.content(QStringLiteral("/home/root/tubix4_app/eventlog.csv")).split('\n'))
            lines << QString::fromUtf8(line).section(QLatin1Char(','), 1);
        return lines;
    }

    TestUnit folder;

private:
    Forgotten m_forgotten;
    RunningUnit m_running{*static_cast<UnitApplication *>(qApp)};

public:
    MainWindow &window = m_running.window;
};

// The body of a test program's main(): the application as the program has it.
template <typename Test> int runAppTest(int argc, char **argv)
{
    TestUnit folder;
    params::resetForTests();
    UnitApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
