// Inspection folders by name: which names and places are allowed, making and renaming. GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

// Strictly below the base folder.
bool isInspectionFolder(const UnitPath &path);

// The name as it is used, by the rules of file names (capturefiles::usableName); empty for one that does not
// stay one folder on the card or does not fit its log's file names.
QString folderName(const QString &typed);

// Makes parent/`typed` for an inspection; the base folder stands in for a parent outside of it. Returns the
// new folder, or nothing when the name is not allowed or taken, or the card does not take it.
UnitPath makeInspectionFolder(const UnitPath &parent, const QString &typed);

// Gives an inspection folder another name, and its page and text log with it; when one of them cannot be
// renamed all keep their names. Returns the folder's new path, or nothing. When the current folder is it or
// lies in it, it follows.
UnitPath renameInspectionFolder(const UnitPath &folder, const QString &typed);

// `path` after `folder` became `renamed`: moved along if it is the folder or lies in it.
UnitPath followRename(const UnitPath &path, const UnitPath &folder, const UnitPath &renamed);
