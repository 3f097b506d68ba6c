#include "testunit.h"

#include "storage/position.h"
#include "storage/upgrade.h"
#include "storage/upgradesteps.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const UnitPath kApplication = u"/home/root/tubix4_app/tubix4"_unit;
const UnitPath kArchive = u"/media/mmcblk1p1/DCIM/TUBIX4UPDT504.tar"_unit;
const UnitPath kKey = u"/home/root/tubix4_app/upgrade.pub"_unit;

// One member of a tar archive as any packer, or a hostile one, could write it.
QByteArray member(const QByteArray &name, const QByteArray &content, char type = '0',
                  const QByteArray &link = {})
{
    QByteArray header(512, '\0');
    const auto put = [&](qsizetype at, const QByteArray &text) { header.replace(at, text.size(), text); };
    put(0, name.left(100));
    put(100, "0000644");
    put(108, "0000000");
    put(116, "0000000");
    put(124, QByteArray::number(content.size(), 8).rightJustified(11, '0'));
    put(136, "15000000000");
    put(148, "        ");
    header[156] = type;
    put(157, link);
    put(257, QByteArray("ustar\00000", 8));
    int sum = 0;
    for (const char byte : header)
        sum += static_cast<unsigned char>(byte);
    put(148, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
    const qsizetype padding = (512 - content.size() % 512) % 512;
    return header + content + QByteArray(padding, '\0');
}

QByteArray archive(const QByteArrayList &members)
{
    return members.join() + QByteArray(1024, '\0');
}

QByteArray instructions(const QByteArray &lines)
{
    return member("tubix4_update.txt", lines);
}

class UpgradeUnit : public TestUnit
{
public:
    // At `place` of the folder: what lies beside it is not the unit's.
    explicit UpgradeUnit(const QString &place = {})
        : TestUnit({place + u"/home/root/tubix4_app"_s, place + u"/usr/bin"_s, place + u"/etc"_s,
                    place + kDcimFolder.text()})
    {
        unit::setRoot(unit::root() + place);
        for (const QString &program : {u"tar"_s, u"openssl"_s})
            QFile::link(QStandardPaths::findExecutable(program), unit::path(u"/usr/bin"_unit / program));
        QFile::link(QStandardPaths::findExecutable(u"true"_s), unit::path(u"/usr/bin/sync"_unit));
        put(kApplication, "old");
        put(u"/etc/passwd"_s, "root");
        QFile::setPermissions(unit::path(kApplication), QFile::ReadOwner | QFile::WriteOwner);
        upgradeFileName.clear();
    }

    // Found, confirmed, carried out.
    void insertAndConfirm(const QByteArray &content) const
    {
        put(kArchive, content);
        QVERIFY(SystemUpgradePresent());
        ProcessSystemUpgrade();
    }

    // Everything below a folder of the host but what an upgrade may always touch: name, kind, rights,
    // content.
    static QByteArrayList pictureOf(const QString &host)
    {
        QByteArrayList lines;
        QDirIterator files(host, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            struct stat info = {};
            ::lstat(QFile::encodeName(path).constData(), &info);
            QFile file(path);
            if (!path.contains(u"/home/root/tmp"_s) && !path.contains(kDcimFolder.text() + u'/'))
                lines << path.toUtf8() + ' ' + QByteArray::number(info.st_mode, 8) + ' ' +
                             (S_ISREG(info.st_mode) && file.open(QIODevice::ReadOnly) ? file.readAll()
                                                                                      : QByteArray());
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }
};

int g_stepsLeft = 0; // until the power goes; 0: it stays

void step()
{
    if (g_stepsLeft > 0 && --g_stepsLeft == 0)
        ::_exit(1);
}

} // namespace

// The steps of an upgrade onto the disk. They stand in for the C library's: the linker takes these first.
extern "C" ssize_t write(int fd, const void *bytes, size_t size)
{
    step();
    return ::syscall(SYS_write, fd, bytes, size);
}

extern "C" int fsync(int fd)
{
    step();
    return int(::syscall(SYS_fsync, fd));
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    step();
    return int(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int unlink(const char *path) noexcept
{
    step();
    return int(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

class TestUpgrade : public HeardTest
{
    Q_OBJECT

private slots:
    void anArchiveIsFoundByItsName()
    {
        const auto seen = [](const QString &name, const QByteArray &content = "x") {
            const UpgradeUnit folder;
            folder.put(kDcimFolder / name, content);
            const bool found = SystemUpgradePresent();
            return found ? "found" : exists(kDcimFolder / name) ? "left" : "deleted";
        };
        for (const QString &name : {u"TUBIX4UPDT504"_s, u"my TUBIX4UPDT504.tar"_s})
            QCOMPARE(seen(name), "found");
        for (const QString &older : {u"PIPE4UPDT.tar"_s, u"TUBIX4UPDT.tar"_s})
            QCOMPARE(seen(older), "deleted");
        for (const QString &other : {u"tubix4updt504"_s, u"._TUBIX4UPDT504"_s}) // a computer's hidden shadow
            QCOMPARE(seen(other), "left");
        QCOMPARE(seen(u"TUBIX4UPDT504"_s, ""), "left");
    }

    void anArchiveIsCarriedOut()
    {
        const UpgradeUnit folder;
        folder.put(u"/home/root/tubix4_app/gone.txt"_s, "x");
        QDir().mkdir(unit::path(u"/home/root/emptied"_unit));
        QDir().mkpath(unit::path(u"/home/root/tmp/left/over"_unit)); // of an upgrade that was cut off
        QDir().mkpath(unit::path(u"/made/sub"_unit));
        folder.put(u"/made/tubix4"_s, "new");
        QFile::setPermissions(unit::path(u"/made/tubix4"_unit), QFile::Permissions(0x5755));
        folder.put(u"/made/sub/page.txt"_s, "page");
        folder.put(u"/made/tubix4_update.txt"_s,
                   " OVERRIGHT , tubix4 , /home/root/tubix4_app \r\n"
                   "MKDIR,,/home/root/newdir/\r\n"
                   "ADD,sub/page.txt,/home/root\n" // no such folder: only this one fails
                   "ADD,missing,/etc\n"
                   "nothing that we know\n"
                   "DELETE,gone.txt,/home/root/tubix4_app\n"
                   "RMDIR,,/home/root/emptied");
        QCOMPARE(output("tar -C %1 -cf %2 .", {unit::path(u"/made"_unit), unit::path(kArchive)}),
                 QByteArray());
        QFile running(unit::path(kApplication)); // as the program that is running
        QVERIFY(running.open(QIODevice::ReadOnly));
        QVERIFY(SystemUpgradePresent());
        ProcessSystemUpgrade();
        QCOMPARE(folder.content(kApplication), QByteArray("new"));
        QVERIFY(QFileInfo(unit::path(kApplication)).isExecutable());
        QCOMPARE(running.readAll(), QByteArray("old"));
        QVERIFY(QFileInfo(unit::path(u"/home/root/newdir"_unit)).isDir());
        for (const QString &gone : {u"tubix4_app/gone.txt"_s, u"emptied"_s, u"tmp"_s})
            QVERIFY2(!exists(u"/home/root/"_s + gone), qPrintable(gone));
        QVERIFY(QDir(unit::path(kDcimFolder)).isEmpty());
        QVERIFY(!SystemUpgradePresent());
    }

    // Nothing on the unit changes, and the archive is not offered again.
    void aBadArchiveChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray good = instructions("OVERRIGHT,tubix4,/home/root/tubix4_app\n");
        const QByteArray file = member("tubix4", QByteArray(5000, 'n'));
        const auto with = [&](const char *name, const QByteArray &hostile) {
            QTest::newRow(name) << archive({good, file, hostile});
        };
        QTest::newRow("no archive") << QByteArray("not a tar archive");
        QTest::newRow("cut within a member") << (good + file).chopped(700);
        QTest::newRow("cut between members") << good + file;
        QTest::newRow("cut within its end") << archive({good, file}).chopped(512);
        QTest::newRow("no member") << archive({});
        QTest::newRow("no instructions") << archive({file});
        QByteArray broken = archive({good, file});
        broken[700 + 512] = 'X';
        QTest::newRow("damaged header") << broken;
        with("up and out", member("../../../etc/passwd", "evil"));
        with("up within", member("a/../../x", "evil"));
        with("only dots", member("..", "", '5'));
        with("absolute", member("/etc/passwd", "evil"));
        with("absolute twice", member("//etc/passwd", "evil"));
        with("link out", member("l", "", '2', "/etc"));
        with("link out, then through it", member("l", "", '2', "../../../etc") + member("l/passwd", "evil"));
        with("link instead of a file", member("tubix4", "", '2', "/etc/passwd"));
        with("hard link", member("h", "", '1', "../../../etc/passwd"));
        with("character device", member("d", "", '3'));
        with("block device", member("d", "", '4'));
        with("pipe", member("p", "", '6'));
        with("long name up and out",
             member("././@LongLink", "../../../etc/passwd" + QByteArray(1, '\0'), 'L') +
                 member("short", "evil"));
        with("extended header up and out",
             member("x", "26 path=../../etc/hostile\n", 'x') + member("s", "e"));
        QTest::newRow("instructions as a folder") << archive({member("tubix4_update.txt/", "", '5'), file});
        QTest::newRow("instructions as a link")
            << archive({member("i", "DELETE,passwd,/etc"), member("tubix4_update.txt", "", '2', "i")});
        QTest::newRow("endless instructions")
            << archive({instructions("DELETE,passwd,/etc\n" + QByteArray(2 << 20, 'x')), file});
    }
    void aBadArchiveChangesNothing()
    {
        QFETCH(const QByteArray, content);
        const UpgradeUnit folder;
        const QByteArrayList before = UpgradeUnit::pictureOf(unit::root());
        folder.insertAndConfirm(content);
        QCOMPARE(UpgradeUnit::pictureOf(unit::root()), before);
        QVERIFY(!SystemUpgradePresent());
        QVERIFY(!exists(u"/home/root/tmp"_s));
    }

    void aHostileInstructionReachesNothingOutside()
    {
        // Up and out, through a link, onto what is no file or not empty, and half an instruction.
        QByteArrayList lines =
            QByteArray("ADD,x,/../outside ADD,x,../outside ADD,x,outside ADD,,/etc ADD,.,/etc ADD,..,/etc "
                       "ADD,../../../etc/passwd,/home/root/tubix4_app ADD,/etc/passwd,/home/root ADD,x,/link "
                       "ADD,../outside/x,/etc OVERRIGHT,victim,/../outside DELETE,victim,/../outside "
                       "DELETE,victim,/link DELETE,../../outside/victim,/etc DELETE,tubix4_app,/home/root "
                       "MKDIR,,/../outside/made MKDIR,,/link/made MKDIR,,/ MKDIR,, RMDIR,,/../outside/empty "
                       "RMDIR,,/link/empty RMDIR,,/link RMDIR,,/ RMDIR,,/home/root/tubix4_app ADD ADD,x "
                       "add,x,/etc")
                .split(' ');
        lines << "ADD,x,/etc" + QByteArray(5000, ' ') << QByteArray("ADD,x,/../outside~x").replace('~', '\0');
        const UpgradeUnit folder(u"/unit"_s);
        const QString host = unit::root().chopped(5);
        QDir().mkpath(host + u"/outside/empty"_s);
        folder.put(u"/../outside/victim"_s, "alive");
        QFile::link(host + u"/outside"_s, unit::path(u"/link"_unit));
        const QByteArrayList before = UpgradeUnit::pictureOf(host);
        for (const QByteArray &line : lines) {
            folder.insertAndConfirm(
                archive({instructions(line + '\n'), member("x", "evil"), member("victim", "evil")}));
            QVERIFY2(UpgradeUnit::pictureOf(host) == before, line.constData());
        }
    }

    void onlyASignedArchiveIsTakenWhereThereIsAKey()
    {
        const UpgradeUnit folder;
        const QString privateKey = unit::path(u"/etc/private.pem"_unit);
        const UnitPath signature = kDcimFolder / u"upgrade.sig"_s;
        QCOMPARE(output("openssl ecparam -name prime256v1 -genkey -noout -out %1", {privateKey}),
                 QByteArray());
        output("openssl ec -in %1 -pubout -out %2", {privateKey, unit::path(kKey)});
        const auto sign = [&] {
            QCOMPARE(output("openssl dgst -sha256 -sign %1 -out %2 %3",
                            {privateKey, unit::path(signature), unit::path(kArchive)}),
                     QByteArray());
        };
        const QByteArray content =
            archive({instructions("OVERRIGHT,tubix4,/home/root/tubix4_app\n"), member("tubix4", "new")});
        folder.put(kArchive, content);
        QVERIFY(!SystemUpgradePresent());
        QVERIFY(exists(kArchive));
        sign();
        QVERIFY(SystemUpgradePresent());
        // Another archive under the same name, after the question.
        folder.put(kArchive, archive({instructions("DELETE,passwd,/etc\n"), member("tubix4", "evil")}));
        ProcessSystemUpgrade();
        QCOMPARE(folder.content(u"/etc/passwd"_s), QByteArray("root"));
        QVERIFY(!exists(signature));
        folder.put(kArchive, content);
        sign();
        folder.insertAndConfirm(content);
        QCOMPARE(folder.content(kApplication), QByteArray("new"));
        QVERIFY(QDir(unit::path(kDcimFolder)).isEmpty());
    }

    void anInterruptedUpgradeIsOfferedAgainUnderItsNewKey()
    {
        const UpgradeUnit folder;
        const QByteArray content = archive(
            {instructions("ADD,upgrade.pub,/home/root/tubix4_app\nOVERRIGHT,tubix4,/home/root/tubix4_app\n"),
             member("upgrade.pub", "another key\n"), member("tubix4", "new"), member("folder/", {}, '5')});
        folder.put(kArchive, content);
        QVERIFY(SystemUpgradePresent());
        // The first sync after the key has been changed ends the process.
        const QString sync = unit::path(u"/usr/bin/sync"_unit);
        QFile::remove(sync);
        folder.put(u"/usr/bin/sync"_s, "#!/bin/sh\nread key < " + unit::path(kKey).encoded() +
                                           " && [ \"$key\" = 'another key' ] && kill -9 $PPID\n");
        QFile::setPermissions(sync, QFile::ReadOwner | QFile::ExeOwner);
        const pid_t child = ::fork();
        if (child == 0) {
            ProcessSystemUpgrade();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        QVERIFY(WIFSIGNALED(status) && exists(u"/home/root/tmp"_s));
        QFile::remove(sync);

        removeUnfinishedUpgrade();
        QVERIFY(!exists(u"/home/root/tmp"_s));
        folder.put(kArchive, content + QByteArray(512, '\0'));
        QVERIFY(!SystemUpgradePresent()); // another archive
        folder.insertAndConfirm(content);
        QVERIFY(!exists(kArchive));
        folder.put(kArchive, content);
        QVERIFY(!SystemUpgradePresent()); // done: the new key counts
    }

    // Wherever the power goes, the application is the old one or the new one, and the archive is offered
    // again until all is done.
    void anUpgradeCutOffLeavesTheOldOneOrTheNewOne()
    {
        const UpgradeUnit folder;
        const QByteArray older(300000, 'o');
        const QByteArray newer(300000, 'n');
        const QByteArray content =
            archive({instructions("OVERRIGHT,tubix4,/home/root/tubix4_app\nMKDIR,,/home/root/newdir\n"),
                     member("tubix4", newer)});
        int moment = 0;
        for (int status = -1; status != 0;) {
            folder.put(kApplication, older);
            folder.put(kArchive, content);
            QVERIFY(SystemUpgradePresent());
            const pid_t child = ::fork();
            if (child == 0) {
                g_stepsLeft = moment + 1;
                ProcessSystemUpgrade();
                ::_exit(0);
            }
            ::waitpid(child, &status, 0);
            const QByteArray now = folder.content(kApplication);
            QVERIFY(now == newer || (now == older && exists(kArchive)));
            QVERIFY(++moment < 1000);
        }
        QVERIFY(moment > 10);
        QCOMPARE(folder.content(kApplication), newer);
        QVERIFY(!exists(u"/home/root/tmp"_s));
    }
};

QTEST_GUILESS_MAIN(TestUpgrade)
#include "test_upgrade.moc"
