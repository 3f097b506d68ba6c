// The fifteen languages of the unit and the files that carry their words.
#pragma once

#include "platform/unit.h"

#include <QString>

enum eLanguages {
    eEnglish,
    eGerman,
    eSpanish,
    eFrench,
    eItalian,
    eDutch,
    ePolish,
    eRussian,
    eFinnish,
    eSwedish,
    eDanish,
    eJapanese,
    eTurkish,
    eHungarian,
    eChinese,
    eTheEnd
};

// The two letters that name the language's files; empty for a value that is no language.
// Japanese is "jp" and Swedish "se".
QString languageAbbreviation(eLanguages language);

// Embedded resource of the keyboard layout, and the catalog file on the unit, of an abbreviation.
QString keyboardLayoutResource(const QString &abbreviation);
UnitPath damageCatelogFile(const QString &abbreviation);
