#include "app/screen.h"

#include "app/graphics.h"
#include "hw/i2c.h"
#include "storage/sdcard.h"

#include <QDialog>
#include <QFileInfo>
#include <QProgressBar>
#include <QTextEdit>
#include <QTimer>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QString kSettingsFile = u"/home/root/tubix4_app/globlsystemsettings_default.xml"_s;
const QString kCommands = u"/var/log/commands"_s;

using Probe = std::function<QString(const Screen &)>;

void openTools(Screen &screen)
{
    screen.touch(40, 411);
}

void leaveTools(Screen &screen)
{
    screen.touch(40, 559);
}

// The first of the pictures that the button shows.
QString shownPicture(const Screen &screen, const char *button, const QStringList &names)
{
    const QImage shown = screen.button(button)->icon().pixmap(187, 64).toImage();
    for (const QString &name : names) {
        const QImage picture(graphic(name.toLatin1().constData()));
        if (picture.convertToFormat(shown.format()) == shown)
            return name;
    }
    return {};
}

QString onOff(const Screen &screen, const char *button, const QString &name)
{
    return shownPicture(screen, button, {name + u"_on.png"_s, name + u"_off.png"_s})
        .section(u'_', -1)
        .chopped(4);
}

// Does `answer` on the dialog that opens next, once it is on the screen.
void withDialog(Screen &screen, const std::function<void(QDialog *)> &answer)
{
    auto *waiting = new QTimer(&screen.window);
    const QWidget *now = QApplication::activeModalWidget();
    QObject::connect(waiting, &QTimer::timeout, &screen.window, [waiting, now, answer] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog || dialog == now)
            return;
        waiting->deleteLater();
        waiting->stop();
        answer(dialog);
    });
    waiting->start(20);
}

void press(const QDialog *dialog, const QString &button)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(button), Qt::LeftButton);
}

int algorithmRegister()
{
    return i2c_read(kEncoderBoardAddress, twiMeterCountAlgorithm);
}

} // namespace

class TestTools : public QObject
{
    Q_OBJECT

    Screen &sharedPage()
    {
        if (!m_sharedPage) {
            m_sharedPage = std::make_unique<Screen>();
            openTools(*m_sharedPage);
        }
        return *m_sharedPage;
    }

    std::unique_ptr<Screen> m_sharedPage;

private slots:
    // The touches go to the labels that lie over the buttons, where there are some. The rows share one
    // window: each steps a setting of its own.
    void aTouchStepsAppliesShowsLogsAndSaves_data();
    void aTouchStepsAppliesShowsLogsAndSaves()
    {
        QFETCH(const QPoint, at);
        QFETCH(const Probe, probe);
        QFETCH(const QStringList, seen);
        Screen &screen = sharedPage();
        const qsizetype before = screen.events().size() - 1;
        QStringList probed;
        for (qsizetype i = 0; i < seen.size(); ++i) {
            screen.touch(at.x(), at.y());
            probed << probe(screen);
        }
        QCOMPARE(probed, seen);
        QStringList logged = screen.events().mid(before);
        logged.removeAll(QString());
        QTEST(logged, "logged");
        QFETCH(const QByteArray, saved);
        QVERIFY(screen.folder.content(kSettingsFile).contains(saved));
        QVERIFY(!screen.window.findChild<QLabel *>(u"lbl_BusyIcon"_s)->isVisible());
    }
    void theSharedPageCloses() { m_sharedPage.reset(); } // before the next window

    void thePageTakesTheScreenAndGivesItBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 189);
        openTools(screen);
        QVERIFY(!g_gst_Pipeline.pipeline);
        for (const char *hidden :
             {"lbl_CableLength", "lbl_CableLengthIndicator", "labelInputVideo", "lbl_CurrentFilenameandPath"})
            QVERIFY2(!screen.window.findChild<QWidget *>(QString::fromLatin1(hidden))->isVisible(), hidden);
        QVERIFY(!screen.button("btn_menu_Capture")->isVisible());
        QVERIFY(!screen.button("btn_tools_Select_Camera_Type")->isVisible());
        // The exit button is whole, although the top bar lies over the page.
        for (const QPoint corner : {QPoint(768, 0), QPoint(799, 0), QPoint(768, 31), QPoint(799, 31)})
            QCOMPARE(screen.window.childAt(corner), screen.button("btn_tools_ExitApplication"));
        QCOMPARE(screen.text("lbl_menu_CurrentDate"), QDate::currentDate().toString(u"dd.MM.yyyy"_s));
        QVERIFY(screen.text("lbl_menu_SystemInfo").startsWith(u"FW: 4.0.0/6.1\nIP: 127.0.0.1\n"_s));
        leaveTools(screen);
        QVERIFY(screen.button("btn_menu_Capture")->isVisible());
        QVERIFY(!screen.button("btn_menu_BackButton")->isVisible());
        QVERIFY(screen.window.findChild<QLabel *>(u"lbl_CurrentFilenameandPath"_s)->isVisible());
        QCOMPARE(screen.window.findChild<QWidget *>(u"frm_TopBar"_s)->geometry(), QRect(80, 0, 720, 24));
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
        int top = 0;
        g_object_get(g_gst_Pipeline.videocrop, "top", &top, nullptr);
        QCOMPARE(top, 20);
        const QStringList events = screen.events();
        QVERIFY(events.indexOf(u"5,Enter tools menu"_s) < events.indexOf(u"6,Exit tools menu"_s));
        QVERIFY(events.contains(u"5,Enter tools menu"_s));
    }

    void aStreamStartsAndEndsWithThePage()
    {
        Screen screen;
        for (const bool streams : {true, false}) {
            openTools(screen);
            screen.touch(593, 124);
            leaveTools(screen);
            QCOMPARE(g_gst_Pipeline.videoStreamSink != nullptr, streams);
            const int before = nBuffers;
            QTRY_VERIFY(nBuffers > before + 3);
        }
    }

    void aLostCameraIsTriedAgainAfterThePage()
    {
        Screen screen;
        screen.waitForCard();
        QTRY_VERIFY(g_InputFrameReady);
        screen.folder.control({u"camera"_s, u"lost"_s});
        QTRY_VERIFY(!screen.button("btn_menu_Capture")->isEnabled());
        openTools(screen);
        screen.folder.control({u"camera"_s, u"back"_s});
        leaveTools(screen);
        const int before = nBuffers;
        QTRY_VERIFY(nBuffers > before + 3);
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
        QVERIFY(screen.button("btn_tools_Reset_Meter_Counter")->isEnabled());
    }

    void aUsbHostEndsThePage()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        screen.folder.control({u"usb"_s, u"attach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!screen.button("btn_menu_BackButton")->isVisible(), 15000);
        QVERIFY(screen.window.findChild<QLabel *>(u"labelInputVideo"_s)->isVisible());
        QCOMPARE(screen.window.findChild<QWidget *>(u"frm_TopBar"_s)->x(), 80);
        screen.folder.control({u"usb"_s, u"detach"_s});
        QTRY_VERIFY_WITH_TIMEOUT(screen.button("btn_menu_Capture")->isVisible(), 15000);
    }

    void theClockIsSetWithoutAHostOnTheCard()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        const qsizetype before = screen.folder.content(kCommands).size();
        withDialog(screen, [](QDialog *dialog) { press(dialog, u"btn_settime_confirm"_s); });
        screen.touch(235, 124);
        withDialog(screen, [](QDialog *dialog) { press(dialog, u"btn_setdate_confirm"_s); });
        screen.touch(235, 190);
        QStringList programs;
        for (const QByteArray &line : screen.folder.content(kCommands).mid(before).trimmed().split('\n'))
            programs << QString::fromUtf8(line).section(u' ', 1, 1);
        const QStringList expected = {u"rmmod"_s, u"date"_s, u"hwclock"_s, u"modprobe"_s};
        programs.removeAll(u"df"_s);
        QCOMPARE(programs, expected + expected);
        QCOMPARE(screen.events().count(u"34,Set time button clicked"_s), 1);
        QCOMPARE(screen.events().count(u"33,Set date button clicked"_s), 1);
    }

    void aChosenFolderTakesThePictures()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        withDialog(screen, [&](QDialog *explorer) {
            withDialog(screen, [&](QDialog *keyboard) {
                auto *field = keyboard->findChild<QTextEdit *>(u"textEdit"_s);
                field->setPlainText(u"Кирова 5 東"_s);
                QTest::keyClick(field, Qt::Key_Return);
            });
            press(explorer, u"btn_NewFolder"_s);
            press(explorer, u"btn_Confirm"_s);
        });
        screen.touch(401, 404);
        QCOMPARE(g_SavedFSInfo.currRootDirectory, kBaseFolder + u"/Кирова 5 東"_s);
        leaveTools(screen);
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath"), u"/100TUBIX/Кирова 5 東"_s.right(18));
        QVERIFY(screen.events().contains(u"41,Folder options button clicked"_s));
        screen.touch(40, 485);
        QVERIFY(QFileInfo::exists(unit::path(inCurrentFolder(u"TUBX0001.jpg"_s))));
        QVERIFY(screen.folder.content(screen.logFile(u".html"_s)).contains("TUBX0001.jpg"));
    }

    void aFormattedCardTakesPicturesAgain()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 485);
        QTRY_VERIFY(screen.button("btn_menu_Tools")->isEnabled());
        const QString still = inCurrentFolder(u"TUBX0001.jpg"_s);
        QTRY_VERIFY(screen.button("btn_menu_Tools")->parentWidget()->isEnabled());
        openTools(screen);
        withDialog(screen, [](QDialog *dialog) { press(dialog, u"btn_Cancel"_s); });
        screen.touch(150, 474);
        QVERIFY(QFileInfo::exists(unit::path(still)));
        QVERIFY(!screen.events().contains(u"45,Format media button clicked"_s));
        withDialog(screen, [](QDialog *dialog) { press(dialog, u"btn_Confirm"_s); });
        screen.touch(150, 474);
        QVERIFY(!QFileInfo::exists(unit::path(kBaseFolder)));
        QVERIFY(screen.events().contains(u"45,Format media button clicked"_s));
        leaveTools(screen);
        screen.touch(40, 485);
        QVERIFY(QFileInfo::exists(unit::path(still)));
        QVERIFY(screen.folder.content(screen.logFile(u".txt"_s)).contains("[+] TUBX0001.jpg"));
    }

    void aCardPulledUnderTheQuestionAnswersIt()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        withDialog(screen, [&](QDialog *) { screen.folder.control({u"card"_s, u"remove"_s}); });
        screen.touch(150, 474); // returns when the question is gone
        QVERIFY(!screen.events().contains(u"45,Format media button clicked"_s));
        QVERIFY(!params::getInstance()->getParams().MSDC_ModuleInstalled);
        QVERIFY(!screen.button("btn_tools_Format_Media")->isEnabled());
        QCOMPARE(screen.text("lbl_menu_Format_Media_Capacity"), u"----"_s);
    }

    void anUnmountedCardIsGone()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        screen.touch(593, 194);
        QVERIFY(screen.folder.content(kCommands).contains("umount /media/mmcblk1p1\n"));
        QVERIFY(!QFileInfo::exists(unit::path(kCardMountPoint)));
        QCOMPARE(screen.text("lbl_menu_Format_Media_Capacity"), u"----"_s);
        QVERIFY(!screen.button("btn_menu_UnmountMedia")->isEnabled());
        QVERIFY(screen.button("btn_menu_BackButton")->isVisible());
        QVERIFY(screen.events().contains(u"32,Unmount media button clicked"_s));
    }

    void aChangedCatalogComesBackFromTheFactory()
    {
        Screen screen;
        openTools(screen);
        const auto resetIn = [&](eLanguages language) {
            params::getInstance()->getParams().LanguageIdx = language;
            const QString file = damageCatelogFile(languageAbbreviation(language));
            const QByteArray factory = screen.folder.content(file);
            screen.folder.put(file, "mine\n");
            bool asked = false;
            withDialog(screen, [&](QDialog *dialog) {
                asked = true;
                press(dialog, u"btn_Confirm"_s);
            });
            screen.touch(401, 474);
            return asked && screen.folder.content(file) == factory;
        };
        QVERIFY(resetIn(eSwedish));
        QVERIFY(!resetIn(eTurkish));
        QCOMPARE(screen.events().filter(u"47,"_s), // the question alone is no event
                 QStringList{u"47,Reset damage catalog button clicked - Swedish"_s});
    }

    void theHeadIsChosenWhereAModuleIsPresent()
    {
        Screen screen;
        _GlobalSystemSettings &settings = params::getInstance()->getParams();
        settings.MiniModulePresent = true;
        settings.HWImagerConfiguration = e30meter;
        openTools(screen);
        settings.ImagerType = e60meter;
        screen.touch(600, 325);
        QCOMPARE(screen.text("lbl_menu_Camera_Type_lineOne"), u"10m"_s);
        QCOMPARE(screen.text("lbl_menu_Camera_Type_lineTwo"), u"30m"_s);
        QCOMPARE(algorithmRegister(), 0);
        settings.ImagerType = eMinimodule_10m;
        screen.touch(600, 325);
        QCOMPARE(algorithmRegister(), 2);
        settings.HWImagerConfiguration = e60meter;
        settings.ImagerType = eNoImagerAttached;
        screen.touch(600, 325);
        QCOMPARE(algorithmRegister(), 1);
        QCOMPARE(screen.events().filter(u"42,Select camera type button clicked - "_s),
                 (QStringList{u"42,Select camera type button clicked - Minimodule 10m"_s,
                              u"42,Select camera type button clicked - 30m"_s,
                              u"42,Select camera type button clicked - 60m"_s}));
    }

    void theHeadFileIsAskedForOnceAndOnceMore()
    {
        Screen screen;
        const QString file = u"/home/root/tubix4_app/systemimagerconfiguration.txt"_s;
        QVERIFY(QFile::remove(unit::path(file)));
        withDialog(screen, [](QDialog *dialog) {
            dialog->findChild<QAbstractButton *>(u"radioButton_30m"_s)->click();
            dialog->findChild<QAbstractButton *>(u"checkBox_MiniModule"_s)->click();
            press(dialog, u"pushButton"_s);
        });
        QCOMPARE(screen.window.ReadSystemImagerConfigurationFile(), 0);
        QCOMPARE(screen.folder.content(file), QByteArray("ImagerConfiguration, 30\nMiniModulePresent, 1\n"));
        QCOMPARE(params::getInstance()->getParams().HWImagerConfiguration, e30meter);
        QVERIFY(params::getInstance()->getParams().MiniModulePresent);
        // A file that can neither be read nor written ends after two dialogs.
        QVERIFY(QFile::remove(unit::path(file)));
        QVERIFY(QDir().mkpath(unit::path(file)));
        QVERIFY(QDir().mkpath(unit::path(kDcimFolder)));
        screen.folder.put(kDcimFolder + u"/__IMAGERCONFIG__"_s, QByteArray());
        int dialogs = 0;
        std::function<void(QDialog *)> close = [&](QDialog *dialog) {
            press(dialog, u"pushButton"_s);
            dialogs += dialog->isVisible(); // what could not be saved stays on the screen
            dialog->close();
            withDialog(screen, close);
        };
        withDialog(screen, close);
        QCOMPARE(screen.window.ReadSystemImagerConfigurationFile(), 0);
        QCOMPARE(dialogs, 2);
        QCOMPARE(params::getInstance()->getParams().HWImagerConfiguration, e30meter);
    }

    void theUnitGoesOffAfterItsMinutesUnlessTouched()
    {
        Screen screen;
        auto *application = static_cast<debounce *>(qApp);
        connect(&screen.window, &MainWindow::resetAutoShutdownTimer, application,
                &debounce::onresetAutoShutdownTimer);
        const auto timers = application->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QTimer *timer = timers.first();
        openTools(screen);
        application->init(); // on this unit's settings
        for (const int minutes : {10, 0, 30}) {
            screen.touch(240, 334);
            QCOMPARE(timer->isActive(), minutes != 0);
            if (minutes)
                QCOMPARE(timer->interval(), minutes * 60000);
        }
        // The clock runs down to 2 s; a touch gives the whole time again.
        timer->setInterval(2000);
        QTest::mouseClick(screen.window.windowHandle(), Qt::LeftButton, {}, QPoint(700, 400));
        QVERIFY(timer->remainingTime() > 29 * 60000);
        timer->setInterval(1);
        QTRY_VERIFY(screen.folder.content(kCommands).contains("poweroff"));
        timer->stop();
        QVERIFY(screen.events().contains(u"3,Shutdown timer expired"_s));
    }
};

