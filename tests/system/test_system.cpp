#include "testunit.h"

#include "system/clocksetting.h"
#include "system/imagerconfigurationfile.h"
#include "system/setdate.h"
#include "system/settime.h"

#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSystem : public QObject
{
    Q_OBJECT

private:
    static QLabel *label(const QWidget &dialog, const QString &name)
    {
        return dialog.findChild<QLabel *>(u"lbl_"_s + name);
    }

    static void press(const QWidget &dialog, const QString &name)
    {
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"btn_"_s + name), Qt::LeftButton);
    }

private slots:
    void figuresComeRound_data()
    {
        QTest::addColumn<QString>("figure");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("date"); // dd MM yyyy
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("hour up") << u"settime_Hour"_s << u"settime_hour_up"_s << QString() << u"23"_s
                                 << u"00"_s;
        QTest::newRow("hour down") << u"settime_Hour"_s << u"settime_hour_down"_s << QString() << u"00"_s
                                   << u"23"_s;
        QTest::newRow("minute up") << u"settime_Minute"_s << u"settime_minute_up"_s << QString() << u"59"_s
                                   << u"00"_s;
        QTest::newRow("minute down") << u"settime_Minute"_s << u"settime_minute_down"_s << QString()
                                     << u"00"_s << u"59"_s;
        QTest::newRow("second down") << u"settime_Second"_s << u"settime_second_down"_s << QString()
                                     << u"10"_s << u"09"_s;
        QTest::newRow("second up") << u"settime_Second"_s << u"settime_second_up"_s << QString() << u"59"_s
                                   << u"00"_s;
        QTest::newRow("month up") << u"setdate_Month"_s << u"setdate_month_up"_s << u"01 12 2015"_s << u"12"_s
                                  << u"01"_s;
        QTest::newRow("month down") << u"setdate_Month"_s << u"setdate_month_down"_s << u"01 01 2015"_s
                                    << u"01"_s << u"12"_s;
        QTest::newRow("day up") << u"setdate_Day"_s << u"setdate_day_up"_s << u"28 02 2015"_s << u"28"_s
                                << u"01"_s;
        QTest::newRow("day up in a leap year")
            << u"setdate_Day"_s << u"setdate_day_up"_s << u"28 02 2016"_s << u"28"_s << u"29"_s;
        QTest::newRow("day down") << u"setdate_Day"_s << u"setdate_day_down"_s << u"01 04 2015"_s << u"01"_s
                                  << u"30"_s;
        QTest::newRow("day up from one that the month lacks")
            << u"setdate_Day"_s << u"setdate_day_up"_s << u"31 02 2015"_s << u"31"_s << u"01"_s;
        QTest::newRow("month leaves the day")
            << u"setdate_Day"_s << u"setdate_month_up"_s << u"31 03 2015"_s << u"31"_s << u"31"_s;
        QTest::newRow("lowest year") << u"setdate_Year"_s << u"setdate_year_down"_s << u"01 01 1971"_s
                                     << u"1971"_s << u"1971"_s;
        QTest::newRow("year up") << u"setdate_Year"_s << u"setdate_year_up"_s << u"01 01 2099"_s << u"2099"_s
                                 << u"2100"_s;
    }
    void figuresComeRound()
    {
        QFETCH(const QString, figure);
        QFETCH(const QString, date);
        QFETCH(const QString, before);
        settime time(nullptr);
        setdate day(nullptr);
        time.init();
        day.init();
        const QWidget &dialog = figure.startsWith(u"settime"_s) ? static_cast<QWidget &>(time) : day;
        if (!date.isEmpty()) {
            label(day, u"setdate_Day"_s)->setText(date.section(u' ', 0, 0));
            label(day, u"setdate_Month"_s)->setText(date.section(u' ', 1, 1));
            label(day, u"setdate_Year"_s)->setText(date.section(u' ', 2, 2));
        }
        label(dialog, figure)->setText(before);
        QFETCH(const QString, button);
        press(dialog, button);
        QTEST(label(dialog, figure)->text(), "after");
    }

    void aConfirmedClockGoesToBothClocks()
    {
        const TestUnit folder;
        settime time(nullptr);
        time.init();
        label(time, u"settime_Hour"_s)->setText(u"07"_s);
        label(time, u"settime_Minute"_s)->setText(u"08"_s);
        label(time, u"settime_Second"_s)->setText(u"09"_s);
        press(time, u"settime_cancel"_s);
        QVERIFY(folder.content(u"/var/log/commands"_s).isEmpty());
        const QByteArray today = QDate::currentDate().toString(Qt::ISODate).toLatin1();
        press(time, u"settime_confirm"_s);
        setdate day(nullptr);
        day.init();
        label(day, u"setdate_Day"_s)->setText(u"30"_s);
        label(day, u"setdate_Month"_s)->setText(u"06"_s);
        label(day, u"setdate_Year"_s)->setText(u"2015"_s);
        press(day, u"setdate_confirm"_s);
        const QString commands = QString::fromUtf8(folder.content(u"/var/log/commands"_s));
        QVERIFY2(commands.contains(QRegularExpression(
                     u"^\\S+ date \\+%T --s=%1 07:08:09\n\\S+ hwclock --systohc\n"
                     "\\S+ date \\+%F --s=2015-06-30 \\d\\d:\\d\\d:\\d\\d\n\\S+ hwclock --systohc\n$"_s.arg(
                         QString::fromLatin1(today)))),
                 qPrintable(commands));
    }

    void theHeadFileCountsByWhatItContains_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("head");
        QTest::addColumn<bool>("module");
        QTest::newRow("as written") << QByteArray("ImagerConfiguration, 30\nMiniModulePresent, 1\n")
                                    << int(e30meter) << true;
        QTest::newRow("substrings") << QByteArray("ImagerConfiguration, 300\nMiniModulePresent, 10\n")
                                    << int(e30meter) << false;
        QTest::newRow("carriage returns, other order")
            << QByteArray("MiniModulePresent,yes\r\nImagerConfiguration, 60\r\n") << int(e60meter) << true;
        QTest::newRow("nothing known")
            << QByteArray("ImagerConfiguration\n\n,,\nx, 30\n") << int(eMinimodule_10m) << false;
    }
    void theHeadFileCountsByWhatItContains()
    {
        QFETCH(const QByteArray, text);
        _GlobalSystemSettings settings;
        imagerconfigurationfile::parse(text, settings);
        QTEST(int(settings.HWImagerConfiguration), "head");
        QTEST(settings.MiniModulePresent, "module");
    }
};

QTEST_MAIN(TestSystem)
#include "test_system.moc"
