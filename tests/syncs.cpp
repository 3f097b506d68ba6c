// Stands in for the C library's functions: the linker takes these before that library's own.
#include "syncs.h"

#include <QFileInfo>
#include <QMutex>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

QMutex g_mutex;
QStringList g_syncs; // any thread, under g_mutex

int sync(long call, int fd)
{
    const QFileInfo file(QFileInfo(QStringLiteral("/proc/self/fd/%1").arg(fd)).symLinkTarget());
    const QString size = file.isDir() ? QStringLiteral("/") : QStringLiteral(" %1").arg(file.size());
    const QMutexLocker lock(&g_mutex);
    g_syncs << file.fileName() + size;
    return int(::syscall(call, fd));
}

} // namespace

QStringList takeSyncs()
{
    const QMutexLocker lock(&g_mutex);
    return std::exchange(g_syncs, {});
}

extern "C" int fsync(int fd)
{
    return sync(SYS_fsync, fd);
}

extern "C" int fdatasync(int fd)
{
    return sync(SYS_fdatasync, fd);
}
