#include "settings/damagecatelogfile.h"

#include "platform/savefile.h"
#include "platform/unit.h"

#include <QFile>
#include <QFileInfo>

#include <array>

namespace {

constexpr qint64 kLargestCatalog = 16 << 20; // bytes

constexpr std::array kResetNames = {"English", "German",  "Spanish", "French",  "Italian", "Dutch",
                                    "Polish",  "Russian", "Finnish", "Swedish", "Danish",  "Japanese"};

// The file as text; a desk computer's line ends become the unit's.
std::optional<QString> readText(const QString &unitPath, QString *error = nullptr)
{
    const std::optional<QByteArray> content = savefile::read(unitPath, kLargestCatalog, error);
    if (!content)
        return std::nullopt;
    return QString::fromUtf8(*content).replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

} // namespace

namespace damagecatelog {

std::optional<QStringList> entries(const QString &unitPath, QString *error)
{
    const std::optional<QString> text = readText(unitPath, error);
    if (!text)
        return std::nullopt;
    return text->split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool append(const QString &unitPath, const QString &entry)
{
    const QString line = entry.trimmed() + QLatin1Char('\n');
    std::optional<QString> text = readText(unitPath);
    if (!text && !QFileInfo::exists(unit::path(unitPath)))
        text = QString();
    return text && savefile::write(unitPath, (*text + line).toUtf8());
}

bool removeFirst(const QString &unitPath, const QString &entry)
{
    std::optional<QString> text = readText(unitPath);
    const qsizetype at = text && !entry.isEmpty() ? text->indexOf(entry) : -1;
    return at >= 0 && savefile::write(unitPath, text->remove(at, entry.size() + 1).toUtf8());
}

QString resetName(int languageIdx)
{
    const auto index = size_t(languageIdx);
    return index < kResetNames.size() ? QString::fromLatin1(kResetNames[index]) : QString();
}

} // namespace damagecatelog

bool restoreFactoryCatelog(int languageIdx)
{
    if (damagecatelog::resetName(languageIdx).isEmpty())
        return false;
    const QString abbreviation = languageAbbreviation(static_cast<eLanguages>(languageIdx));
    QFile factory(QStringLiteral(":/damagecatelog/damagecatelog/damagecat_%1.txt").arg(abbreviation));
    return factory.open(QIODevice::ReadOnly) &&
           savefile::write(damageCatelogFile(abbreviation), factory.readAll());
}
