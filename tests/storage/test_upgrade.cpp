#include "testunit.h"

#include "storage/dcim.h"
#include "storage/upgrade.h"
#include "storage/upgradesteps.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString kApplication = u"/home/root/tubix4_app/tubix4"_s;
const QString kArchive = u"/media/mmcblk1p1/DCIM/TUBIX4UPDT504.tar"_s;
const QString kKey = u"/home/root/tubix4_app/upgrade.pub"_s;

int runHost(const QString &program, const QStringList &arguments, const QString &folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    process.waitForFinished(-1);
    return process.exitCode();
}

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
    UpgradeUnit() : TestUnit({u"/home/root/tubix4_app"_s, u"/usr/bin"_s, u"/etc"_s, kDcimFolder})
    {
        for (const QString &program : {u"tar"_s, u"openssl"_s})
            QFile::link(QStandardPaths::findExecutable(program), unit::path(u"/usr/bin/"_s + program));
        QFile::link(QStandardPaths::findExecutable(u"true"_s), unit::path(u"/usr/bin/sync"_s));
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

    // Everything of the unit but what an upgrade may always touch: name, kind, rights, content.
    QByteArrayList picture() const
    {
        QByteArrayList lines;
        QDirIterator files(unit::root(),
                           QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = unit::fromHost(files.next());
            struct stat info = {};
            ::lstat(QFile::encodeName(unit::path(path)).constData(), &info);
            if (!path.startsWith(u"/home/root/tmp"_s) && !path.startsWith(kDcimFolder + u'/'))
                lines << path.toUtf8() + ' ' + QByteArray::number(info.st_mode, 8) + ' ' +
                             (S_ISREG(info.st_mode) ? this->content(path) : QByteArray());
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }
};

} // namespace

