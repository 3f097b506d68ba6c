#include "syncs.h"
#include "testunit.h"

#include "platform/savefile.h"
#include "storage/capturenames.h"
#include "storage/dcim.h"
#include "storage/eventlog.h"
#include "storage/inspectionlog.h"
#include "storage/listing.h"
#include "storage/position.h"
#include "storage/sdcard.h"
#include "storage/stillpicture.h"

#include <QDate>
#include <QFileInfo>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kEventLog = u"/home/root/tubix4_app/eventlog.csv"_unit;

// A card with one folder that is the current one.
class CardWith : public TestUnit
{
public:
    explicit CardWith(const QString &folder) : TestUnit({kCardMountPoint})
    {
        CreateDCIMStructure(kBaseFolder / folder);
    }
};

void age(const QString &name, int seconds)
{
    QFile file(unit::path(inCurrentFolder(name)));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::fromSecsSinceEpoch(1700000000 + seconds), QFileDevice::FileModificationTime);
}

QStringList listing()
{
    ReadDirectory(g_SavedFSInfo.currRootDirectory);
    QStringList names;
    for (int i = 0; i < g_SavedFSInfo.nFilescurrRootDirectory; ++i)
        names << g_FileListing[size_t(i)].fileName;
    return names;
}

UnitPath pageOf(const QString &folder)
{
    return inCurrentFolder(folder + u".html"_s);
}

} // namespace

