// The service file that names the fitted reel and tells whether a mini module is present.
#pragma once

#include "platform/unit.h"
#include "settings/systemsettings.h"

#include <QByteArray>

namespace imagerconfigurationfile {

// Its name, and the file on the card that asks for its dialog.
UnitPath path();
UnitPath trigger();

bool exists();
bool isAskedFor(); // the trigger lies on the card

// Replaces the file as a whole; false when it cannot be written.
bool write(bool reelOf30m, bool miniModule);

struct Fitted
{
    eImagerTypes reel = eMinimodule_10m; // none told yet
    bool hasMiniModule = false;
};

// False when the file cannot be read. What it does not tell stays in `fitted` as it was.
bool read(Fitted &fitted);

// The same for the file's text. A value counts by what it contains ("300" is 30, "10" is absent); lines that
// are not known, or have no comma, are left out.
void parse(const QByteArray &text, Fitted &fitted);

} // namespace imagerconfigurationfile
