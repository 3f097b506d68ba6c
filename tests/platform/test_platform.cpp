#include "testunit.h"

#include "platform/attribute.h"
#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"

#include <QFileInfo>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

// Neither path passes for the other, and a file of the host is not opened by its name on the unit.
static_assert(!std::is_constructible_v<UnitPath, HostPath> && !std::is_constructible_v<HostPath, UnitPath>);
static_assert(!std::is_constructible_v<HostPath, QString> && !std::is_convertible_v<QString, UnitPath>);
static_assert(!std::is_constructible_v<QFile, UnitPath> && std::is_constructible_v<QFile, HostPath>);

class TestPlatform : public HeardTest
{
    Q_OBJECT

private slots:
    void noHostCommandIsReachedOnADesk()
    {
        const TestUnit folder({u"/usr/bin"_s});
        QVERIFY(!command::run(u"sh"_s, {u"-c"_s, u"true"_s}).started);
        // A script of the unit finds the unit's programs alone.
        folder.put(u"/usr/bin/look"_s, "#!/bin/sh\nls / 2>/dev/null || echo \"none $1\" >&2\nexit 3\n");
        QFile::setPermissions(unit::path(u"/usr/bin/look"_unit),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const command::Result result = command::run(u"look"_s, {u"a b; $(c)"_s});
        QVERIFY(result.started);
        QCOMPARE(result.exitCode, 3);
        QCOMPARE(result.standardOutput, QByteArray());
        QCOMPARE(result.standardError, QByteArray("none a b; $(c)\n"));
    }

    void aLinkIsFollowedOnTheUnitAlone()
    {
        const QTemporaryDir host;
        const TestUnit folder({u"/etc"_s, u"/data"_s});
        const QString link = unit::path(u"/etc/conf"_unit);
        folder.put(u"/data/conf"_s, "old");
        QFile::link(u"../data/conf"_s, link);
        QVERIFY(savefile::writeThrough(u"/etc/conf"_unit, "new"));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(folder.content(u"/data/conf"_s), QByteArray("new"));
        for (const QString &target : {host.filePath(u"conf"_s), u"nowhere"_s}) {
            QFile::remove(link);
            QFile::link(target, link);
            QFile(host.filePath(u"conf"_s)).open(QIODevice::WriteOnly);
            QVERIFY(savefile::writeThrough(u"/etc/conf"_unit, "newer"));
            QVERIFY(!QFileInfo(link).isSymLink());
            QCOMPARE(QFileInfo(host.filePath(u"conf"_s)).size(), 0);
        }
    }

    void aFailedSaveLeavesTheOldFileAndNothingElse()
    {
        const TestUnit folder({u"/etc"_s});
        folder.put(u"/etc/conf"_s, "old");
        // A limit on file size stands for a full disk: the write comes up short.
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit before = {};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small = {4096, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
        QString error;
        const bool saved = savefile::write(u"/etc/conf"_unit, QByteArray(10000, 'x'), &error);
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!saved);
        QVERIFY(!error.isEmpty());
        QCOMPARE(folder.content(u"/etc/conf"_s), QByteArray("old"));
        QCOMPARE(QDir(unit::path(u"/etc"_unit)).entryList(QDir::Files), QStringList{u"conf"_s});
        QVERIFY(!savefile::write(u"/nowhere/conf"_unit, "x", &error));
    }

    void anAttributeIsNeverMadeAndARegisterSelectionNotWrittenOver()
    {
        const TestUnit folder({u"/sys"_s});
        QVERIFY(!attribute::write(u"/sys/brightness"_unit, "7"));
        QVERIFY(!exists(u"/sys/brightness"_s));
        folder.put(u"/sys/brightness"_s, "100");
        QVERIFY(attribute::write(u"/sys/brightness"_unit, "7"));
        QCOMPARE(folder.content(u"/sys/brightness"_s), QByteArray("7"));
        QVERIFY(attribute::selectRegister(u"/sys/brightness"_unit, "10"));
        QCOMPARE(attribute::read(u"/sys/brightness"_unit, 4), std::optional<QByteArray>("7"));
    }
};

QTEST_GUILESS_MAIN(TestPlatform)
#include "test_platform.moc"
