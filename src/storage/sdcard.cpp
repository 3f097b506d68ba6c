#include "storage/sdcard.h"

#include "platform/command.h"
#include "platform/mounttable.h"

#include <QRegularExpression>
#include <QStringList>

tSDcardInfo SDCardInfo;

namespace {

constexpr double kGibibytesOfKilobyte = 9.536743e-7;

QString gibibytes(quint64 kilobytes)
{
    return QStringLiteral("%1").arg(double(kilobytes) * kGibibytesOfKilobyte, 4, 'f', 2, QLatin1Char('0'));
}

void setFigures(const sSDcardInfo &card)
{
    const qint8 statechanged = SDCardInfo.statechanged;
    SDCardInfo = card;
    SDCardInfo.statechanged = statechanged;
}

} // namespace

sSDcardInfo cardInDfReport(const QString &report)
{
    const qsizetype at = report.indexOf(kCardDevice.text());
    if (at < 0)
        return {};
    static const QRegularExpression whiteSpace(QStringLiteral("\\s+"));
    const QStringList fields = report.mid(at).split(whiteSpace);
    if (fields.size() < 5)
        return {};
    sSDcardInfo card;
    card.inserted = 1;
    card.size = fields[1].toULongLong();
    card.free = fields[2].toULongLong();
    card.avail = fields[3].toULongLong();
    card.percentFull = static_cast<quint8>(fields[4].chopped(fields[4].isEmpty() ? 0 : 1).toUShort());
    return card;
}

bool mountTableShowsCard()
{
    return mounttable::shows(kCardDevice, kCardMountPoint);
}

void mountCard()
{
    command::run(QStringLiteral("mount"), {QStringLiteral("-t"), QStringLiteral("tubix4card"),
                                           kCardDevice.text(), kCardMountPoint.text()});
}

void getSDCardInfo()
{
    setFigures(cardInDfReport(QString::fromLocal8Bit(command::run(QStringLiteral("df")).standardOutput)));
}

bool isDiskFull()
{
    getSDCardInfo();
    return SDCardInfo.avail < kLeastAvailable;
}

void flagCorruptSDCard()
{
    setFigures({});
}

QString cardSummary(const sSDcardInfo &card)
{
    return QStringLiteral("%1/%2 GB").arg(gibibytes(card.avail), gibibytes(card.size));
}
