#include "platform/movefile.h"

#include "platform/unit.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

bool moveFile(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(unit::path(from));
    const QByteArray target = QFile::encodeName(unit::path(to));
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // A file system that does not know the flag.
    return !QFileInfo::exists(unit::path(to)) && std::rename(source.constData(), target.constData()) == 0;
}
