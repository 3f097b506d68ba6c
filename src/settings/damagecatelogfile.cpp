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

// A line as it is shown: UTF-8, or what an older editor on a desk computer made of it.
QString shown(const QByteArray &line)
{
    const QByteArray text = line.endsWith('\r') ? line.chopped(1) : line;
    return text.isValidUtf8() ? QString::fromUtf8(text) : QString::fromLatin1(text);
}

// What goes with an entry cut from the front of `rest`: one character, or the line end of a desk computer.
qsizetype cutBehind(const QByteArray &rest, bool utf8)
{
    if (rest.startsWith("\r\n"))
        return 2;
    qsizetype size = rest.isEmpty() ? 0 : 1;
    while (utf8 && size < rest.size() && (uchar(rest[size]) & 0xc0) == 0x80)
        ++size;
    return size;
}

} // namespace

namespace damagecatelog {

std::optional<QStringList> entries(const UnitPath &unitPath, QString *error)
{
    const std::optional<QByteArray> content = savefile::read(unitPath, kLargestCatalog, error);
    if (!content)
        return std::nullopt;
    QStringList texts;
    for (const QByteArray &line : content->split('\n'))
        texts << shown(line);
    texts.removeAll(QString());
    return texts;
}

bool append(const UnitPath &unitPath, const QString &entry)
{
    std::optional<QByteArray> content = savefile::read(unitPath, kLargestCatalog);
    if (!content && !QFileInfo::exists(unit::path(unitPath)))
        content = QByteArray();
    return content && savefile::writeThrough(unitPath, *content + entry.trimmed().toUtf8() + '\n');
}

bool removeFirst(const UnitPath &unitPath, const QString &entry)
{
    std::optional<QByteArray> content = savefile::read(unitPath, kLargestCatalog);
    if (!content || entry.isEmpty())
        return false;
    qsizetype start = 0;
    for (const QByteArray &line : content->split('\n')) {
        if (shown(line).contains(entry)) {
            const bool utf8 = line.isValidUtf8();
            const QByteArray bytes = utf8 ? entry.toUtf8() : entry.toLatin1();
            const qsizetype at = start + line.indexOf(bytes);
            const qsizetype behind = cutBehind(content->mid(at + bytes.size()), utf8);
            return savefile::writeThrough(unitPath, content->remove(at, bytes.size() + behind));
        }
        start += line.size() + 1;
    }
    return false;
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
