#include "settings/wifi.h"

namespace {

// The text after the first of the two keys that is there, up to the next white space.
QString wordAfter(const QString &text, const QString &classic, const QString &current)
{
    for (const QString &key : {classic, current}) {
        const qsizetype at = text.indexOf(key);
        if (at < 0)
            continue;
        qsizetype end = at + key.size();
        while (end < text.size() && !text.at(end).isSpace())
            ++end;
        return text.mid(at + key.size(), end - at - key.size());
    }
    return {};
}

} // namespace

namespace wifi {

QString valueAfter(const QString &text, const QString &key)
{
    const qsizetype at = text.indexOf(key);
    if (at < 0)
        return {};
    const qsizetype start = at + key.size();
    const qsizetype end = text.indexOf(QLatin1Char('\n'), start);
    return end < 0 ? text.mid(start) : text.mid(start, end - start);
}

QString lineValue(const QString &text, const QString &key)
{
    QString value = text.startsWith(key) ? valueAfter(text, key) : valueAfter(text, QLatin1Char('\n') + key);
    if (value.isEmpty())
        value = valueAfter(text, key);
    if (value.endsWith(QLatin1Char('\r')))
        value.chop(1);
    return value;
}

Addresses addressesOf(const QString &ifconfigOutput)
{
    return {wordAfter(ifconfigOutput, QStringLiteral("HWaddr "), QStringLiteral("ether ")),
            wordAfter(ifconfigOutput, QStringLiteral("inet addr:"), QStringLiteral("inet "))};
}

QString devicePassPhrase(const QString &macAddress)
{
    constexpr int kTaken = 6;
    return macAddress.size() < kTaken ? QString() : QStringLiteral("TUBX-") + macAddress.right(kTaken);
}

} // namespace wifi
