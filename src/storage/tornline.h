// Logs of lines: what a power cut left half written at the end is taken off.
#pragma once

#include <QString>

// Cuts the file after its last line feed; a file that ends with one, or is missing, is left alone.
void mendTornLine(const QString &unitPath);

// Appends `line` by one write, then sync; false when the file cannot be opened or does not take it.
bool appendLine(const QString &unitPath, const QByteArray &line);
