#include "storage/upgradearchive.h"

#include "platform/command.h"
#include "platform/savefile.h"
#include "platform/unit.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>

namespace {

const UnitPath kPublicKey = u"/home/root/tubix4_app/upgrade.pub"_unit;

// The checksum of the archive that is being carried out.
const UnitPath kBegun = u"/home/root/tubix4_app/upgrade.begun"_unit;

constexpr qint64 kMagicAt = 257;  // of "ustar" in a plain archive
constexpr qint64 kEndMark = 1024; // zero bytes that end a plain archive
constexpr int kSizeField = 2;     // of tar's long listing: rights, owner, size

struct Listing
{
    bool isReadable = false;
    QList<QByteArray> lines;
};

Listing list(const UnitPath &archive, const QStringList &options)
{
    const command::Result tar =
        command::run(QStringLiteral("tar"), options + QStringList{unit::path(archive)});
    QList<QByteArray> lines = tar.standardOutput.split('\n');
    lines.removeAll(QByteArray());
    return {tar.started && tar.exitCode == 0, lines};
}

// tar takes an archive that was cut between two members for a whole one.
bool lacksItsEnd(const UnitPath &archive)
{
    QFile file(unit::path(archive));
    if (!file.open(QIODevice::ReadOnly) || !file.seek(kMagicAt) || file.read(5) != "ustar")
        return false; // compressed: the packer's own check tells
    return !file.seek(file.size() - kEndMark) || file.read(kEndMark) != QByteArray(kEndMark, '\0');
}

bool leavesTheFolder(const QByteArray &member)
{
    return member.startsWith('/') || member.split('/').contains("..");
}

QByteArray checksum(const UnitPath &archive)
{
    QFile file(unit::path(archive));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
}

bool wasBegun(const UnitPath &archive)
{
    const auto begun = savefile::read(kBegun, 1024);
    return begun && !begun->isEmpty() && *begun == checksum(archive);
}

qint64 contentSize(const QList<QByteArray> &longLines)
{
    qint64 sum = 0;
    for (const QByteArray &line : longLines) {
        const qint64 size = line.simplified().split(' ').value(kSizeField).toLongLong();
        sum = std::min<qint64>(sum + std::max<qint64>(0, size), qint64(1) << 50);
    }
    return sum;
}

} // namespace

namespace upgradearchive {

QString refusal(const UnitPath &unitPath, const UnitPath &workFolder)
{
    // Two listings: the short one has names and nothing else on a line, the long one begins with the kind.
    const Listing names = list(unitPath, {QStringLiteral("-tf")});
    const Listing members = list(unitPath, {QStringLiteral("--numeric-owner"), QStringLiteral("-tvf")});
    if (!names.isReadable || !members.isReadable || names.lines.isEmpty() || lacksItsEnd(unitPath))
        return QStringLiteral("the archive is damaged");
    if (std::any_of(names.lines.begin(), names.lines.end(), leavesTheFolder))
        return QStringLiteral("a name leads out of the work folder");
    const auto isNoFile = [](const QByteArray &line) { return line[0] != '-' && line[0] != 'd'; };
    if (std::any_of(members.lines.begin(), members.lines.end(), isNoFile))
        return QStringLiteral("a member is neither file nor folder");
    // Unpacked, and once more where the files go.
    const QStorageInfo storage(QFileInfo(unit::path(workFolder)).path());
    if (2 * contentSize(members.lines) > storage.bytesAvailable())
        return QStringLiteral("no room for the content");
    return {};
}

bool isTrusted(const UnitPath &unitPath, const UnitPath &signaturePath)
{
    if (!QFileInfo::exists(unit::path(kPublicKey)) || wasBegun(unitPath))
        return true;
    const command::Result check = command::run(
        QStringLiteral("openssl"),
        {QStringLiteral("dgst"), QStringLiteral("-sha256"), QStringLiteral("-verify"), unit::path(kPublicKey),
         QStringLiteral("-signature"), unit::path(signaturePath), unit::path(unitPath)});
    return check.started && check.exitCode == 0;
}

void markBegun(const UnitPath &unitPath)
{
    savefile::write(kBegun, checksum(unitPath));
}

void markDone()
{
    QFile::remove(unit::path(kBegun));
}

} // namespace upgradearchive
