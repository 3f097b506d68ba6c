#include "app/screen.h"

#include "app/debounce.h"
#include "media/gst_videoinput.h"
#include "settings/params.h"
#include "storage/dcim.h"

#include <QDialog>
#include <QDirIterator>
#include <QFileInfo>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QString kBrightness = u"/sys/class/backlight/extledcontrol.27/brightness"_s;

// Codec, size and rate of each stream, by a tool that is not ours.
QByteArray probe(const QString &film)
{
    QProcess tool;
    tool.start(u"ffprobe"_s,
               {u"-v"_s, u"error"_s, u"-show_entries"_s, u"stream=codec_name,width,height,avg_frame_rate"_s,
                u"-of"_s, u"csv=p=0"_s, unit::path(film)});
    tool.waitForFinished();
    return tool.readAllStandardOutput();
}

QColor middle(const QImage &picture)
{
    return picture.pixelColor(picture.rect().center());
}

} // namespace

class TestApp : public QObject
{
    Q_OBJECT

private slots:
    void zoomIsLoggedAndStopsAtItsEnds()
    {
        Screen screen;
        for (int i = 0; i < 12; ++i)
            screen.touch(40, 189);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"2.0x"_s);
        QCOMPARE(screen.events().count(u"8,Zoom plus button clicked - 10"_s), 1);
        QCOMPARE(screen.events().filter(u"8,Zoom"_s).size(), 10);
        int top = 0;
        g_object_get(g_gst_Pipeline.videocrop, "top", &top, nullptr);
        QCOMPARE(top, 200);
        // While something else than plain live view is on, only the screen follows.
        screen.window.ChangeMainState(eStateLiveSavingMovie);
        screen.touch(40, 263);
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"1.9x"_s);
        g_object_get(g_gst_Pipeline.videocrop, "top", &top, nullptr);
        QCOMPARE(top, 200);
        QVERIFY(!screen.events().contains(u"9,Zoom minus button clicked - 9"_s));
    }

    void lightFollowsStepAndHead()
    {
        Screen screen;
        QCOMPARE(screen.folder.content(kBrightness), QByteArray("0"));
        screen.touch(40, 115); // minus at step 0
        QCOMPARE(screen.text("lbl_LEDLevel"), u"0/10"_s);
        for (int i = 0; i < 11; ++i)
            screen.touch(40, 41);
        QCOMPARE(screen.text("lbl_LEDLevel"), u"10/10"_s);
        QCOMPARE(screen.folder.content(kBrightness), QByteArray("60"));
        QCOMPARE(screen.events().filter(u"22,LED"_s).size(), 10);
        params::getInstance()->getParams().ImagerType = eMinimodule_10m;
        screen.touch(40, 115);
        QCOMPARE(screen.folder.content(kBrightness), QByteArray("23"));
        params::getInstance()->getParams().ImagerType = eNoImagerAttached;
        screen.touch(40, 115);
        QCOMPARE(screen.folder.content(kBrightness), QByteArray("0"));
        QFile::remove(unit::path(kBrightness));
        screen.touch(40, 41);
        QCOMPARE(screen.text("lbl_LEDLevel"), u"ER"_s);
        QVERIFY(!QFileInfo::exists(unit::path(kBrightness)));
    }

    void theTopBarFollowsTheBoard()
    {
        Screen screen;
        screen.folder.control({u"meter"_s, u"12.34"_s});
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"12.34 m"_s);
        params::getInstance()->getParams().UnitofMeasure = eFeet;
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"40.49 ft"_s);
        screen.touch(80 + 440, 12); // the reading itself, in the top bar, zeroes it
        QTRY_COMPARE(screen.text("lbl_CableLength"), u"0.00 ft"_s);
        params::getInstance()->getParams().ReadRawEncoderValues = true;
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
        screen.touch(40, 485);
        QVERIFY(!screen.button("btn_menu_zoom_plus")->isEnabled()); // while it is shown
        QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
        screen.touch(40, 485);
        QTRY_VERIFY(screen.button("btn_menu_zoom_plus")->isEnabled());
        for (const QString &name : {u"TUBX0001.jpg"_s, u"TUBX0002.jpg"_s}) {
            QCOMPARE(QImage(unit::path(inCurrentFolder(name))).size(), QSize(720, 600));
            QVERIFY(screen.folder.content(screen.logFile(u".html"_s)).contains("<a href=\"" + name.toUtf8()));
            QVERIFY(screen.folder.content(screen.logFile(u".txt"_s)).contains("[+] " + name.toUtf8()));
        }
        QVERIFY(screen.folder.content(screen.logFile(u".txt"_s)).startsWith("012.34  "));
        QCOMPARE(screen.events().count(u"4,Capture button clicked - save still"_s), 2);
        QVERIFY(QDir(unit::path(inCurrentFolder(u".thumbs"_s))).isEmpty());
    }

    void aCardComesAndGoes()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isEnabled(), 15000);
        QVERIFY(!params::getInstance()->getParams().MSDC_ModuleInstalled);
        screen.folder.control({u"card"_s, u"insert"_s});
        QTRY_VERIFY(screen.button("btn_menu_Capture")->isEnabled());
        QTRY_VERIFY(params::getInstance()->getParams().MSDC_ModuleInstalled);
        const QByteArray commands = screen.folder.content(u"/var/log/commands"_s);
        QVERIFY(commands.contains("modprobe g_mass_storage file=/dev/mmcblk1p1 removable=y"));
        QVERIFY(commands.contains("rmmod g_mass_storage"));
    }

    void aUsbHostTakesTheScreenAndGivesItBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"usb"_s, u"attach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_Capture")->isVisible(), 15000); // asked every 3.2 s
        QTRY_VERIFY(!g_gst_Pipeline.pipeline);
        screen.folder.control({u"usb"_s, u"detach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(screen.button("btn_menu_Capture")->isVisible(), 15000);
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
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
        screen.touch(40, 189); // zoomed: the live picture has to come back as it was
        screen.touch(40, 337); // video mode
        screen.touch(40, 485);
        QVERIFY(!screen.button("btn_menu_Tools")->isEnabled());
        const QString film = inCurrentFolder(u"TUBX0001.avi"_s);
        QTRY_COMPARE(screen.text("lbl_VideoLengthIndicator"), u"00:00:02"_s);
        QTRY_VERIFY(QFileInfo(unit::path(film)).size() > 0);
        QVERIFY(!g_gst_Pipeline.videocrop);
        screen.touch(40, 485);
        QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
        QTEST(probe(film), "streams");
        QCOMPARE(QImage(unit::path(inCurrentFolder(u".thumbs/TUBX0001.jpg"_s))).size(), QSize(128, 102));
        const QByteArray log = screen.folder.content(screen.logFile(u".txt"_s));
        QVERIFY(log.indexOf("|-- TUBX0001.avi") < log.indexOf("--| TUBX0001.avi"));
        QVERIFY(log.contains("--| TUBX0001.avi"));
        int top = 0;
        g_object_get(g_gst_Pipeline.videocrop, "top", &top, nullptr);
        QCOMPARE(top, 20);
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
    }

    void aStopDuringTheStartLeavesTheLivePicture()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        screen.touch(40, 485);
        screen.touch(40, 485);
        QVERIFY(g_gst_Pipeline.videocrop);
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
    }

    void aCardPulledFromAFilmEndsItAndTheLivePictureComesBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 337);
        screen.touch(40, 485);
        QTRY_VERIFY(g_gst_Pipeline.videosavesink);
        bool told = false;
        QTimer closer;
        connect(&closer, &QTimer::timeout, &screen.window, [&] {
            if (auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                told = true;
                box->close();
            }
        });
        closer.start(100);
        screen.folder.control({u"card"_s, u"remove"_s});
        QTRY_VERIFY_WITH_TIMEOUT(told, 15000);
        QTRY_VERIFY(g_gst_Pipeline.videocrop);
        QVERIFY(!screen.button("btn_menu_Capture")->isEnabled());
        QVERIFY(screen.button("btn_menu_Tools")->isEnabled());
        QVERIFY(!QFileInfo::exists(unit::path(kDcimFolder)));
    }

    void aFullCardIsToldAndTheLivePictureComesBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.folder.control({u"card"_s, u"full"_s});
        bool asked = false;
        QTimer::singleShot(300, &screen.window, [&] {
            auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            asked =
                box && box->geometry() == QRect(screen.window.mapToGlobal(QPoint(260, 205)), QSize(280, 190));
            if (box)
                QTest::mouseClick(box->findChild<QPushButton *>(u"btn_Cancel"_s), Qt::LeftButton);
        });
        screen.touch(40, 485);
        QVERIFY(asked);
        QVERIFY(QDir(unit::path(g_SavedFSInfo.currRootDirectory)).entryList({u"*.jpg"_s}).isEmpty());
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
    }

    void anEmptyBatteryEndsInTheUnitsPowerOff()
    {
        Screen screen;
        screen.folder.control({u"battery"_s, u"empty"_s});
        const QImage critical(u":/MyGraphicResources/graphics/critical_battery_bg.png"_s);
        auto *label = screen.window.findChild<QLabel *>(u"labelInputVideo"_s);
        QTRY_COMPARE_WITH_TIMEOUT(middle(label->grab().toImage()), middle(critical), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(screen.folder.content(u"/var/log/commands"_s).contains("poweroff"), 20000);
        QCOMPARE(screen.events().filter(u"2,Shutdown power switch pressed"_s).size(), 1);
    }

    void aLostCameraIsShownNotDrawn()
    {
        Screen screen;
        auto *label = screen.window.findChild<QLabel *>(u"labelInputVideo"_s);
        QTRY_VERIFY(g_InputFrameReady);
        screen.folder.control({u"camera"_s, u"lost"_s});
        QTRY_COMPARE(g_gst_VideoPipelineMode, eGSTStateError);
        const QImage critical(u":/MyGraphicResources/graphics/critical_system_error_bg.png"_s);
        QTRY_COMPARE(middle(label->grab().toImage()), middle(critical));
        QVERIFY(!screen.button("btn_tools_Reset_Meter_Counter")->isEnabled());
        screen.touch(40, 189); // what is left of the screen still lives
        QCOMPARE(screen.text("lbl_ZoomLevel"), u"1.1x"_s);
        g_gst_VideoPipelineMode = eGSTStateLiveVideo;
    }

    void thePowerKeyActsOncePerPress()
    {
        Screen screen;
        auto *application = static_cast<debounce *>(qApp);
        QSignalSpy pressed(application, &debounce::ProcessSystemShutdown);
        QVERIFY(QTest::qWaitForWindowExposed(&screen.window));
        for (const Qt::Key key : {Qt::Key_PowerOff, Qt::Key_A})
            QTest::sendKeyEvent(QTest::Click, screen.window.windowHandle(), key, QString(), Qt::NoModifier);
        QCOMPARE(pressed.size(), 1);
    }

    void picturesAndTheirNamesInCodeAndFormsAgree()
    {
        const QRegularExpression name(u"\\b\\w+\\.png\\b"_s);
        const QRegularExpression family(u"graphic\\(\"(\\w+)\"\\)"_s);
        QSet<QString> named;
        QStringList families; // "btn_tools_lang_": the code puts the rest
        QDirIterator files(QStringLiteral(TUBIX_SOURCE_DIR "/src"), {u"*.cpp"_s, u"*.ui"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString content = QString::fromUtf8(file.readAll());
            for (auto match = name.globalMatch(content); match.hasNext();)
                named << match.next().captured();
            for (auto match = family.globalMatch(content); match.hasNext();)
                families << match.next().captured(1);
        }
        const QStringList graphics = QDir(u":/MyGraphicResources/graphics"_s).entryList();
        const QStringList assets = QDir(u":/html_assets/html_assets"_s).entryList();
        for (const QString &picture : std::as_const(named))
            QVERIFY2(graphics.contains(picture) || assets.contains(picture), qPrintable(picture));
        for (const QString &picture : graphics) {
            const bool inFamily = std::any_of(families.begin(), families.end(), [&](const QString &begin) {
                return picture.startsWith(begin);
            });
            QVERIFY2(named.contains(picture) || inFamily, qPrintable(picture + u" is named nowhere"_s));
        }
    }

    void aSignalEndsTheProgramInOrder_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
    }
    void aSignalEndsTheProgramInOrder()
    {
        QFETCH(const int, signal);
        const TestUnit folder;
        QProcess program;
        program.start(QStringLiteral(TUBIX_BINARY), {u"--root"_s, unit::root()});
        QVERIFY(program.waitForStarted());
        QByteArray output;
        QTRY_VERIFY_WITH_TIMEOUT((output += program.readAllStandardOutput()).contains("\nready:") ||
                                     output.startsWith("ready:"),
                                 20000);
        QVERIFY(QFileInfo::exists(unit::path(u"/run/tubix4.pid"_s)));
        ::kill(pid_t(program.processId()), signal);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!QFileInfo::exists(unit::path(u"/run/tubix4.pid"_s)));
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

    void wrongUseIsOneLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown option") << QStringList{u"--bogus"_s};
        QTest::newRow("no unit there") << QStringList{u"--root"_s, u"/nowhere"_s};
        QTest::newRow("no unit on this machine") << QStringList();
    }
    void wrongUseIsOneLine()
    {
        QFETCH(const QStringList, arguments);
        QProcess program;
        program.start(QStringLiteral(TUBIX_BINARY), arguments);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 2);
        QCOMPARE(program.readAllStandardError().count('\n'), 1);
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestApp>(argc, argv);
}
#include "test_app.moc"