class TestUpgrade : public QObject
{
    Q_OBJECT

private slots:
    void anArchiveIsFoundByItsName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("found");
        QTest::addColumn<bool>("stays");
        QTest::newRow("current") << u"TUBIX4UPDT504"_s << QByteArray("x") << true << true;
        QTest::newRow("within a name") << u"my TUBIX4UPDT504.tar"_s << QByteArray("x") << true << true;
        QTest::newRow("empty file") << u"TUBIX4UPDT504"_s << QByteArray() << false << true;
        QTest::newRow("older format") << u"PIPE4UPDT.tar"_s << QByteArray("x") << false << false;
        QTest::newRow("current prefix, older form")
            << u"TUBIX4UPDT.tar"_s << QByteArray("x") << false << false;
        QTest::newRow("lower case") << u"tubix4updt504"_s << QByteArray("x") << false << true;
        QTest::newRow("a computer's hidden shadow")
            << u"._TUBIX4UPDT504"_s << QByteArray("x") << false << true;
    }
    void anArchiveIsFoundByItsName()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, content);
        const UpgradeUnit folder;
        const QString path = kDcimFolder + u'/' + name;
        folder.put(path, content);
        QTEST(SystemUpgradePresent(), "found");
        QTEST(QFileInfo::exists(unit::path(path)), "stays");
    }

    void anArchiveIsCarriedOut()
    {
        const UpgradeUnit folder;
        folder.put(u"/home/root/tubix4_app/gone.txt"_s, "x");
        QDir().mkdir(unit::path(u"/home/root/emptied"_s));
        QDir().mkpath(unit::path(u"/home/root/tmp/left/over"_s)); // of an upgrade that was cut off
        QTemporaryDir made;
        const auto add = [&](const QString &name, const QByteArray &content) {
            QFile file(made.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        };
        add(u"tubix4"_s, "new");
        QFile::setPermissions(made.filePath(u"tubix4"_s), QFile::Permissions(0x5755));
        QDir().mkdir(made.filePath(u"sub"_s));
        add(u"sub/page.txt"_s, "page");
        add(u"tubix4_update.txt"_s, " OVERRIGHT , tubix4 , /home/root/tubix4_app \r\n"
                                    "MKDIR,,/home/root/newdir/\r\n"
                                    "ADD,sub/page.txt,/home/root\n" // no such folder: only this one fails
                                    "ADD,missing,/etc\n"
                                    "nothing that we know\n"
                                    "DELETE,gone.txt,/home/root/tubix4_app\n"
                                    "RMDIR,,/home/root/emptied");
        QCOMPARE(runHost(u"tar"_s, {u"-cf"_s, unit::path(kArchive), u"."_s}, made.path()), 0);
        QFile running(unit::path(kApplication)); // as the program that is running
        QVERIFY(running.open(QIODevice::ReadOnly));
        QVERIFY(SystemUpgradePresent());
        ProcessSystemUpgrade();
        QCOMPARE(folder.content(kApplication), QByteArray("new"));
        QVERIFY(QFileInfo(unit::path(kApplication)).isExecutable());
        QCOMPARE(running.readAll(), QByteArray("old"));
        QVERIFY(QFileInfo(unit::path(u"/home/root/newdir"_s)).isDir());
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/tubix4_app/gone.txt"_s)));
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/emptied"_s)));
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/tmp"_s)));
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
        const QByteArrayList before = folder.picture();
        folder.insertAndConfirm(content);
        QCOMPARE(folder.picture(), before);
        QVERIFY(!SystemUpgradePresent());
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/tmp"_s)));
    }

    void aHostileInstructionReachesNothingOutside_data()
    {
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const char *line) { QTest::newRow(line) << QByteArray(line); };
        row("ADD,x,/../outside");
        row("ADD,x,../outside");
        row("ADD,x,outside");
        row("ADD,,/etc");
        row("ADD,.,/etc");
        row("ADD,..,/etc");
        row("ADD,../../../etc/passwd,/home/root/tubix4_app");
        row("ADD,/etc/passwd,/home/root");
        row("ADD,x,/link");
        row("ADD,../outside/x,/etc");
        row("OVERRIGHT,victim,/../outside");
        row("DELETE,victim,/../outside");
        row("DELETE,victim,/link");
        row("DELETE,../../outside/victim,/etc");
        row("DELETE,tubix4_app,/home/root"); // a folder
        row("MKDIR,,/../outside/made");
        row("MKDIR,,/link/made");
        row("MKDIR,,/");
        row("MKDIR,,");
        row("RMDIR,,/../outside/empty");
        row("RMDIR,,/link/empty");
        row("RMDIR,,/link");
        row("RMDIR,,/");
        row("RMDIR,,/home/root/tubix4_app"); // not empty
        row("ADD");
        row("ADD,x");
        row("add,x,/etc");
        QTest::newRow("overlong line") << QByteArray("ADD,x,/etc") + QByteArray(5000, ' ');
    }
    void aHostileInstructionReachesNothingOutside()
    {
        QFETCH(const QByteArray, line);
        // The unit is a folder of `host`; beside it lies what is not the unit's.
        const UpgradeUnit folder;
        const QString host = unit::root();
        unit::setRoot(host + u"/unit"_s);
        for (const QString &name : {u"/home/root/tubix4_app"_s, u"/usr/bin"_s, u"/etc"_s, kDcimFolder})
            QDir().mkpath(unit::path(name));
        QFile::link(QStandardPaths::findExecutable(u"tar"_s), unit::path(u"/usr/bin/tar"_s));
        folder.put(kApplication, "old");
        folder.put(u"/etc/passwd"_s, "root");
        QDir().mkpath(host + u"/outside/empty"_s);
        folder.put(u"/../outside/victim"_s, "alive");
        QFile::link(host + u"/outside"_s, unit::path(u"/link"_s));
        const auto picture = [&] {
            unit::setRoot(host);
            QByteArrayList lines = folder.picture();
            unit::setRoot(host + u"/unit"_s);
            lines.removeIf([](const QByteArray &l) { return l.contains("/tmp") || l.contains("/DCIM"); });
            return lines;
        };
        const QByteArrayList before = picture();
        folder.insertAndConfirm(
            archive({instructions(line + '\n'), member("x", "evil"), member("victim", "evil")}));
        QCOMPARE(picture(), before);
        unit::setRoot(host);
    }

    void onlyASignedArchiveIsTakenWhereThereIsAKey()
    {
        const UpgradeUnit folder;
        const QString privateKey = unit::path(u"/etc/private.pem"_s);
        QCOMPARE(runHost(u"openssl"_s, {u"ecparam"_s, u"-name"_s, u"prime256v1"_s, u"-genkey"_s, u"-noout"_s,
                                        u"-out"_s, privateKey}),
                 0);
        QCOMPARE(
            runHost(u"openssl"_s, {u"ec"_s, u"-in"_s, privateKey, u"-pubout"_s, u"-out"_s, unit::path(kKey)}),
            0);
        const QByteArray content =
            archive({instructions("OVERRIGHT,tubix4,/home/root/tubix4_app\n"), member("tubix4", "new")});
        folder.put(kArchive, content);
        QVERIFY(!SystemUpgradePresent());
        QVERIFY(QFileInfo::exists(unit::path(kArchive)));
        const QString signature = kDcimFolder + u"/upgrade.sig"_s;
        QCOMPARE(runHost(u"openssl"_s, {u"dgst"_s, u"-sha256"_s, u"-sign"_s, privateKey, u"-out"_s,
                                        unit::path(signature), unit::path(kArchive)}),
                 0);
        QVERIFY(SystemUpgradePresent());
        // Another archive under the same name, after the question.
        folder.put(kArchive, archive({instructions("DELETE,passwd,/etc\n"), member("tubix4", "evil")}));
        ProcessSystemUpgrade();
        QCOMPARE(folder.content(u"/etc/passwd"_s), QByteArray("root"));
        QVERIFY(!QFileInfo::exists(unit::path(signature)));
        folder.put(kArchive, content);
        QVERIFY(!SystemUpgradePresent());
        QCOMPARE(runHost(u"openssl"_s, {u"dgst"_s, u"-sha256"_s, u"-sign"_s, privateKey, u"-out"_s,
                                        unit::path(signature), unit::path(kArchive)}),
                 0);
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
        const QString sync = unit::path(u"/usr/bin/sync"_s);
        QFile::remove(sync);
        folder.put(u"/usr/bin/sync"_s, "#!/bin/sh\nread key < " + unit::path(kKey).toUtf8() +
                                           " && [ \"$key\" = 'another key' ] && kill -9 $PPID\n");
        QFile::setPermissions(sync, QFile::ReadOwner | QFile::ExeOwner);
        const pid_t child = ::fork();
        if (child == 0) {
            ProcessSystemUpgrade();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        QVERIFY(WIFSIGNALED(status) && QFileInfo::exists(unit::path(u"/home/root/tmp"_s)));
        QFile::remove(sync);

        removeUnfinishedUpgrade();
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/tmp"_s)));
        folder.put(kArchive, content + QByteArray(512, '\0'));
        QVERIFY(!SystemUpgradePresent()); // another archive
        folder.insertAndConfirm(content);
        QVERIFY(!QFileInfo::exists(unit::path(kArchive)));
        folder.put(kArchive, content);
        QVERIFY(!SystemUpgradePresent()); // done: the new key counts
    }

    // Killed at 60 moments from its begin to its end: the application is the old one or the new one, and the
    // archive is offered again until all is done.
    void anUpgradeCutOffLeavesTheOldOneOrTheNewOne()
    {
        const UpgradeUnit folder;
        const QByteArray older(3 << 20, 'o');
        const QByteArray newer(3 << 20, 'n');
        const QByteArray content = archive({instructions("OVERRIGHT,tubix4,/home/root/tubix4_app\n"
                                                         "MKDIR,,/home/root/newdir\n"),
                                            member("tubix4", newer)});
        qint64 whole = 0;
        int cutOff = 0;
        int stillOld = 0;
        for (int moment = 0; moment <= 60; ++moment) {
            folder.put(kApplication, older);
            folder.put(kArchive, content);
            QVERIFY(SystemUpgradePresent());
            QElapsedTimer clock;
            clock.start();
            const pid_t child = ::fork();
            if (child == 0) {
                ProcessSystemUpgrade();
                ::_exit(0);
            }
            if (moment > 0) {
                ::usleep(useconds_t(whole * moment / 60));
                ::kill(child, SIGKILL);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            if (moment == 0)
                whole = clock.nsecsElapsed() / 1000;
            const QByteArray now = folder.content(kApplication);
            QVERIFY(now == older || now == newer);
            cutOff += WIFSIGNALED(status);
            stillOld += now == older;
            if (WIFSIGNALED(status) && !QFileInfo::exists(unit::path(kArchive)))
                QCOMPARE(now, newer);
            if (now == older)
                QVERIFY(QFileInfo::exists(unit::path(kArchive)));
        }
        QVERIFY2(cutOff > 10 && stillOld > 0 && stillOld < 61,
                 qPrintable(u"%1 %2"_s.arg(cutOff).arg(stillOld)));
        folder.insertAndConfirm(content);
        QCOMPARE(folder.content(kApplication), newer);
        QVERIFY(!QFileInfo::exists(unit::path(u"/home/root/tmp"_s)));
    }
};

QTEST_GUILESS_MAIN(TestUpgrade)
#include "test_upgrade.moc"
