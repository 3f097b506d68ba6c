// Logs of lines, and their ends that a power cut left half written.
#pragma once

#include "platform/unit.h"

#include <QString>

// Cuts the file after its last line feed; a file that ends with one, or is missing, is left alone.
void mendTornLine(const UnitPath &unitPath);

// Gives a last line without a line feed its rest when it is the begin of `wanted`, a whole line as it was to
// be written and is not there yet; where all of it is missing, it is added behind `before`, the line that was
// written last. Any other end stays as it is: somebody typed it.
void completeLine(const UnitPath &unitPath, const QByteArray &wanted, const QByteArray &before);

// Appends `line` by one write, then sync; begins a line of its own where the last one has no line feed. False
// when the file cannot be opened or does not take it.
bool appendLine(const UnitPath &unitPath, const QByteArray &line);
