// The settings file: seven numbers as XML.
#pragma once

#include "settings/systemsettings.h"

#include <QByteArray>

class QXmlStreamReader;

namespace settingsfile {

inline constexpr qint64 kLargestFile = 64LL * 1024; // bytes; ours have about 400

// What a unit leaves the factory with.
PersistentSettings factorySettings();

// Reads the seven children of <settings> that are known into `settings`, in any order; others are skipped and
// missing ones leave their field alone. False, with the reader's error telling why, for a foreign root
// element or a document type declaration: nothing of the file is taken then. A file that breaks off keeps
// what was read before the break.
bool parse(QXmlStreamReader &reader, PersistentSettings &settings);

// The file's bytes.
QByteArray format(const PersistentSettings &settings);

} // namespace settingsfile
