// Whole files: a reader finds the old content or the new one, never half, whatever is pulled or killed.
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace savefile {

// Replaces the file at `unitPath` by `content`: temporary file beside it, write, fsync, rename, sync of the
// folder; mode and owner of an existing file are kept. False on any failure, with the reason in `error`
// when given; the old file then stands as it was and no temporary file stays.
bool write(const UnitPath &unitPath, const QByteArray &content, QString *error = nullptr);

// The same for a configuration file that its owner may have put elsewhere: where `unitPath` is a link to a
// file of the unit, that file is replaced and the link stays.
bool writeThrough(const UnitPath &unitPath, const QByteArray &content, QString *error = nullptr);

// The same for a copy of the file at `from`, which has to be a plain file: its content and the rights
// (not the owner) that it has there. A link at `to` is replaced, not followed.
bool copy(const UnitPath &from, const UnitPath &to, QString *error = nullptr);

// The whole file, or nothing when it cannot be read or is larger than `limit` bytes (memory stays bounded).
std::optional<QByteArray> read(const UnitPath &unitPath, qint64 limit, QString *error = nullptr);

// Deletes the temporary files that writes cut off by a kill or a power cut left in the folder.
void removeLeftovers(const UnitPath &unitFolder);

} // namespace savefile
