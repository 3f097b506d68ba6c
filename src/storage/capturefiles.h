// Deleting and renaming captures together with what belongs to them: a picture's voice note, a film's stored
// thumbnail, always inside one folder. GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

namespace capturefiles {

QString baseOf(const QString &fileName);            // "TUBX0007.jpg" -> "TUBX0007"
QString extensionOf(const QString &fileName);       // "TUBX0007.jpg" -> ".jpg"
QString noteOf(const QString &fileName);            // "TUBX0007.jpg" -> "TUBX0007.wav"
QString storedThumbnailOf(const QString &fileName); // "TUBX0007.avi" -> ".thumbs/TUBX0007.jpg"

// Deletes the capture, with a film's stored thumbnail. False when it is still there.
bool remove(const UnitPath &folder, const QString &fileName);

// Deletes the note of a capture. A note that belongs to a picture of the same name stays when `fileName` is
// the film. No note: nothing.
void removeNote(const UnitPath &folder, const QString &fileName);

// The name as it is used: without surrounding blanks and trailing dots. Empty when it is none that a card, a
// folder or a customer's computer can carry: separators and the characters that FAT forbids, a leading dot,
// the name of a device there (CON, com1.x), more than 255 bytes with `extension` (or ".wav").
QString usableName(const QString &typed, const QString &extension);

// What a rename did; the new names only where it was done.
struct Renamed
{
    bool capture = false;
    bool note = false;
};

// Gives the capture and (`withNote`) its note the base name `name`. All or nothing: when one of the two new
// names is taken or cannot be given, both files keep their names. A film's stored thumbnail goes along.
Renamed rename(const UnitPath &folder, const QString &fileName, const QString &name, bool withNote);

} // namespace capturefiles
