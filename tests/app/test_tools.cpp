#include "app/screen.h"

#include "app/graphics.h"
#include "hw/i2c.h"
#include "storage/sdcard.h"

#include <QProgressBar>
#include <QRegularExpression>
#include <QTextEdit>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kSettingsFile = u"/home/root/tubix4_app/globlsystemsettings_default.xml"_unit;

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

} // namespace

class TestTools : public HeardTest
{
    Q_OBJECT

private slots:
    // The touches go to the labels that lie over the buttons, where there are some.
    void aTouchStepsAppliesShowsLogsAndSaves()
    {
        Screen screen;
        openTools(screen);
        const auto steps = [&](QPoint at, const QString &event, const QString &values,
                               const QByteArray &saved, const QString &expected, auto probe) {
            QStringList logged = screen.events();
            QStringList shown;
            for (const QString &value : values.split(u' ')) {
                logged.insert(logged.size() - 1, event + value);
                screen.touch(at);
                shown << probe();
            }
            QCOMPARE(shown, expected.split(u' '));
            QCOMPARE(screen.events(), logged);
            QVERIFY(screen.folder.content(kSettingsFile).contains(saved));
            QVERIFY(!screen.isVisible("lbl_BusyIcon"));
        };
        QStringList languages;
        for (int language = eGerman; language <= eTheEnd; ++language)
            languages << languageAbbreviation(static_cast<eLanguages>(language % eTheEnd));
        const QString levels = u"2 3 4 5 6 7 2 3"_s;
        const _GlobalSystemSettings &settings = Screen::settings();
        steps({209, 264}, u"35,Date Time Stamp button clicked - "_s, u"OFF ON OFF"_s, "<bDateTimeStamp>0<",
              u"off0 on1 off0"_s, [&] {
                  return onOff(screen, "btn_tools_DateTimeStamp", u"btn_tools_timedatestamp"_s) +
                         QString::number(g_gst_bTimeDateState);
              });
        steps({401, 334}, u"44,Microphone on/off button clicked - "_s, u"OFF ON OFF"_s,
              "<bMicrophoneActive>0<", u"off0 on1 off0"_s, [&] {
                  return onOff(screen, "btn_tools_Microphone_On_Off", u"btn_tools_microphone"_s) +
                         QString::number(g_gst_MicrophoneActive);
              });
        steps({410, 255}, u"43,Set unit of measure button clicked - "_s, u"feet meter feet"_s,
              "<UnitofMeasure>1<", u"ftm mft ftm"_s, [&] {
                  return screen.text("lbl_menu_UnitofMeasure_lineOne") +
                         screen.text("lbl_menu_UnitofMeasure_lineTwo");
              });
        steps({240, 334}, u"36,Auto on/off button clicked - "_s, u"10 0 30 20 10"_s, "<AutoShutdownIdx>1<",
              u"20 10 0 30 20"_s,
              [&] { return screen.text("lbl_menu_AutoOff_lineOne").section(u' ', 0, 0); });
        steps({240, 404}, u"37,LCD backlight button clicked - "_s, levels, "<LCDBacklightValue>3<", levels,
              [&] {
                  const QByteArray level =
                      screen.folder.content(u"/sys/class/backlight/backlight_lcdgrp.26/brightness"_s);
                  const bool shown =
                      screen.find<QProgressBar>("pb_menu_LCD_Backlight")->value() == level.toInt();
                  return shown ? QString::fromLatin1(level) : QString();
              });
        steps({401, 194}, u"38,Set language button clicked language = "_s, languages.join(u' '),
              "<LanguageIdx>0<", languages.join(u' '), [&] {
                  const QString name = settings.LanguageAbbreviation;
                  const QString picture = u"btn_tools_lang_%1.png"_s.arg(name);
                  const bool shown = !shownPicture(screen, "btn_tools_Set_Language", {picture}).isEmpty() &&
                                     settings.keyboardMap_filename.contains(u"_%1."_s.arg(name));
                  return shown ? name : QString();
              });
        steps({593, 124}, u"40,Network_Streaming on/off button clicked - "_s, u"ON OFF"_s, {}, u"on1 off0"_s,
              [&] {
                  return onOff(screen, "btn_tools_Network_Streaming_On_Off",
                               u"btn_tools_networkstreaming"_s) +
                         QString::number(g_gst_VideoPipelineMode == eGSTStateStreaming);
              });
        steps({401, 124}, u"39,WiFI hotspot on/off button clicked - "_s, u"OFF ON OFF"_s,
              "<bWIFIHotSpotActive>0<", u"offWorkshop on offWorkshop"_s, [&] {
                  return onOff(screen, "btn_tools_WiFI_Hotspot_On_Off", u"btn_tools_wifi_hotspot"_s) +
                         settings.WIFIConnectedSSID;
              });
    }