void TestTools::aTouchStepsAppliesShowsLogsAndSaves_data()
{
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<Probe>("probe"); // after each touch
    QTest::addColumn<QStringList>("seen");
    QTest::addColumn<QStringList>("logged");
    QTest::addColumn<QByteArray>("saved"); // at the end
    const auto lines = [](const QString &text, const QStringList &values) {
        QStringList all;
        for (const QString &value : values)
            all << text + value;
        return all;
    };
    QTest::newRow("stamp") << QPoint(209, 264) << Probe([](const Screen &screen) {
        return onOff(screen, "btn_tools_DateTimeStamp", u"btn_tools_timedatestamp"_s) +
               QString::number(g_gst_bTimeDateState);
    }) << QStringList{u"off0"_s, u"on1"_s, u"off0"_s}
                           << lines(u"35,Date Time Stamp button clicked - "_s, {u"OFF"_s, u"ON"_s, u"OFF"_s})
                           << QByteArray("<bDateTimeStamp>0<");
    QTest::newRow("microphone") << QPoint(401, 334) << Probe([](const Screen &screen) {
        return onOff(screen, "btn_tools_Microphone_On_Off", u"btn_tools_microphone"_s) +
               QString::number(g_gst_MicrophoneActive);
    }) << QStringList{u"off0"_s, u"on1"_s, u"off0"_s}
                                << lines(u"44,Microphone on/off button clicked - "_s,
                                         {u"OFF"_s, u"ON"_s, u"OFF"_s})
                                << QByteArray("<bMicrophoneActive>0<");
    QTest::newRow("unit of measure") << QPoint(410, 255) << Probe([](const Screen &screen) {
        return screen.text("lbl_menu_UnitofMeasure_lineOne") + screen.text("lbl_menu_UnitofMeasure_lineTwo");
    }) << QStringList{u"ftm"_s, u"mft"_s, u"ftm"_s}
                                     << lines(u"43,Set unit of measure button clicked - "_s,
                                              {u"feet"_s, u"meter"_s, u"feet"_s})
                                     << QByteArray("<UnitofMeasure>1<");
    QTest::newRow("auto off") << QPoint(240, 334) << Probe([](const Screen &screen) {
        return screen.text("lbl_menu_AutoOff_lineOne") + u'/' + screen.text("lbl_menu_AutoOff_lineTwo") +
               u'/' + screen.text("lbl_menu_AutoOff_lineThree");
    })
                              << QStringList{u"20 min/10 min/0 min"_s, u"10 min/0 min/30 min"_s,
                                             u"0 min/30 min/20 min"_s, u"30 min/20 min/10 min"_s,
                                             u"20 min/10 min/0 min"_s}
                              << lines(u"36,Auto on/off button clicked - "_s,
                                       {u"10"_s, u"0"_s, u"30"_s, u"20"_s, u"10"_s})
                              << QByteArray("<AutoShutdownIdx>1<");
    const QStringList levels = {u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"2"_s, u"3"_s};
    QTest::newRow("backlight") << QPoint(240, 404) << Probe([](const Screen &screen) {
        const QByteArray level =
            screen.folder.content(u"/sys/class/backlight/backlight_lcdgrp.26/brightness"_s);
        const auto *bar = screen.window.findChild<QProgressBar *>(u"pb_menu_LCD_Backlight"_s);
        return bar->value() == level.toInt() ? QString::fromLatin1(level) : QString();
    }) << levels << lines(u"37,LCD backlight button clicked - "_s, levels)
                               << QByteArray("<LCDBacklightValue>3<");
    QStringList languages;
    for (int language = eGerman; language <= eTheEnd; ++language)
        languages << languageAbbreviation(static_cast<eLanguages>(language % eTheEnd));
    QTest::newRow("language") << QPoint(401, 194) << Probe([](const Screen &screen) {
        const _GlobalSystemSettings &settings = params::getInstance()->getParams();
        const QString name = settings.LanguageAbbreviation;
        const bool shown =
            !shownPicture(screen, "btn_tools_Set_Language", {u"btn_tools_lang_%1.png"_s.arg(name)})
                 .isEmpty() &&
            settings.keyboardMap_filename.contains(u"_%1."_s.arg(name));
        return shown ? name : QString();
    }) << languages << lines(u"38,Set language button clicked language = "_s, languages)
                              << QByteArray("<LanguageIdx>0<");
    QTest::newRow("streaming") << QPoint(593, 124) << Probe([](const Screen &screen) {
        return onOff(screen, "btn_tools_Network_Streaming_On_Off", u"btn_tools_networkstreaming"_s) +
               (g_gst_VideoPipelineMode == eGSTStateStreaming ? u"1"_s : u"0"_s);
    }) << QStringList{u"on1"_s, u"off0"_s}
                               << lines(u"40,Network_Streaming on/off button clicked - "_s,
                                        {u"ON"_s, u"OFF"_s})
                               << QByteArray();
    QTest::newRow("hotspot") << QPoint(401, 124) << Probe([](const Screen &screen) {
        const auto &settings = params::getInstance()->getParams();
        return onOff(screen, "btn_tools_WiFI_Hotspot_On_Off", u"btn_tools_wifi_hotspot"_s) +
               settings.WIFIConnectedSSID;
    }) << QStringList{u"offWorkshop"_s, u"on"_s, u"offWorkshop"_s}
                             << lines(u"39,WiFI hotspot on/off button clicked - "_s,
                                      {u"OFF"_s, u"ON"_s, u"OFF"_s})
                             << QByteArray("<bWIFIHotSpotActive>0<");
}

int main(int argc, char **argv)
{
    return runAppTest<TestTools>(argc, argv);
}
#include "test_tools.moc"
