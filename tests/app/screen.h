// The real window on a simulated unit of its own, with a finger to touch it.
#pragma once

#include "finger.h"
#include "testunit.h"

#include "app/unitapplication.h"
#include "media/boardelements.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/position.h"
#include "storage/sdcard.h"

#include <QLabel>
#include <QListWidget>

// Entries of a folder of the host: this process's threads, say.
inline qsizetype entriesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
}

class Screen
{
    // What a process keeps from the test before it.
    struct Forgotten
    {
        Forgotten()
        {
            Sleeper::setSecondForTests(1);
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
    void touch(QPoint place) { touch(place.x(), place.y()); }

    // The thumbnail number `index` of the page.
    void select(int index)
    {
        auto *list = find<QListWidget>("listW_ThumbnailViewer");
        QVERIFY(list->isVisible() && list->count() > index);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->item(index)).center());
    }

    // The checks of the next seconds, now: battery and USB host are looked at once among them.
    void passSeconds()
    {
        for (int i = 0; i < 16; ++i)
            window.systemCheck();
    }
    // The camera's picture is there as well.
    void waitForCard()
    {
        passSeconds();
        QTRY_VERIFY(settings().MSDC_ModuleInstalled);
        QVERIFY(pictureRuns());
    }
    void insertCard()
    {
        folder.control({QStringLiteral("card"), QStringLiteral("insert")});
        QTRY_VERIFY_WITH_TIMEOUT(settings().MSDC_ModuleInstalled, 20000);
    }
    void removeCard()
    {
        folder.control({QStringLiteral("card"), QStringLiteral("remove")});
        QTRY_VERIFY_WITH_TIMEOUT(!button("btn_menu_Capture")->isEnabled(), 20000);
    }
    void attachHost(bool attached = true)
    {
        folder.control({QStringLiteral("usb"), QString::fromLatin1(attached ? "attach" : "detach")});
        passSeconds();
    }

    void startFilm()
    {
        if (!settings().MSDC_ModuleInstalled)
            waitForCard();
        touch(40, 337); // video mode
        touch(40, 485);
    }
    void waitForFilmAt(const char *time) const
    {
        QTRY_COMPARE_WITH_TIMEOUT(text("lbl_VideoLengthIndicator"), QLatin1String(time), 30000);
    }

    static bool pictureRuns()
    {
        const int before = nBuffers;
        return QTest::qWaitFor([&] { return nBuffers > before + 3; }, 20000);
    }
    static int cropAtTop()
    {
        int top = -1;
        g_object_get(g_gst_Pipeline.videocrop, "top", &top, nullptr);
        return top;
    }
    // The picture that tells of a fault stands where the camera's was.
    bool shows(const char *graphic) const
    {
        const QImage told(QStringLiteral(":/MyGraphicResources/graphics/") + QLatin1String(graphic));
        const QImage shown = find<QLabel>("labelInputVideo")->grab().toImage();
        return shown.pixelColor(shown.rect().center()) == told.pixelColor(told.rect().center());
    }

    template <typename Widget> Widget *find(const char *name) const
    {
        return window.findChild<Widget *>(QString::fromLatin1(name));
    }
    QPushButton *button(const char *name) const { return find<QPushButton>(name); }
    bool isVisible(const char *name) const { return find<QWidget>(name)->isVisible(); }
    bool isTouchable(const char *name) const { return isVisible(name) && button(name)->isEnabled(); }
    QString text(const char *label) const { return find<QLabel>(label)->text(); }

    static _GlobalSystemSettings &settings() { return params::getInstance()->getParams(); }

    UnitPath logFile(const QString &extension) const
    {
        return inCurrentFolder(g_SavedFSInfo.currRootDirectory.name() + extension);
    }
    QByteArray log(const char *extension = ".txt") const
    {
        return folder.content(logFile(QLatin1String(extension)));
    }
    QByteArray commands() const { return folder.content(QStringLiteral("/var/log/commands")); }

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
