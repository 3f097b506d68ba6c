// Inspection folders by name: which names and places are allowed, making and renaming. GUI thread. All paths
// are unit paths.
#pragma once

#include <QString>

// Strictly below the base folder.
bool isInspectionFolder(const QString &path);

// True for a name that stays one folder on the card and fits its log's file names: not empty, not hidden, no
// blank at its ends, no character that the card's file system does not take.
bool isFolderName(const QString &name);

// Makes parent/name for an inspection; the base folder stands in for a parent outside of it. Returns the new
// folder, or nothing when the name is not allowed or taken, or the card does not take it.
QString makeInspectionFolder(const QString &parent, const QString &name);

// Gives an inspection folder another name, and its page and text log with it; when one of them cannot be
// renamed all keep their names. Returns the folder's new path, or nothing. When the current folder is it or
// lies in it, it follows.
QString renameInspectionFolder(const QString &folder, const QString &name);

// `path` after `folder` became `renamed`: moved along if it is the folder or lies in it.
QString followRename(const QString &path, const QString &folder, const QString &renamed);
