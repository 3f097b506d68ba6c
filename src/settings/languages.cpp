#include "settings/languages.h"

#include <array>

namespace {

constexpr std::array<const char *, eTheEnd> kAbbreviations = {
    "en", "de", "es", "fr", "it", "nl", "pl", "ru", "fi", "se", "da", "jp", "tr", "hu", "zh",
};

} // namespace

QString languageAbbreviation(eLanguages language)
{
    const auto index = static_cast<size_t>(language);
    return index < kAbbreviations.size() ? QString::fromLatin1(kAbbreviations[index]) : QString();
}

QString keyboardLayoutResource(const QString &abbreviation)
{
    return QStringLiteral(":/keyboardwidget/keyboard_%1.xml").arg(abbreviation);
}

UnitPath damageCatelogFile(const QString &abbreviation)
{
    return u"/home/root/tubix4_app/damagecatelog"_unit / QStringLiteral("damagecat_%1.txt").arg(abbreviation);
}
