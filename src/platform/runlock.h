// One application for one unit: a locked file that also tells the process number.
#pragma once

#include <QString>

class RunLock
{
public:
    // Locks /run/tubix4.pid of the unit and writes our process number into it. A file left by a killed
    // application does not count: the lock dies with its process.
    RunLock();
    ~RunLock(); // removes the file
    Q_DISABLE_COPY_MOVE(RunLock)

    // False only when another application runs on this unit. A unit without a /run folder has no lock.
    bool isFree() const { return m_isFree; }

private:
    int m_fd = -1;
    bool m_isFree = true;
};
