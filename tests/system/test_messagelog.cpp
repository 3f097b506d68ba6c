#include "system/messagelog.h"

#include <QBuffer>
#include <QTest>

using namespace messagelog;
using namespace Qt::StringLiterals;

namespace {

Batch readAll(Card before, QByteArray log, qint64 location = 0)
{
    QBuffer file(&log);
    file.open(QIODevice::ReadOnly);
    Batch batch(before, location, log.size());
    while (batch.readOn(file)) {
    }
    return batch;
}

} // namespace

class TestMessageLog : public QObject
{
    Q_OBJECT

private slots:
    void theKernelTellsTheCard_data()
    {
        QTest::addColumn<QByteArrayList>("lines");
        QTest::addColumn<int>("card");
        const auto row = [](const char *name, const QByteArrayList &lines, Card card) {
            QTest::newRow(name) << lines << int(card);
        };
        row("other lines", {"usb 1-1: new device", "mmc0: card 0001 removed"}, Card::Unknown);
        row("inserted", {"mmc1: new card", " mmcblk1: p1", "something else"}, Card::Inserted);
        row("removed", {" mmcblk1: p1", "mmc1: card 0001 removed"}, Card::Removed);
        row("put back", {"mmc1: card 0001 removed", " mmcblk1: p1"}, Card::Inserted);
        row("corrupt", {" mmcblk1: p1", "FAT-fs: FAT read failed (blocknr 1)", "something else"},
            Card::Corrupt);
        row("an error without a card", {"FAT read failed"}, Card::Unknown);
    }
    void theKernelTellsTheCard()
    {
        QFETCH(const QByteArrayList, lines);
        QTEST(int(readAll(Card::Unknown, lines.join('\n') + '\n').card()), "card");
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

QTEST_GUILESS_MAIN(TestMessageLog)
#include "test_messagelog.moc"