    void thePageTakesTheScreenAndGivesItBack()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 189);
        openTools(screen);
        QVERIFY(!g_gst_Pipeline.pipeline);
        for (const char *hidden :
             {"lbl_CableLength", "lbl_CableLengthIndicator", "labelInputVideo", "lbl_CurrentFilenameandPath",
              "btn_menu_Capture", "btn_tools_Select_Camera_Type"})
            QVERIFY2(!screen.isVisible(hidden), hidden);
        // The exit button is whole, although the top bar lies over the page.
        for (const QPoint corner : {QPoint(768, 0), QPoint(799, 0), QPoint(768, 31), QPoint(799, 31)})
            QCOMPARE(screen.window.childAt(corner), screen.button("btn_tools_ExitApplication"));
        QCOMPARE(screen.text("lbl_menu_CurrentDate"), QDate::currentDate().toString(u"dd.MM.yyyy"_s));
        QVERIFY(screen.text("lbl_menu_SystemInfo").startsWith(u"FW: 4.0.0/6.1\nIP: 127.0.0.1\n"_s));
        leaveTools(screen);
        QVERIFY(screen.isVisible("btn_menu_Capture") && !screen.isVisible("btn_menu_BackButton"));
        QVERIFY(screen.isVisible("lbl_CurrentFilenameandPath"));
        QCOMPARE(screen.find<QWidget>("frm_TopBar")->geometry(), QRect(80, 0, 720, 24));
        QVERIFY(Screen::pictureRuns());
        QCOMPARE(Screen::cropAtTop(), 20);
        QCOMPARE(screen.events().filter(QRegularExpression(u"^[56],"_s)),
                 (QStringList{u"5,Enter tools menu"_s, u"6,Exit tools menu"_s}));
    }

    void theClockIsSetWithoutAHostOnTheCard()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        const qsizetype before = screen.commands().size();
        whenOpen([](QDialog *dialog) { touchIn(dialog, u"btn_settime_confirm"_s); });
        screen.touch(235, 124);
        whenOpen([](QDialog *dialog) { touchIn(dialog, u"btn_setdate_confirm"_s); });
        screen.touch(235, 190);
        // Free of the host, both clocks, to the host again: the time, then the date.
        QStringList said = QString::fromUtf8(screen.commands().mid(before)).split(u'\n').filter(u" "_s);
        said.removeIf([](const QString &line) { return line.contains(u" df"_s); });
        const QRegularExpression expected(
            u"^\\S+ rmmod \\S+\n\\S+ date \\+%T --s=[-\\d]{10} [:\\d]{8}\n\\S+ hwclock --systohc\n\\S+ "
            u"modprobe .*\n"
            "\\S+ rmmod \\S+\n\\S+ date \\+%F --s=[-\\d]{10} [:\\d]{8}\n\\S+ hwclock --systohc\n\\S+ modprobe .*$"_s);
        QVERIFY2(expected.match(said.join(u'\n')).hasMatch(), qPrintable(said.join(u'\n')));
        for (const QString &event : {u"34,Set time button clicked"_s, u"33,Set date button clicked"_s})
            QCOMPARE(screen.events().count(event), 1);
    }

    void aChosenFolderTakesThePictures()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        whenOpen([](QDialog *explorer) {
            whenOpen([](QDialog *keyboard) {
                auto *field = keyboard->findChild<QTextEdit *>(u"textEdit"_s);
                field->setPlainText(u"Кирова 5 東"_s);
                QTest::keyClick(field, Qt::Key_Return);
            });
            touchIn(explorer, u"btn_NewFolder"_s);
            touchIn(explorer, u"btn_Confirm"_s);
        });
        screen.touch(401, 404);
        QCOMPARE(g_SavedFSInfo.currRootDirectory, kBaseFolder / u"Кирова 5 東"_s);
        leaveTools(screen);
        QCOMPARE(screen.text("lbl_CurrentFilenameandPath"), u"/100TUBIX/Кирова 5 東"_s.right(18));
        QVERIFY(screen.events().contains(u"41,Folder options button clicked"_s));
        screen.touch(40, 485);
        QTRY_VERIFY(exists(inCurrentFolder(u"TUBX0001.jpg"_s)));
        QTRY_VERIFY(screen.log(".html").contains("TUBX0001.jpg"));
    }

    void aFormattedCardTakesPicturesAgain()
    {
        Screen screen;
        screen.waitForCard();
        screen.touch(40, 485);
        const UnitPath still = inCurrentFolder(u"TUBX0001.jpg"_s);
        QTRY_VERIFY(screen.button("btn_menu_Tools")->isEnabled()); // the pop-up is over
        openTools(screen);
        for (const bool confirmed : {false, true}) {
            whenOpen([&](QDialog *box) { touchIn(box, confirmed ? u"btn_Confirm"_s : u"btn_Cancel"_s); });
            screen.touch(150, 474);
            QCOMPARE(exists(kBaseFolder), !confirmed);
            QCOMPARE(screen.events().contains(u"45,Format media button clicked"_s), confirmed);
        }
        leaveTools(screen);
        screen.touch(40, 485);
        QTRY_VERIFY(exists(still));
        QTRY_VERIFY(screen.log().contains("[+] TUBX0001.jpg"));
    }

    void aCardThatGoesFromThePageIsGone()
    {
        Screen screen;
        screen.waitForCard();
        openTools(screen);
        whenOpen([&](QDialog *) { screen.folder.control({u"card"_s, u"remove"_s}); });
        screen.touch(150, 474); // pulled under the question: returns when that is gone
        QVERIFY(!screen.events().contains(u"45,Format media button clicked"_s));
        QTRY_VERIFY(!Screen::settings().MSDC_ModuleInstalled);
        QVERIFY(!screen.button("btn_tools_Format_Media")->isEnabled());
        QCOMPARE(screen.text("lbl_menu_Format_Media_Capacity"), u"----"_s);
        screen.insertCard();
        QVERIFY(screen.text("lbl_menu_Format_Media_Capacity") != u"----"_s);
        screen.touch(593, 194);
        QVERIFY(screen.commands().contains("umount /media/mmcblk1p1\n"));
        QVERIFY(!exists(kDcimFolder));
        QCOMPARE(screen.text("lbl_menu_Format_Media_Capacity"), u"----"_s);
        QVERIFY(!screen.button("btn_menu_UnmountMedia")->isEnabled());
        QVERIFY(screen.isVisible("btn_menu_BackButton"));
        QVERIFY(screen.events().contains(u"32,Unmount media button clicked"_s));
    }

    void aChangedCatalogComesBackFromTheFactory()
    {
        Screen screen;
        openTools(screen);
        for (const eLanguages language :
             {eSwedish, eTurkish}) { // which has none, and the question is no event
            Screen::settings().LanguageIdx = language;
            const UnitPath file = damageCatelogFile(languageAbbreviation(language));
            const QByteArray factory = screen.folder.content(file);
            screen.folder.put(file, "mine\n");
            whenOpen([](QDialog *dialog) { touchIn(dialog, u"btn_Confirm"_s); });
            screen.touch(401, 474);
            QCOMPARE(screen.folder.content(file), language == eSwedish ? factory : QByteArray("mine\n"));
        }
        QCOMPARE(screen.events().filter(u"47,"_s),
                 QStringList{u"47,Reset damage catalog button clicked - Swedish"_s});
    }

    void theHeadIsChosenWhereAModuleIsPresent()
    {
        Screen screen;
        Screen::settings().MiniModulePresent = true;
        openTools(screen);
        const auto touchWith = [&](eImagerTypes fitted, eImagerTypes now) {
            Screen::settings().HWImagerConfiguration = fitted;
            Screen::settings().ImagerType = now;
            screen.touch(600, 325);
            return i2c_read(kEncoderBoardAddress, twiMeterCountAlgorithm);
        };
        QCOMPARE(touchWith(e30meter, e60meter), 0);
        QCOMPARE(screen.text("lbl_menu_Camera_Type_lineOne"), u"10m"_s);
        QCOMPARE(screen.text("lbl_menu_Camera_Type_lineTwo"), u"30m"_s);
        QCOMPARE(touchWith(e30meter, eMinimodule_10m), 2);
        QCOMPARE(touchWith(e60meter, eNoImagerAttached), 1);
        QCOMPARE(screen.events().filter(u"42,Select camera type button clicked - "_s),
                 (QStringList{u"42,Select camera type button clicked - Minimodule 10m"_s,
                              u"42,Select camera type button clicked - 30m"_s,
                              u"42,Select camera type button clicked - 60m"_s}));
    }

    void theHeadFileIsAskedForOnceAndOnceMore()
    {
        Screen screen;
        const UnitPath file = u"/home/root/tubix4_app/systemimagerconfiguration.txt"_unit;
        QVERIFY(QFile::remove(unit::path(file)));
        whenOpen([](QDialog *dialog) {
            dialog->findChild<QAbstractButton *>(u"radioButton_30m"_s)->click();
            dialog->findChild<QAbstractButton *>(u"checkBox_MiniModule"_s)->click();
            touchIn(dialog, u"pushButton"_s);
        });
        QCOMPARE(screen.window.ReadSystemImagerConfigurationFile(), 0);
        QCOMPARE(screen.folder.content(file), QByteArray("ImagerConfiguration, 30\nMiniModulePresent, 1\n"));
        QVERIFY(Screen::settings().MiniModulePresent);
        // A file that can neither be read nor written ends after two dialogs.
        QVERIFY(QFile::remove(unit::path(file)));
        QVERIFY(QDir().mkpath(unit::path(file)));
        QVERIFY(QDir().mkpath(unit::path(kDcimFolder)));
        screen.folder.put(kDcimFolder / u"__IMAGERCONFIG__"_s, {});
        int dialogs = 0;
        const auto close = [&](QDialog *dialog) {
            touchIn(dialog, u"pushButton"_s);
            dialogs += dialog->isVisible(); // what could not be saved stays on the screen
            dialog->close();
        };
        whenOpen([&](QDialog *dialog) {
            close(dialog);
            whenOpen(close);
        });
        QCOMPARE(screen.window.ReadSystemImagerConfigurationFile(), 0);
        QCOMPARE(dialogs, 2);
        QCOMPARE(Screen::settings().HWImagerConfiguration, e30meter);
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
        QTRY_VERIFY(screen.commands().contains("poweroff"));
        timer->stop();
        QVERIFY(screen.events().contains(u"3,Shutdown timer expired"_s));
    }

    void theStreamComesBackAfterAFilmAndIsSwitchedOffWhenItCannot()
    {
        Screen screen;
        quint8 &streaming = Screen::settings().bNetworkStreaming;
        streaming = 1;
        g_gst_VideoPipelineMode = eGSTStateStreaming;
        screen.startFilm();
        screen.waitForFilmAt("00:00:01");
        screen.touch(40, 485);
        QVERIFY(g_gst_Pipeline.videoStreamSink);
        QVERIFY(streaming);
        QVERIFY(Screen::pictureRuns());

        gst_SetNetworkStreamingIPAddress("");
        gst_VideoInputPipeline(0);
        QTRY_VERIFY(!streaming);
        QTRY_VERIFY(g_gst_Pipeline.videocrop);
        QVERIFY(screen.button("btn_menu_Capture")->isEnabled());
    }
};

int main(int argc, char **argv)
{
    return runAppTest<TestTools>(argc, argv);
}
#include "test_tools.moc"
