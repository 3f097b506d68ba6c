// The damage catalog of a language: one entry a line, in a text file on the unit that the user may change.
// Files are written whole or not at all, and bytes that a change does not touch stay as they are. GUI thread.
#pragma once

#include "platform/unit.h"

#include "settings/languages.h"

#include <QStringList>

#include <optional>

namespace damagecatelog {

// The entries in their order, without empty lines; a line that is not UTF-8 is read as Latin-1. Nothing when
// the file cannot be read, with the reason in `error`.
std::optional<QStringList> entries(const UnitPath &unitPath, QString *error = nullptr);

// Adds `entry` without the blanks around it, and a line feed, to the end of the file, which is made when it
// is not there. Where the last line has no line feed, the entry continues it. False when nothing was written.
bool append(const UnitPath &unitPath, const QString &entry);

// Cuts the first occurrence of `entry`, wherever it stands, and the line feed after it. False when it is not
// there or the file could not be written.
bool removeFirst(const UnitPath &unitPath, const QString &entry);

// "English": the language as the event log names it. Empty for the languages that have no reset (Turkish,
// Hungarian, Chinese).
QString resetName(int languageIdx);

} // namespace damagecatelog

// Replaces the catalog of the language on the unit by the one that came with the application. False, and
// nothing changed, for a language without a reset or when it could not be written.
bool restoreFactoryCatelog(int languageIdx);
