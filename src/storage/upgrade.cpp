#include "storage/upgrade.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"
#include "storage/dcim.h"
#include "storage/position.h"
#include "storage/upgradearchive.h"
#include "storage/upgradesteps.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <optional>
#include <string_view>

QString upgradeFileName;

namespace {

Q_LOGGING_CATEGORY(log, "tubix.storage")

constexpr std::string_view kApplicationVersion = "5.03";
constexpr std::string_view kFirstOfCurrentFormat = "5.01";
static_assert(kApplicationVersion >= kFirstOfCurrentFormat); // so archives of the older format are refused
const UnitPath kWorkFolder = u"/home/root/tmp"_unit;
constexpr qint64 kLongestInstructions = 1 << 20;

enum class Format { None, Older, Current };

Format formatOf(const QString &name)
{
    static const QRegularExpression current(QStringLiteral("TUBIX4UPDT[A-Za-z0-9]+"));
    static const QRegularExpression older(QStringLiteral("[A-Za-z]+4UPDT"));
    if (current.match(name).hasMatch())
        return Format::Current;
    return older.match(name).hasMatch() ? Format::Older : Format::None;
}

UnitPath onCard(const QString &name)
{
    return kDcimFolder / name;
}

const UnitPath &signatureFile()
{
    static const UnitPath file = onCard(QStringLiteral("upgrade.sig"));
    return file;
}

// True when `name` may be offered.
bool isOffered(const QString &name)
{
    switch (formatOf(name)) {
    case Format::None:
        return false;
    case Format::Older:
        qCDebug(log).noquote() << "TUBIX4 old upgrade file found:" << name;
        qCDebug(log) << "Not a valid upgrade file for new app version. Delete the file";
        QFile::remove(unit::path(onCard(name)));
        return false;
    case Format::Current:
        break;
    }
    qCDebug(log).noquote() << "TUBIX4 new upgrade file found:" << name;
    if (upgradearchive::isTrusted(onCard(name), signatureFile()))
        return true;
    qCDebug(log) << "The upgrade file has no valid signature. It is left alone";
    return false;
}

// What an upgrade that was cut off has left, a link instead of a folder too.
void removeWorkFolder()
{
    const HostPath host = unit::path(kWorkFolder);
    if (QFileInfo(host).isSymLink())
        QFile::remove(host);
    else
        removeDir(kWorkFolder);
}

// The instruction file's content, or why there is none.
std::optional<QByteArray> unpack(const UnitPath &archive, QString *reason)
{
    *reason = upgradearchive::isTrusted(archive, signatureFile())
                  ? upgradearchive::refusal(archive, kWorkFolder)
                  : QStringLiteral("the signature does not fit"); // another card than the one asked about
    if (!reason->isEmpty())
        return std::nullopt;
    const command::Result tar =
        command::run(QStringLiteral("tar"),
                     {QStringLiteral("-xpf"), unit::path(archive), QStringLiteral("--no-same-owner"),
                      QStringLiteral("-C"), unit::path(kWorkFolder)});
    if (!tar.started || tar.exitCode != 0) {
        *reason = QStringLiteral("tar failed: ") + QString::fromLocal8Bit(tar.standardError.trimmed());
        return std::nullopt;
    }
    // Read whole before the first command: none of them can change what is left to do.
    return savefile::read(kWorkFolder / QStringLiteral("tubix4_update.txt"), kLongestInstructions, reason);
}

} // namespace

bool SystemUpgradePresent()
{
    const QFileInfoList files = QDir(unit::path(kDcimFolder)).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        if (file.size() > 0 && isOffered(file.fileName())) {
            upgradeFileName = file.fileName();
            return true;
        }
    }
    return false;
}

void ProcessSystemUpgrade()
{
    qCDebug(log) << "*** System Update File Found. ***";
    removeWorkFolder();
    QDir().mkdir(unit::path(kWorkFolder));
    if (upgradeFileName.isEmpty())
        return;
    const UnitPath archive = onCard(upgradeFileName);
    QString reason;
    if (const auto instructions = unpack(archive, &reason)) {
        upgradearchive::markBegun(archive);
        for (const upgradesteps::Step &step : upgradesteps::read(*instructions)) {
            if (!upgradesteps::carryOut(step, kWorkFolder))
                qCWarning(log) << "upgrade: not done:" << step.fileName << step.folder;
        }
    } else {
        qCWarning(log) << "upgrade: nothing was changed:" << reason;
    }
    // Last of all: cut off before, it is offered again.
    removeWorkFolder();
    QFile::remove(unit::path(signatureFile()));
    QFile::remove(unit::path(archive));
    command::run(QStringLiteral("sync"));
    upgradearchive::markDone();
}

void removeUnfinishedUpgrade()
{
    if (const QFileInfo folder(unit::path(kWorkFolder)); folder.exists() || folder.isSymLink())
        removeWorkFolder();
}
