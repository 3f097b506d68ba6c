// What this process brings onto its disk.
#pragma once

#include <QString>
#include <QStringList>

// The files and folders that were synced since the last call, in order: "NAME SIZE", "FOLDER/" for a folder.
// A file counts with the size that it had then. Any thread.
QStringList takeSyncs();
