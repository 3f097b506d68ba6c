// Child processes. The program gets its arguments as a list; no shell is involved.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace command {

struct Result
{
    bool started = false; // false: no such program
    int exitCode = -1;    // meaningful when started
    QByteArray standardOutput;
    QByteArray standardError;
};

// Runs `program` and waits for its end without a time limit; GUI thread. A bare name is looked up in the
// search path on a real unit, and in the unit's own /usr/bin alone on any other root: nothing that runs on
// a desk reaches a command of the host. An absolute program is a unit path.
Result run(const QString &program, const QStringList &arguments = {});

} // namespace command
