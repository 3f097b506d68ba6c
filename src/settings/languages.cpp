#include "settings/languages.h"

#include <array>

namespace {

struct Language
{
    const char *abbreviation;
    const char *englishName;
};

// In the order of eLanguages.
constexpr std::array<Language, eTheEnd> kLanguages = {{{"en", "English"},
                                                       {"de", "German"},
                                                       {"es", "Spanish"},
                                                       {"fr", "French"},
                                                       {"it", "Italian"},
                                                       {"nl", "Dutch"},
                                                       {"pl", "Polish"},
                                                       {"ru", "Russian"},
                                                       {"fi", "Finnish"},
                                                       {"se", "Swedish"},
                                                       {"da", "Danish"},
                                                       {"jp", "Japanese"},
                                                       {"tr", "Turkish"},
                                                       {"hu", "Hungarian"},
                                                       {"zh", "Chinese"}}};

QString textOf(eLanguages language, const char *Language::*text)
{
    const auto index = static_cast<size_t>(language);
    return index < kLanguages.size() ? QString::fromLatin1(kLanguages[index].*text) : QString();
}

} // namespace

QString languageAbbreviation(eLanguages language)
{
    return textOf(language, &Language::abbreviation);
}

QString languageEnglishName(eLanguages language)
{
    return textOf(language, &Language::englishName);
}

QString keyboardLayoutResource(const QString &abbreviation)
{
    return QStringLiteral(":/keyboardwidget/keyboard_%1.xml").arg(abbreviation);
}

QString damageCatelogFile(const QString &abbreviation)
{
    return QStringLiteral("/home/root/tubix4_app/damagecatelog/damagecat_%1.txt").arg(abbreviation);
}