class TestStorage : public HeardTest
{
    Q_OBJECT

private slots:
    void eventsAreAppendedTrimmedInOrder()
    {
        const TestUnit folder({u"/home/root/tubix4_app"_s});
        folder.put(kEventLog, "2026-11-15/14:05:09,1,System boot\n2026-11-15/14:0");
        mendEventLog(); // the half line of a power cut
        UpdateEventLog(eEventEnterToolsMenu, u"  Enter tools menu "_s);
        UpdateEventLog(eEventSetLanguage, u"名 %1, x"_s);
        const QList<QByteArray> lines = folder.content(kEventLog).split('\n');
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines[0], QByteArray("2026-11-15/14:05:09,1,System boot"));
        const QRegularExpression stamp(u"^\\d{4}-\\d\\d-\\d\\d/\\d\\d:\\d\\d:\\d\\d,"_s);
        QCOMPARE(QString::fromUtf8(lines[1]).remove(stamp), u"5,Enter tools menu"_s);
        QCOMPARE(QString::fromUtf8(lines[2]).remove(stamp), u"38,名 %1, x"_s);
    }

    void aCardIsWhatDfTells()
    {
        const auto available = [](const QString &report) {
            const sSDcardInfo card = cardInDfReport(report);
            return card.inserted ? qint64(card.avail) : -1;
        };
        QCOMPARE(
            available(u"/dev/root 1 1 1 1% /\n/dev/mmcblk1p1 7766016 120 7765896 1% /media/mmcblk1p1\n"_s),
            7765896);
        // The device on a line of its own.
        QCOMPARE(available(u"/dev/mmcblk1p1\n                 7766016 120 7765896 1% /media\n"_s), 7765896);
        for (const QString &none : {u"/dev/root 1 1 1 1% /\n"_s, QString(), u"/dev/mmcblk1p1 77660"_s})
            QCOMPARE(available(none), -1);
    }

    void fullBeginsBelowTenMebibytes()
    {
        const TestUnit folder({u"/usr/bin"_s});
        QVERIFY(isDiskFull()); // no df at all
        const auto withAvailable = [&](const QByteArray &kilobytes) {
            folder.put(u"/usr/bin/df"_s, "#!/bin/sh\necho /dev/mmcblk1p1 9 9 " + kilobytes + " 1% /m\n");
            QFile::setPermissions(unit::path(u"/usr/bin/df"_unit),
                                  QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
            return isDiskFull();
        };
        QVERIFY(withAvailable("10239"));
        QVERIFY(!withAvailable("10240"));
        flagCorruptSDCard();
        QCOMPARE(int(SDCardInfo.inserted), 0);
    }

    void theTreeIsMadeOnceAndMadeAgain()
    {
        const TestUnit card({kCardMountPoint});
        CreateDCIMStructure({});
        const QString today = QDate::currentDate().toString(u"ddMMyyyy"_s);
        QCOMPARE(g_SavedFSInfo.currRootDirectory, kBaseFolder / today);
        QVERIFY(card.content(pageOf(today)).contains("<title>" + today.toUtf8() + ".html</title>"));
        QCOMPARE(QDir(unit::path(inCurrentFolder(u".html_assets"_s))).entryList(QDir::Files).size(), 11);
        UpdateLogFiles(eImageCapture, 5, u"TUBX0001.jpg"_s, QString());
        const QByteArray page = card.content(pageOf(today));
        removeDir(inCurrentFolder(u".html_assets"_s));
        CreateDCIMStructure({});
        QCOMPARE(card.content(pageOf(today)), page); // the log is not lost with its pictures
        QVERIFY(exists(inCurrentFolder(u".html_assets/style.css"_s)));
        // Taken away at a computer: the page stays away until the card comes back.
        QFile::remove(unit::path(pageOf(today)));
        CreateDCIMStructure({});
        QVERIFY(!exists(pageOf(today)));
        QVERIFY(completeCurrentFolder());
        QVERIFY(card.content(pageOf(today)).contains("<title>" + today.toUtf8() + ".html</title>"));
        CreateDCIMStructure(kBaseFolder / u"House"_s);
        CreateDCIMStructure(kBaseFolder / u"House/Cellar"_s);
        removeDir(kDcimFolder);
        QVERIFY(completeCurrentFolder());
        QVERIFY(card.content(pageOf(u"Cellar"_s)).contains("<title>Cellar</title>"));
        removeDir(kCardMountPoint); // no card: nothing is made where it would be
        QVERIFY(!completeCurrentFolder());
        QVERIFY(!exists(kCardMountPoint));
    }

    void theListingKeepsItsWays()
    {
        const CardWith card(u"Street 12"_s);
        QVERIFY(listing().isEmpty());
        QCOMPARE(int(g_SavedFSInfo.currDCIMIndex), 1);
        int seconds = 0;
        for (const QString &name :
             {u"TUBX0012.AVI"_s, u"b.jpeg"_s, u"a.jpg"_s, u"Clip.avi"_s, u"TUBX0003.jpg"_s}) {
            card.put(inCurrentFolder(name), "x");
            age(name, name == u"a.jpg"_s ? seconds : ++seconds); // as old as b.jpeg
        }
        for (const QString &name : {u"TUBX0003.wav"_s, u"TUBX0099.wav"_s, u".hidden.jpg"_s, u"note.txt"_s})
            card.put(inCurrentFolder(name), "x");
        card.put(inCurrentFolder(u"TUBX0077.jpg"_s), ""); // never came to its end
        QCOMPARE(listing(),
                 (QStringList{u"TUBX0012.AVI"_s, u"a.jpg"_s, u"b.jpeg"_s, u"Clip.avi"_s, u"TUBX0003.jpg"_s}));
        QCOMPARE(int(g_SavedFSInfo.currDCIMIndex), 13);
        QCOMPARE(int(g_FileListing[0].isVideo), 0);
        QCOMPARE(int(g_FileListing[3].isVideo), 1);
        QCOMPARE(int(g_FileListing[4].annotated), 1);
        QCOMPARE(int(g_FileListing[1].annotated), 0);
    }

    // On a 32-bit board a size or a time that does not fit its type makes the file's state unreadable.
    void aFilmBeyondTwoGibibytesAndATimeBeyond2038AreListed()
    {
        const CardWith card(u"Street 12"_s);
        for (const QString &name : {u"late.avi"_s, u"long.avi"_s}) {
            card.put(inCurrentFolder(name), "x");
            age(name, 0);
        }
        const QByteArray late = unit::path(inCurrentFolder(u"late.avi"_s)).encoded();
        const std::array<timespec, 2> in2040 = {timespec{2208988800, 0}, timespec{2208988800, 0}};
        QCOMPARE(::utimensat(AT_FDCWD, late.constData(), in2040.data(), 0), 0);
        const QByteArray large = unit::path(inCurrentFolder(u"long.avi"_s)).encoded();
        QCOMPARE(::truncate(large.constData(), off_t(3) << 30), 0);
        QCOMPARE(listing(), (QStringList{u"long.avi"_s, u"late.avi"_s}));
    }

    void removingDoesNotFollowLinks()
    {
        const TestUnit card({kCardMountPoint, u"/home/keep"_s});
        card.put(u"/home/keep/file"_s, "x");
        QDir().mkpath(unit::path(kBaseFolder / u"a/.b/c"_s));
        QFile::link(unit::path(u"/home/keep"_unit), unit::path(kBaseFolder / u"a/link"_s));
        QVERIFY(removeDir(kBaseFolder));
        QVERIFY(!exists(kBaseFolder));
        QCOMPARE(card.content(u"/home/keep/file"_s), QByteArray("x"));
        QVERIFY(removeDir(kBaseFolder));
    }

    void rowsAndLinesAreByteForByte()
    {
        const auto [row, line] = inspectionlog::entry(eImageCapture, 5, u"14:05:09"_s, u"TUBX0007.jpg"_s);
        QCOMPARE(row, QByteArray("\n\t<tr>\n\t  <td>000.05</td>\n\t  <td>14:05:09</td>\n\t  <td><img "
                                 "src=\"./.html_assets/imagecaptured.png\"/></td>\n\t  <td><a "
                                 "href=\"TUBX0007.jpg\">TUBX0007.jpg</a></td>\n\t</tr>\n"));
        QCOMPARE(line, QByteArray("000.05  14:05:09  [+] TUBX0007.jpg\n"));
        const auto note =
            inspectionlog::entry(eDamageCatelogChange, 1234, u"14:05:09"_s, u"a < b & \"c\" -> %1"_s);
        QCOMPARE(note.row,
                 QByteArray("\n\t<tr>\n\t  <td>012.34</td>\n\t  <td>14:05:09</td>\n\t  <td></td>\n\t  "
                            "<td>a &lt; b &amp; &quot;c&quot; -> %1</td>\n\t</tr>\n"));
        QCOMPARE(note.line, QByteArray("012.34  14:05:09  [!] a < b & \"c\" -> %1\n"));
        QVERIFY(inspectionlog::entry(eVideoStop, 0, QString(), u"x"_s)
                    .row.contains("stop.png\"/></td>\n\t  <td>x</td>"));
        for (const int failedPoll : {-1, -32768}) {
            const auto lost = inspectionlog::entry(eVideoStop, static_cast<unsigned short>(failedPoll),
                                                   u"14:05:09"_s, u"x"_s);
            QVERIFY(lost.row.contains("<td>---.--</td>"));
            QCOMPARE(lost.line, QByteArray("---.--  14:05:09  --| x\n"));
        }
    }

    void aLogFollowsItsPage()
    {
        const CardWith card(u"A & B"_s);
        const UnitPath page = pageOf(u"A & B"_s);
        const UnitPath lines = inCurrentFolder(u"A & B.txt"_s);
        QVERIFY(card.content(page).contains("A &amp; B.html"));
        UpdateLogFiles(eFileRename, 0, QString(), u" a -> b "_s);
        QVERIFY(card.content(page).contains("<td>a -> b</td>\n\t</tr>\n</table>"));
        QVERIFY(card.content(lines).endsWith("[*] a -> b\n"));
        card.put(page, "no table here");
        UpdateLogFiles(eFileDelete, 0, u"y.jpg"_s, QString());
        QCOMPARE(card.content(page), QByteArray("no table here"));
        QVERIFY(card.content(lines).endsWith("[X] y.jpg\n"));
        QFile::remove(unit::path(page));
        UpdateLogFiles(eFileDelete, 0, u"z.jpg"_s, QString());
        QVERIFY(!card.content(lines).contains("z.jpg"));
    }

    // Wherever the last write of a page broke off, the page is whole again and keeps every row before it.
    void aTornPageIsMended()
    {
        const CardWith card(u"Torn"_s);
        const UnitPath page = pageOf(u"Torn"_s);
        const QByteArray empty = card.content(page);
        UpdateLogFiles(eImageCapture, 100, u"first.jpg"_s, QString());
        const QByteArray first = card.content(page);
        UpdateLogFiles(eImageCapture, 200, u"second.jpg"_s, QString());
        const QByteArray second = card.content(page);
        const QByteArray end = first.mid(first.lastIndexOf("</table>"));
        const auto mended = [&](const QByteArray &torn) {
            card.put(page, torn);
            CreateDCIMStructure(g_SavedFSInfo.currRootDirectory);
            return card.content(page);
        };
        for (qsizetype cut = first.lastIndexOf("</table>"); cut < second.size() - 1; ++cut) {
            const QByteArray content = mended(second.left(cut));
            QVERIFY2(content == first || content == second, content.right(200).constData());
        }
        // Overwritten in part: the old end is still there behind the new bytes.
        const qsizetype table = first.lastIndexOf("</table>");
        for (qsizetype cut = table; cut < first.size(); ++cut)
            QCOMPARE(mended(second.left(cut) + first.mid(cut)), first);
        const UnitPath lines = inCurrentFolder(u"Torn.txt"_s);
        card.put(page, second);
        const QByteArray text = card.content(lines);
        for (qsizetype cut = text.indexOf('\n') + 1; cut < text.size(); ++cut) {
            card.put(lines, text.left(cut));
            mended(second);
            QCOMPARE(card.content(lines), text);
        }
        QCOMPARE(mended(empty.left(empty.indexOf("</table>"))),
                 QByteArray(empty).replace("\t</table>", "</table>"));
        QCOMPARE(mended(second), second);
        card.put(inCurrentFolder(u"TUBX0003.jpg.tubix-new"_s), "half a picture");
        card.put(inCurrentFolder(u".thumbs/TUBX0004.jpg.tubix-new"_s), "half a thumbnail");
        card.put(inCurrentFolder(u"mine.new"_s), "x");
        QCOMPARE(mended("somebody else's"), QByteArray("somebody else's"));
        QVERIFY(!exists(inCurrentFolder(u"TUBX0003.jpg.tubix-new"_s)));
        QVERIFY(!exists(inCurrentFolder(u".thumbs/TUBX0004.jpg.tubix-new"_s)));
        QVERIFY(exists(inCurrentFolder(u"mine.new"_s)));
    }

    void whatPeopleWroteStays_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QByteArray>("written"); // behind all that is there
        QTest::newRow("behind the page") << u".html"_s << QByteArray("checked, J. Smith");
        QTest::newRow("a long text") << u".html"_s << QByteArray("<p>x</p>\n").repeated(3000);
        QTest::newRow("half a page") << u".html"_s << QByteArray("<table><tr><td>1</td></tr>\n</table>");
        QTest::newRow("a last line") << u".txt"_s << QByteArray("checked, J. Smith");
        QTest::newRow("a figure") << u".txt"_s << QByteArray("0");
        QTest::newRow("two bytes a letter") << u".txt"_s << QByteArray("c\0h\0\n\0", 6);
    }
    void whatPeopleWroteStays()
    {
        QFETCH(const QString, extension);
        QFETCH(const QByteArray, written);
        const CardWith card(u"Remarks"_s);
        const UnitPath file = inCurrentFolder(u"Remarks"_s + extension);
        UpdateLogFiles(eImageCapture, 100, u"first.jpg"_s, QString());
        const QByteArray before = card.content(file) + written;
        card.put(file, before);
        CreateDCIMStructure(g_SavedFSInfo.currRootDirectory);
        QCOMPARE(card.content(file), before);
        UpdateLogFiles(eImageCapture, 200, u"second.jpg"_s, QString());
        QByteArray after = card.content(file);
        const qsizetype row = after.indexOf(extension == u".txt" ? "\n002.00" : "\n\t<tr>\n\t  <td>002.00");
        QVERIFY(row > 0);
        QCOMPARE(after.remove(row, after.size() - before.size()), before);
    }

    // A damaged card may call a file of 3 GiB a page: no board has the memory to look for its rows.
    void aPageBeyondTwoGibibytesStaysAsItIs()
    {
        const CardWith card(u"Huge"_s);
        const QByteArray page = unit::path(pageOf(u"Huge"_s)).encoded();
        QCOMPARE(::truncate(page.constData(), off_t(3) << 30), 0);
        CreateDCIMStructure(g_SavedFSInfo.currRootDirectory);
        UpdateLogFiles(eImageCapture, 100, u"first.jpg"_s, QString());
        QCOMPARE(QFileInfo(QFile::decodeName(page)).size(), qint64(3) << 30);
        QVERIFY(card.content(inCurrentFolder(u"Huge.txt"_s)).endsWith("first.jpg\n"));
    }

    void aStillIsCutAndBanded()
    {
        QImage band(720, 600, QImage::Format_RGB32);
        band.fill(Qt::black);
        QImage frame(720, 576, QImage::Format_RGB16);
        frame.fill(Qt::red);
        const QImage picture = stillpicture::compose(band, frame, QRect(160, 200, 320, 256),
                                                     {u"12.34 m"_s, QString(), QString()});
        QCOMPARE(picture.size(), QSize(720, 600));
        QCOMPARE(picture.pixelColor(0, 23), QColor(Qt::black));
        QCOMPARE(picture.pixelColor(0, 24), QColor(Qt::red));
        QCOMPARE(picture.pixelColor(719, 599), QColor(Qt::red));
        const QImage blank = stillpicture::compose(band, frame, QRect(160, 200, 320, 256), {});
        QVERIFY(picture.copy(442, 4, 60, 18) != blank.copy(442, 4, 60, 18));
        QCOMPARE(picture.copy(568, 0, 152, 24), blank.copy(568, 0, 152, 24));
        const TestUnit card({kCardMountPoint});
        QVERIFY(stillpicture::save(picture, u"/media/mmcblk1p1/a.jpg"_unit));
        QCOMPARE(QImage(unit::path(u"/media/mmcblk1p1/a.jpg"_unit)).size(), QSize(720, 600));
        QVERIFY(!stillpicture::save(picture, u"/media/none/a.jpg"_unit));
    }

    // What the user was told is there stays there when the power goes: each file is synced when it is whole.
    void whatIsWrittenIsOnTheCardAtOnce()
    {
        const CardWith card(u"Street"_s);
        QDir().mkpath(unit::path(u"/home/root/tubix4_app"_unit));
        const auto synced = [&](const QString &name, const UnitPath &unitPath) {
            return takeSyncs().contains(u"%1 %2"_s.arg(name).arg(card.content(unitPath).size()));
        };
        takeSyncs();
        const UnitPath still = inCurrentFolder(u"TUBX0001.jpg"_s);
        QImage picture(720, 600, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(stillpicture::save(picture, still));
        QVERIFY(synced(u"TUBX0001.jpg.tubix-new"_s, still)); // and then renamed
        QVERIFY(savefile::write(u"/home/root/tubix4_app/settings.xml"_unit, "settings"));
        // Once more under its name, which stands in the folder with the size.
        QCOMPARE(takeSyncs(),
                 (QStringList{u"settings.xml.tubix-new 8"_s, u"settings.xml 8"_s, u"tubix4_app/"_s}));
        UpdateLogFiles(eImageCapture, 5, still.name(), QString());
        const QStringList rows = takeSyncs();
        for (const QString &name : {u"Street.html"_s, u"Street.txt"_s})
            QVERIFY(rows.contains(u"%1 %2"_s.arg(name).arg(card.content(inCurrentFolder(name)).size())));
        UpdateEventLog(eEventBoot, u"System boot"_s);
        QVERIFY(synced(u"eventlog.csv"_s, kEventLog));
    }

    void aNameIsGivenOnceAndNoNoteTakenOver()
    {
        for (const auto &[file, copy] : {std::pair(u"TUBX0004.jpg"_s, u"TUBX0004_090705.jpg"_s),
                                         {u"TUBX0004_090705.jpg"_s, u"TUBX0004_090705_090705.jpg"_s},
                                         {u"TUBX0003.avi"_s, u"TUBX0003_090705.jpg"_s},
                                         {u"TUBX0003.AVI"_s, u"TUBX0003_090705.jpg"_s},
                                         {u"Pavilion v1.2.jpeg"_s, u"Pavilion v1.2_090705.jpeg"_s}})
            QCOMPARE(editedName(file, QTime(9, 7, 5)), copy);
        const CardWith card(u"Pavilion.avi"_s);
        card.put(inCurrentFolder(u"TUBX0004_235959.jpg"_s), "x");
        card.put(inCurrentFolder(u"TUBX0004_000000.jpg"_s), "x");
        card.put(inCurrentFolder(u"TUBX0004_000001.wav"_s), "somebody's");
        QCOMPARE(freeEditedName(u"TUBX0004.jpg"_s, QTime(23, 59, 59)), u"TUBX0004_000002.jpg"_s);
        card.put(inCurrentFolder(u"TUBX0001.wav"_s), "somebody's");
        for (const QString &extension : {u".jpg"_s, u".avi"_s}) {
            QVERIFY(!listing().contains(u"TUBX0001.jpg"_s));
            QCOMPARE(freeCaptureName(extension), u"TUBX0002"_s + extension);
        }
    }
};

QTEST_MAIN(TestStorage)
#include "test_storage.moc"
