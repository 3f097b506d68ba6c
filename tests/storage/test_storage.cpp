#include "testunit.h"

#include "storage/eventlog.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestStorage : public QObject
{
    Q_OBJECT

private slots:
    void eventsAreAppendedTrimmedInOrder()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        UpdateEventLog(eEventEnterToolsMenu, u"  Enter tools menu "_s);
        UpdateEventLog(eEventSetLanguage, u"名 %1, x"_s);
        const QList<QByteArray> lines = folder.content(u"/home/root/tubix4_app/eventlog.csv"_s).split('\n');
        QCOMPARE(lines.size(), 3);
        const QRegularExpression stamp(u"^\\d{4}-\\d\\d-\\d\\d/\\d\\d:\\d\\d:\\d\\d,"_s);
        QCOMPARE(QString::fromUtf8(lines[0]).remove(stamp), u"5,Enter tools menu"_s);
        QCOMPARE(QString::fromUtf8(lines[1]).remove(stamp), u"38,名 %1, x"_s);
    }

    void aMissingFolderLosesTheEventAlone()
    {
        const TestUnit folder({u"/home"_s});
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"^Couldn't open eventlog to write \".*,1,System boot"_s));
        UpdateEventLog(eEventBoot, u"System boot"_s);
        QVERIFY(!QDir(unit::path(u"/home/root"_s)).exists());
    }
};

QTEST_GUILESS_MAIN(TestStorage)
#include "test_storage.moc"
