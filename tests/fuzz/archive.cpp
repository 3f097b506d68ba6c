// An upgrade's archive, looked at and unpacked by the system's tar: nothing beside the work folder changes.
#include "fuzz.h"
#include "platform/command.h"
#include "storage/upgradearchive.h"

#include <QStandardPaths>

#include <filesystem>

FUZZ(input)
{
    static const FuzzUnit unit({QStringLiteral("/usr/bin"), QStringLiteral("/work")});
    static const bool isLinked =
        QFile::link(QStandardPaths::findExecutable(QStringLiteral("tar")), unit::path(u"/usr/bin/tar"_unit));
    require(isLinked);
    const UnitPath archive = u"/archive.tar"_unit, work = u"/work"_unit;
    FuzzUnit::put(archive, input);
    if (upgradearchive::refusal(archive, work).isEmpty()) {
        command::run(QStringLiteral("tar"),
                     {QStringLiteral("-xpf"), unit::path(archive), QStringLiteral("--no-same-owner"),
                      QStringLiteral("-C"), unit::path(work)});
        std::filesystem::remove_all(unit::path(work).encoded().toStdString()); // any bytes may be a name
        require(QDir().mkdir(unit::path(work)));
    }
    require(unit.isAlone() &&
            QDir(unit::root()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden) ==
                QStringList({QStringLiteral("archive.tar"), QStringLiteral("usr"), QStringLiteral("work")}));
}
