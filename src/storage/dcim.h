// The card's folder tree. GUI thread.
#pragma once

#include "platform/unit.h"

// Makes sure that the tree for `folder` is there (empty: today's folder) and makes it the current one; what a
// cut write left torn in its logs is mended. A card that takes nothing leaves the tree incomplete, silently.
void CreateDCIMStructure(const UnitPath &folder);

// For a card that comes back from a host or from outside: makes the current folder again, with those above it
// up to the base folder, and gives it what it lacks (thumbnails, the log's page and pictures). False when it
// is not there afterwards.
bool completeCurrentFolder();

// Before a capture: true when the current folder is there, made again when somebody took it away. A page that
// was taken out of it stays out.
bool restoreCurrentFolder();

// Deletes the folder with everything in it; a link is deleted, not followed. False at the first failure. A
// folder that is not there is fine.
bool removeDir(const UnitPath &dirName);
