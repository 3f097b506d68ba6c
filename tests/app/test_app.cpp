// Live view on the real window: light, zoom, top bar, stills, films, and what ends them.
#include "app/screen.h"

#include <QFileInfo>
#include <QMetaMethod>
#include <QSignalSpy>

#include <array>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kBrightness = u"/sys/class/backlight/extledcontrol.27/brightness"_unit;

constexpr QPoint kZoomPlus(40, 189);

// The glass, as the kernel tells it: what is touched waits in a queue until the program takes it.
class Glass
{
public:
    // Before the application object.
    Glass()
    {
        const QByteArray device = m_folder.filePath(u"glass"_s).toUtf8();
        ::mkfifo(device.constData(), 0600);
        m_fd = ::open(device.constData(), O_RDWR | O_CLOEXEC);
        // Only what lies below /dev is taken for a device.
        qputenv("QT_QPA_GENERIC_PLUGINS", "evdevmouse:/dev/.." + device);
        send({{EV_REL, REL_X, 1}, {EV_SYN, SYN_REPORT, 0}}); // the first place of all is taken for no way
    }
    ~Glass() { ::close(m_fd); }
    Q_DISABLE_COPY_MOVE(Glass)

    void touch(const QPoint &at)
    {
        const QPoint way = at - std::exchange(m_last, at);
        send({{EV_REL, REL_X, way.x()},
              {EV_REL, REL_Y, way.y()},
              {EV_SYN, SYN_REPORT, 0},
              {EV_KEY, BTN_LEFT, 1},
              {EV_SYN, SYN_REPORT, 0},
              {EV_KEY, BTN_LEFT, 0},
              {EV_SYN, SYN_REPORT, 0}});
    }

private:
    void send(std::initializer_list<std::array<int, 3>> events) const
    {
        for (const auto &[type, code, value] : events) {
            input_event event = {};
            event.type = quint16(type);
            event.code = quint16(code);
            event.value = value;
            QCOMPARE(::write(m_fd, &event, sizeof event), ssize_t(sizeof event));
        }
    }

    const QTemporaryDir m_folder;
    int m_fd = -1;
    QPoint m_last;
};
Glass *g_glass = nullptr; // of main()

} // namespace

