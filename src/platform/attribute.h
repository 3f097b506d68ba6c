// Device attributes: one small text in one file (sysfs). A write never makes a file that is not there.
#pragma once

#include "platform/unit.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace attribute {

// Opens the existing file, truncates, writes `text`, closes. False when it is not there or does not take it.
bool write(const UnitPath &unitPath, const QByteArray &text);

// Tells a register file which register the next read means. Where a plain file stands for the device
// (any root but "/") the file holds the answer already and is left alone.
bool selectRegister(const UnitPath &unitPath, const QByteArray &registerNumber);

// At most `limit` bytes of the file; nothing when it cannot be opened or read.
std::optional<QByteArray> read(const UnitPath &unitPath, qsizetype limit);

} // namespace attribute
