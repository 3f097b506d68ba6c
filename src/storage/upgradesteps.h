// The instruction file of an upgrade: one command a line, "COMMAND,file name,target folder". GUI thread.
#pragma once

#include "platform/unit.h"

#include <QString>

#include <vector>

namespace upgradesteps {

enum class Command { Copy, Delete, MakeFolder, RemoveFolder };

struct Step
{
    Command command;
    QString fileName;
    UnitPath folder;

    bool operator==(const Step &) const = default;
};

// The commands of the file, in its order; fields are trimmed, lines may end in CR LF. Left out: a line whose
// first field holds no command or that lacks a field, and lines of more than 4096 bytes or with a zero byte.
// Of a text above 1 MB nothing is taken.
std::vector<Step> read(const QByteArray &text);

// Carries one step out, with files taken from `workFolder`. False when it could not, or when its target lies
// outside the unit's root, links followed: then nothing was changed. A missing source leaves the target.
bool carryOut(const Step &step, const UnitPath &workFolder);

} // namespace upgradesteps