class TestApp : public HeardTest
{
    Q_OBJECT

private slots:
    void zoomIsLoggedAndStopsAtItsEnds()
    {
        Screen screen;
        for (int i = 0; i < 12; ++i)
            screen.touch(kZoomPlus);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"2.0x"_s);
        QCOMPARE(screen.events().count(u"8,Zoom plus button clicked - 10"_s), 1);
        QCOMPARE(screen.events().filter(u"8,Zoom"_s).size(), 10);
        QCOMPARE(Screen::cropAtTop(), 200);
        // While something else than plain live view is on, only the screen follows.
        screen.window.ChangeMainState(eStateLiveSavingMovie);
        screen.touch(40, 263);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"1.9x"_s);
        QCOMPARE(Screen::cropAtTop(), 200);
        QVERIFY(!screen.events().contains(u"9,Zoom minus button clicked - 9"_s));
    }

    void lightFollowsStepAndHead()
    {
        Screen screen;
        const auto light = [&] { return screen.folder.content(kBrightness); };
        QCOMPARE(light(), QByteArray("0"));
        screen.touch(40, 115); // minus at step 0
        QCOMPARE(screen.text("lbl_LEDLevel"), u"0/10"_s);
        for (int i = 0; i < 11; ++i)
            screen.touch(40, 41);
        QCOMPARE(screen.text("lbl_LEDLevel"), u"10/10"_s);
        QCOMPARE(light(), QByteArray("60"));
        QCOMPARE(screen.events().filter(u"22,LED"_s).size(), 10);
        for (const auto &[head, value] : {std::pair(eMinimodule_10m, "23"), {eNoImagerAttached, "0"}}) {
            Screen::settings().ImagerType = head;
            screen.touch(40, 115);
            QCOMPARE(light(), QByteArray(value));
        }
        QFile::remove(unit::path(kBrightness));
        screen.touch(40, 41);
        QCOMPARE(screen.text("lbl_LEDLevel"), u"ER"_s);
        QVERIFY(!exists(kBrightness));
    }

    void theTopBarFollowsTheBoard()
    {
        Screen screen;
        screen.folder.control({u"meter"_s, u"12.34"_s});
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"12.34 m"_s);
        Screen::settings().UnitofMeasure = eFeet;
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"40.49 ft"_s);
        screen.touch(80 + 440, 12); // the reading itself, in the top bar, zeroes it
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"0.00 ft"_s);
        Screen::settings().ReadRawEncoderValues = true;
        QTRY_VERIFY(screen.text("lbl_CableLength").endsWith(u" cnt"_s));
        screen.folder.control({u"battery"_s, u"lost"_s});
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"-!-"_s);
        const quint16 zero = params::getInstance()->getParams().MeterOffset;
        screen.touch(80 + 440, 12); // nobody knows where the cable stands
        QCOMPARE(params::getInstance()->getParams().MeterOffset, zero);
    }

    void aTouchLeavesAStillNobodyCanDispute()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"meter"_s, u"12.34"_s});
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"12.34 m"_s);
        for (const QString &name : {u"TUBX0001.jpg"_s, u"TUBX0002.jpg"_s}) {
            screen.touch(40, 485);
            QVERIFY(!screen.button("btn_menu_zoom_plus")->isEnabled()); // while it is shown
            QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
            QCOMPARE(QImage(unit::path(inCurrentFolder(name))).size(), QSize(720, 600));
            QVERIFY(screen.log(".html").contains("<a href=\"" + name.toUtf8()));
            QVERIFY(screen.log().contains("[+] " + name.toUtf8()));
        }
        QVERIFY(screen.log().startsWith("012.34  "));
        QCOMPARE(screen.events().count(u"4,Capture button clicked - save still"_s), 2);
        QVERIFY(QDir(unit::path(inCurrentFolder(u".thumbs"_s))).isEmpty());
    }

    void aFilmIsRecorded_data()
    {
        QTest::addColumn<int>("microphone");
        QTest::addColumn<QByteArray>("streams");
        QTest::newRow("with sound") << 1 << QByteArray("mjpeg,720,576,15/1\nmp3,0/0\n");
        QTest::newRow("without sound") << 0 << QByteArray("mjpeg,720,576,25/1\n");
    }
    void aFilmIsRecorded()
    {
        QFETCH(const int, microphone);
        Screen screen;
        screen.waitForCard();
        gst_EnableAudioRecording(microphone);
        screen.touch(kZoomPlus); // zoomed: the live picture has to come back as it was
        screen.startFilm();
        QVERIFY(!screen.button("btn_menu_Tools")->isEnabled());
        const HostPath film = unit::path(inCurrentFolder(u"TUBX0001.avi"_s));
        screen.waitForFilmAt("00:00:02");
        QTRY_VERIFY(QFileInfo(film).size() > 0);
        QVERIFY(!g_gst_Pipeline.videocrop);
        screen.touch(40, 485);
        QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
        QTEST(
            output(
                "ffprobe -v error -of csv=p=0 -show_entries stream=codec_name,width,height,avg_frame_rate %1",
                {film}),
            "streams");
        QCOMPARE(QImage(unit::path(inCurrentFolder(u".thumbs/TUBX0001.jpg"_s))).size(), QSize(128, 102));
        const qsizetype begin = screen.log().indexOf("|-- TUBX0001.avi");
        QVERIFY(begin >= 0 && begin < screen.log().indexOf("--| TUBX0001.avi"));
        QCOMPARE(Screen::cropAtTop(), 20);
        QVERIFY(Screen::pictureRuns());
    }

    void aStopDuringTheStartLeavesTheLivePicture()
    {
        Screen screen;
        screen.startFilm();
        screen.touch(40, 485);
        QVERIFY(g_gst_Pipeline.videocrop);
        QVERIFY(Screen::pictureRuns());
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
    }

    void noTouchOnABusyScreenCounts()
    {
        Screen screen;
        QVERIFY(QTest::qWaitForWindowExposed(&screen.window));
        screen.waitForCard();
        const auto touchWhileAtWork = [&] {
            g_glass->touch(screen.window.mapToGlobal(kZoomPlus));
            for (int i = 0; i < 10; ++i)
                screen.window.onBusyIndicator(i % 2);
        };
        touchWhileAtWork();
        screen.startFilm();
        const QString light = screen.text("lbl_LEDLevel");
        const auto isTaken = [&] { // a later touch, on a screen that stays
            g_glass->touch(screen.window.mapToGlobal(QPoint(40, 41)));
            return screen.text("lbl_LEDLevel") != light;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isTaken(), 20000);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"1.0x"_s);
    }

    void aFullCardIsToldAndTheLivePictureComesBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"card"_s, u"full"_s});
        QRect question;
        whenOpen([&](QDialog *box) {
            question = box->geometry();
            touchIn(box, u"btn_Cancel"_s);
        });
        screen.touch(40, 485);
        QCOMPARE(question, QRect(screen.window.mapToGlobal(QPoint(260, 205)), QSize(280, 190)));
        QVERIFY(QDir(unit::path(g_SavedFSInfo.currRootDirectory)).entryList({u"*.jpg"_s}).isEmpty());
        QVERIFY(Screen::pictureRuns());
    }

    // A dialog that stands would hide the picture, and nobody answers it any more.
    void anEmptyBatteryClosesEveryDialogAndEndsInThePowerOff()
    {
        Screen screen;
        screen.touch(40, 411);
        bool isClosed = false;
        whenOpen([&](QDialog *clock) {
            screen.folder.control({u"battery"_s, u"empty"_s});
            screen.passSeconds();
            isClosed = !clock->isVisible();
        });
        screen.touch(235, 124);
        QVERIFY(isClosed);
        QVERIFY(screen.shows("critical_battery_bg.png"));
        QVERIFY(!screen.commands().contains("poweroff"));
        QTRY_COMPARE_WITH_TIMEOUT(screen.commands().count("poweroff"), 1, 20000);
        QCOMPARE(screen.events().filter(u"2,Shutdown power switch pressed"_s).size(), 1);
    }

    void thePowerKeyActsOncePerPress()
    {
        Screen screen;
        QSignalSpy pressed(static_cast<debounce *>(qApp), &debounce::ProcessSystemShutdown);
        QVERIFY(QTest::qWaitForWindowExposed(&screen.window));
        for (const Qt::Key key : {Qt::Key_PowerOff, Qt::Key_A})
            QTest::sendKeyEvent(QTest::Click, screen.window.windowHandle(), key, QString(), Qt::NoModifier);
        QCOMPARE(pressed.size(), 1);
    }

    // Whoever connects by number finds what has always stood there.
    void signalsAndSlotsKeepTheirNumbers()
    {
        const QByteArray order =
            "initShutdownTimer resetAutoShutdownTimer BusyIndicator ProcessSystemShutdown SDCardRemoved "
            "onProcessSystemShutdown onClearPictureEditorButtons onBusyIndicator doNextFrame systemCheck "
            "setSystemDateTime popUpExpired shutdownTimerExpired genericDelayTimerExpired "
            "onRecordAudioTimerExpired onLogfileChanged onDirectoryChanged menu_CaptureModeSelect menu_Tools "
            "menu_BackButton menu_Capture menu_zoom_minus menu_Thumbnails menu_ThumbnailNext "
            "menu_ThumbnailPrevious menu_ThumbnailNextPage menu_ThumbnailPreviousPage menu_ThumbnailBack "
            "on_listW_ThumbnailViewer_clicked menu_ThumbnailVideoPlayPause menu_ThumbnailDeleteImage "
            "menu_ThumbnailDeleteAudio menu_LED_plus menu_LED_minus menu_ThumbnailFileRename menu_zoom_plus "
            "menu_FolderOptions menu_ThumbnailAnnotateRecordPlayPause DamageCatelog tools_SetDate "
            "tools_SetTime tools_DateTimeStamp menu_ThumbnailEditImage menu_ThumbnailImageEditBack "
            "menu_ThumbnailImageEditArrow menu_ThumbnailImageEditCircle menu_ThumbnailImageEditDeleteItem "
            "menu_ThumbnailImageEditSave tools_Auto_On_Off tools_LCD_Backlight tools_Set_Language "
            "tools_WiFI_Hotspot_On_Off tools_WiFI_Settings tools_Select_Camera_Type tools_Set_UnitofMeasure "
            "tools_Microphone_On_Off tools_Format_Media menu_ThumbnailImageEditText "
            "tools_Network_Streaming_On_Off tools_Reset_Meter_Counter tools_Reset_Damage_Catelog "
            "menu_ThumbnailImageEditColor tools_ExitApplication menu_UnmountMedia";
        const QMetaObject &meta = MainWindow::staticMetaObject;
        QByteArrayList names;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            QByteArray name = meta.method(i).name();
            if (name.startsWith("on_btn_") && name.endsWith("_clicked"))
                name = name.sliced(7, name.size() - 15);
            names << name;
        }
        QCOMPARE(names.join(' '), order);
    }
};

int main(int argc, char **argv)
{
    Glass glass;
    g_glass = &glass;
    return runAppTest<TestApp>(argc, argv);
}
#include "test_app.moc"
