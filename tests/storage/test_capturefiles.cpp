#include "testunit.h"

#include "storage/capturefiles.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString kFolder = u"/card"_s;

} // namespace

class TestCaptureFiles : public QObject
{
    Q_OBJECT

private slots:
    void aNameHarmsNothing_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("used");
        QTest::newRow("a name") << u" Manhole 3 "_s << u"Manhole 3"_s;
        QTest::newRow("japanese") << u"\u4e80\u88c2"_s << u"\u4e80\u88c2"_s;
        QTest::newRow("a dash first") << u"-rf"_s << u"-rf"_s;
        QTest::newRow("blanks") << u"   "_s << QString();
        QTest::newRow("another folder") << u"../x"_s << QString();
        QTest::newRow("the folder itself") << u"."_s << QString();
        QTest::newRow("hidden") << u".x"_s << QString();
        QTest::newRow("dots at the end") << u"x. ."_s << u"x"_s;
        QTest::newRow("a device") << u"CON"_s << QString();
        QTest::newRow("a device with an end") << u"com1.first"_s << QString();
        QTest::newRow("a device and a blank") << u"aux .x"_s << QString();
        QTest::newRow("nearly a device") << u"Console.COM1"_s << u"Console.COM1"_s;
        QTest::newRow("a sign that the card refuses") << u"a>b"_s << QString();
        QTest::newRow("a line break") << u"a\nb"_s << QString();
        QTest::newRow("the longest") << QString(251, u'x') << QString(251, u'x');
        QTest::newRow("too long") << QString(252, u'x') << QString();
        QTest::newRow("too many bytes") << QString(84, u'\u4e80') << QString();
    }
    void aNameHarmsNothing()
    {
        QFETCH(const QString, typed);
        QTEST(capturefiles::usableName(typed, u".jpg"_s), "used");
    }

    void aRenameIsAllOrNothing_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withNote");
        QTest::addColumn<QStringList>("files"); // afterwards
        const QStringList as = {u"A.avi"_s, u"A.jpg"_s, u"A.wav"_s, u"B.jpg"_s, u"C.jpeg"_s, u"N.wav"_s};
        const auto with = [&as](const QString &old, const QString &now) {
            QStringList files = as;
            files.replaceInStrings(old, now);
            files.sort();
            return files;
        };
        QTest::newRow("with its note")
            << u"A.jpg"_s << u"Pipe"_s << true
            << (QStringList{u"A.avi"_s, u"B.jpg"_s, u"C.jpeg"_s, u"N.wav"_s, u"Pipe.jpg"_s, u"Pipe.wav"_s});
        QTest::newRow("name taken") << u"A.jpg"_s << u"B"_s << true << as;
        QTest::newRow("note taken") << u"A.jpg"_s << u"N"_s << true << as;
        QTest::newRow("no note to take over") << u"B.jpg"_s << u"N"_s << false << as;
        QTest::newRow("a film beside a note")
            << u"A.avi"_s << u"N"_s << false << with(u"A.avi"_s, u"N.avi"_s);
        QTest::newRow("a longer extension")
            << u"C.jpeg"_s << u"D"_s << false << with(u"C.jpeg"_s, u"D.jpeg"_s);
    }
    void aRenameIsAllOrNothing()
    {
        QFETCH(const QString, file);
        QFETCH(const QString, name);
        QFETCH(const bool, withNote);
        const TestUnit folder({kFolder});
        for (const char *each : {"A.avi", "A.jpg", "A.wav", "B.jpg", "C.jpeg", "N.wav"})
            folder.put(kFolder + u'/' + QLatin1String(each), each);
        capturefiles::rename(kFolder, file, name, withNote);
        QTEST(QDir(unit::path(kFolder)).entryList(QDir::Files, QDir::Name), "files");
        QCOMPARE(folder.content(kFolder + u"/B.jpg"_s), "B.jpg"); // never written over
    }

    void aFilmLeavesThePicturesNoteAlone()
    {
        const TestUnit folder({kFolder + u"/.thumbs"_s});
        for (const char *each : {"A.avi", "A.jpg", "A.wav", ".thumbs/A.jpg"})
            folder.put(kFolder + u'/' + QLatin1String(each), each);
        QVERIFY(capturefiles::remove(kFolder, u"A.avi"_s));
        capturefiles::removeNote(kFolder, u"A.avi"_s);
        QVERIFY(QFile::exists(unit::path(kFolder + u"/A.wav"_s)));
        QVERIFY(!QFile::exists(unit::path(kFolder + u"/.thumbs/A.jpg"_s)));
    }
};

QTEST_GUILESS_MAIN(TestCaptureFiles)
#include "test_capturefiles.moc"
