#include "testunit.h"

#include "storage/capturefiles.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kFolder = u"/card"_unit;

} // namespace

class TestCaptureFiles : public HeardTest
{
    Q_OBJECT

private slots:
    void aNameHarmsNothing()
    {
        const auto used = [](const QString &typed) { return capturefiles::usableName(typed, u".jpg"_s); };
        QCOMPARE(used(u" Manhole 3 "_s), u"Manhole 3"_s);
        QCOMPARE(used(u"x. ."_s), u"x"_s);
        for (const QString &fine : {u"\u4e80\u88c2"_s, u"-rf"_s, u"Console.COM1"_s, QString(251, u'x')})
            QCOMPARE(used(fine), fine);
        for (const QString &harm :
             {u"   "_s, u"../x"_s, u"."_s, u".x"_s, u"CON"_s, u"com1.first"_s, u"aux .x"_s, u"a>b"_s,
              u"a\nb"_s, QString(252, u'x'), QString(84, u'\u4e80')})
            QCOMPARE(used(harm), QString());
    }

    void aRenameIsAllOrNothing()
    {
        const QStringList as = {u"A.avi"_s, u"A.jpg"_s, u"A.wav"_s, u"B.jpg"_s, u"C.jpeg"_s, u"N.wav"_s};
        const auto renamed = [&](const QString &file, const QString &name, bool withNote) {
            const TestUnit folder({kFolder});
            for (const QString &each : as)
                folder.put(kFolder / each, each.toUtf8());
            capturefiles::rename(kFolder, file, name, withNote);
            QStringList moved; // what each file that is not where it was was called
            for (const QString &each : QDir(unit::path(kFolder)).entryList(QDir::Files, QDir::Name)) {
                const QString was = QString::fromUtf8(folder.content(kFolder / each));
                if (was != each)
                    moved << was + u' ' + each;
            }
            return moved;
        };
        QCOMPARE(renamed(u"A.jpg"_s, u"Pipe"_s, true),
                 (QStringList{u"A.jpg Pipe.jpg"_s, u"A.wav Pipe.wav"_s}));
        QCOMPARE(renamed(u"A.jpg"_s, u"B"_s, true), QStringList());
        QCOMPARE(renamed(u"A.jpg"_s, u"N"_s, true), QStringList());  // the note's name is taken
        QCOMPARE(renamed(u"B.jpg"_s, u"N"_s, false), QStringList()); // no note to take over
        QCOMPARE(renamed(u"A.avi"_s, u"N"_s, false), QStringList{u"A.avi N.avi"_s});
        QCOMPARE(renamed(u"C.jpeg"_s, u"D"_s, false), QStringList{u"C.jpeg D.jpeg"_s});
    }

    void aFilmLeavesThePicturesNoteAlone()
    {
        const TestUnit folder({kFolder / u".thumbs"_s});
        for (const char *each : {"A.avi", "A.jpg", "A.wav", ".thumbs/A.jpg"})
            folder.put(kFolder / QLatin1String(each), each);
        QVERIFY(capturefiles::remove(kFolder, u"A.avi"_s));
        capturefiles::removeNote(kFolder, u"A.avi"_s);
        QVERIFY(exists(kFolder / u"A.wav"_s));
        QVERIFY(!exists(kFolder / u".thumbs/A.jpg"_s));
    }
};

QTEST_GUILESS_MAIN(TestCaptureFiles)
#include "test_capturefiles.moc"
