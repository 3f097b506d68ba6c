#include "testunit.h"

#include "system/imagerconfigurationfile.h"
#include "system/messagelog.h"
#include "system/setdate.h"
#include "system/settime.h"

#include <QBuffer>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryFile>
#include <QTest>

using namespace messagelog;
using namespace Qt::StringLiterals;

namespace {

Batch readAll(Card before, const QByteArray &log, qint64 location = 0)
{
    QTemporaryFile file;
    if (!file.open() || file.write(log) != log.size() || !file.flush())
        return {};
    Batch batch(before, location, log.size());
    while (batch.readOn(file)) {
    }
    return batch;
}

} // namespace

class TestSystem : public HeardTest
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
    void figuresComeRound()
    {
        struct Row
        {
            QString button;
            QString before, after; // HH mm ss, or dd MM yyyy
        };
        settime time(nullptr);
        setdate day(nullptr);
        time.init();
        day.init();
        const QStringList timeFigures = {u"settime_Hour"_s, u"settime_Minute"_s, u"settime_Second"_s};
        const QStringList dayFigures = {u"setdate_Day"_s, u"setdate_Month"_s, u"setdate_Year"_s};
        for (const auto &[button, before, after] :
             {Row{u"settime_hour_up"_s, u"23 59 59"_s, u"00 59 59"_s},
              {u"settime_hour_down"_s, u"00 00 00"_s, u"23 00 00"_s},
              {u"settime_minute_up"_s, u"23 59 59"_s, u"23 00 59"_s},
              {u"settime_minute_down"_s, u"00 00 00"_s, u"00 59 00"_s},
              {u"settime_second_up"_s, u"23 59 59"_s, u"23 59 00"_s},
              {u"settime_second_down"_s, u"00 00 10"_s, u"00 00 09"_s},
              {u"setdate_month_up"_s, u"01 12 2015"_s, u"01 01 2015"_s},
              {u"setdate_month_up"_s, u"31 03 2015"_s, u"31 04 2015"_s},
              {u"setdate_month_down"_s, u"01 01 2015"_s, u"01 12 2015"_s},
              {u"setdate_day_up"_s, u"28 02 2015"_s, u"01 02 2015"_s},
              {u"setdate_day_up"_s, u"28 02 2016"_s, u"29 02 2016"_s},
              {u"setdate_day_up"_s, u"31 02 2015"_s, u"01 02 2015"_s},
              {u"setdate_day_down"_s, u"01 04 2015"_s, u"30 04 2015"_s},
              {u"setdate_year_down"_s, u"01 01 1971"_s, u"01 01 1971"_s},
              {u"setdate_year_up"_s, u"01 01 2099"_s, u"01 01 2100"_s}}) {
            const bool isTime = button.startsWith(u"settime"_s);
            const QWidget &dialog = isTime ? static_cast<QWidget &>(time) : day;
            QStringList shown;
            for (int i = 0; i < 3; ++i)
                label(dialog, (isTime ? timeFigures : dayFigures)[i])->setText(before.section(u' ', i, i));
            press(dialog, button);
            for (int i = 0; i < 3; ++i)
                shown << label(dialog, (isTime ? timeFigures : dayFigures)[i])->text();
            QVERIFY2(shown.join(u' ') == after, qPrintable(button + u' ' + shown.join(u' ')));
        }
    }

    void theHeadFileCountsByWhatItContains()
    {
        for (const auto &[text, head, module] :
             {std::tuple("ImagerConfiguration, 30\nMiniModulePresent, 1\n", e30meter, true),
              {"ImagerConfiguration, 300\nMiniModulePresent, 10\n", e30meter, false},
              {"MiniModulePresent,yes\r\nImagerConfiguration, 60\r\n", e60meter, true},
              {"ImagerConfiguration\n\n,,\nx, 30\n", eMinimodule_10m, false}}) {
            imagerconfigurationfile::Fitted fitted;
            imagerconfigurationfile::parse(text, fitted);
            QVERIFY2(int(fitted.reel) == int(head), text);
            QVERIFY2(fitted.hasMiniModule == module, text);
        }
    }

    void theKernelTellsTheCard()
    {
        for (const auto &[lines, card] : {
                 std::pair<QByteArray, Card>("usb 1-1: new device\nmmc0: card 0001 removed\n", Card::Unknown),
                 {"mmc1: new card\n mmcblk1: p1\nsomething else\n", Card::Inserted},
                 {" mmcblk1: p1\nmmc1: card 0001 removed\n", Card::Removed},
                 {"mmc1: card 0001 removed\n mmcblk1: p1\n", Card::Inserted},
                 {" mmcblk1: p1\nFAT-fs: FAT read failed (blocknr 1)\nsomething else\n", Card::Corrupt},
                 {"FAT read failed\n", Card::Unknown}, // an error without a card
             })
            QVERIFY2(readAll(Card::Unknown, lines).card() == card, lines.constData());
    }

    void aRemovalOnTheWayIsNotForgotten()
    {
        const Batch swapped = readAll(Card::Inserted, "mmc1: card 1 removed\n mmcblk1: p1\n");
        QVERIFY(swapped.card() == Card::Inserted && swapped.sawRemoval());
        QVERIFY(!readAll(Card::Unknown, "mmc1: card 1\nremoved\n").sawRemoval());
    }

    // Wherever the seam between two slices falls, a phrase is found, and once only.
    void aPhraseAcrossASeamIsFound()
    {
        for (const QByteArray &phrase : {QByteArray("mmc1: card 1 removed"), QByteArray(" mmcblk1: p1")}) {
            for (qsizetype before = 65536 - phrase.size() - 1; before <= 65537; ++before) {
                const QByteArray line = QByteArray(before, 'x') + phrase + QByteArray(before, 'y');
                const Card card = readAll(Card::Unknown, line + "\nmore\n").card();
                QVERIFY2(card == (phrase[0] == 'm' ? Card::Removed : Card::Inserted), phrase.constData());
            }
        }
    }

    void aLongLineIsOneLine()
    {
        // One megabyte between the two halves that only count on one line.
        const QByteArray far = "mmc1: card 1" + QByteArray(1 << 20, ' ') + "removed";
        QCOMPARE(readAll(Card::Unknown, far + '\n').card(), Card::Removed);
        QCOMPARE(readAll(Card::Unknown, QByteArray(far).replace(600000, 1, "\n") + '\n').card(),
                 Card::Unknown);
    }

    void theNextBatchBeginsWhereThisOneEnded()
    {
        const QByteArray log = "old\nmmc1: card 1 removed\n";
        QCOMPARE(readAll(Card::Unknown, log).nextLocation(), log.size());
        // A half line counts now and again when it is whole.
        QCOMPARE(readAll(Card::Unknown, log + " mmcblk1: p").nextLocation(), log.size());
        QCOMPARE(readAll(Card::Unknown, log + " mmcblk1: p1").card(), Card::Inserted);
        // Rotated to a smaller file: nothing is read, and the place is its end.
        const Batch rotated = readAll(Card::Unknown, log, 1000);
        QCOMPARE(rotated.card(), Card::Unknown);
        QCOMPARE(rotated.nextLocation(), log.size());
        // A line without an end is not read anew for ever.
        const QByteArray endless(10000, 'x');
        QCOMPARE(readAll(Card::Unknown, endless).nextLocation(), endless.size());
    }

    // The log grows while it is read: what came in time is examined, and the reading ends all the same.
    void aGrowingLogIsLeftInTime()
    {
        QByteArray log(200000, '\n');
        QBuffer file(&log);
        file.open(QIODevice::ReadOnly);
        Batch batch(Card::Unknown, 0, log.size());
        int slices = 1;
        for (; batch.readOn(file); ++slices)
            log += QByteArray(100000, '\n');
        QCOMPARE(slices, 4);
        QCOMPARE(batch.nextLocation(), 200000);
    }
};

QTEST_MAIN(TestSystem)
#include "test_system.moc"
